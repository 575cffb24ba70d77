"""Boots a Debian arm64 system in QEMU, installs the packages in it and operates the console there:

    tests/booted/session.py SYSTEM PACKAGES R47-SIM R47-CONSOLE

SYSTEM is the directory that make_system.sh has made, PACKAGES an image with the packages in it. R47-SIM and R47-CONSOLE
are those of this machine, which the transcript tests hold byte for byte: the sessions are played with them, too, and
all must be the same. Needs a network of its own. What fails is shown with the end of what came on the two lines."""

import codecs
import contextlib
import difflib
import json
import pathlib
import queue
import shlex
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse

import pexpect

from r47_station import (ConnectionLost, Console, DialogueTimeout, PinConfiguration, PinFunction, PinType, Terminal,
                         VirtualDevice)
from r47_station.console import PORT
from r47_station.deadline import Deadline

LIMIT = 300  # s, which no working step ever reaches
LINES_SHOWN = 200
PROMPT_END = "]> "  # before it stand a bracket and the status of the last command
RESET = struct.pack("ii", 1, 0)  # SO_LINGER: closing resets the connection
INTERRUPT = "\x03"
PAGE = pathlib.Path(__file__).resolve().parents[2] / "sim/panel/page/index.html"
LIBRARY_DIRECTORY = "/usr/lib/aarch64-linux-gnu/r47"

MACHINE = "-machine virt{options} -cpu cortex-a72 -smp 2 -m 1G -accel tcg,thread=multi -nodefaults -display none"
# For the console's lines 481 and 492, which the kernel numbers from 511 down, a second GPIO chip, as the camera has: 32
# lines that are read from a word of the empty flash memory.
GPIO_CHIP = "/gpio@4000000"
GPIO_CHIP_PROPERTIES = [
    ("-ts", "compatible", "wd,mbl-gpio"),
    ("-ts", "reg-names", "dat"),
    ("-tx", "reg", "0", "4000000", "0", "4"),
    ("-tx", "#gpio-cells", "2"),
    ("-ts", "gpio-controller"),
    ("-ts", "no-output"),
]
HARDWARE = f"""
    -no-reboot -snapshot -dtb {{lines}}/tree
    -netdev user,id=network,restrict=on,hostfwd=tcp:127.0.0.1:{PORT}-10.0.2.15:{PORT}
    -device virtio-net-device,netdev=network
    -chardev socket,id=console,path={{lines}}/console -serial chardev:console
    -chardev socket,id=second,path={{lines}}/second -device virtio-serial-device -device virtconsole,chardev=second
    -drive if=none,id=system,format=raw,file={{system}}/root.img -device virtio-blk-device,drive=system
    -drive if=none,id=packages,format=raw,file={{packages}} -device virtio-blk-device,drive=packages
    -kernel {{system}}/kernel -initrd {{system}}/initrd
"""
KERNEL_WORDS = "console=ttyAMA0 TERM=dumb quiet panic=-1 systemd.getty_auto=no systemd.show_status=no"


def begin(what):
    print(f"--- {time.strftime('%H:%M:%S')} {what}", flush=True)


def check(what, got, wanted):
    if got == wanted:
        return
    if isinstance(got, str):
        differences = difflib.unified_diff(wanted.splitlines(), got.splitlines(), "wanted", "got", lineterm="")
        raise AssertionError("\n".join([what, *differences, f"(in all {got!r}, and not {wanted!r})"]))
    raise AssertionError(f"{what}: {got!r}, and not {wanted!r}")


class LineEnd:
    """Our end of one of the system's lines, as Terminal takes it. What comes is taken at once: the whole system stands
    still while a line of it takes nothing more."""

    def __init__(self, listener):
        self._connection, _ = listener.accept()
        self._came = queue.Queue()
        threading.Thread(target=self._take, daemon=True).start()

    def _take(self):
        decoder = codecs.getincrementaldecoder("utf-8")("replace")
        with contextlib.suppress(OSError):
            while data := self._connection.recv(65536):
                self._came.put(decoder.decode(data))
        self._came.put(None)

    def read_nonblocking(self, _, timeout):
        try:
            text = self._came.get(timeout=timeout)
        except queue.Empty:
            raise pexpect.TIMEOUT("") from None
        if text is None:
            self._came.put(None)
            raise pexpect.EOF("")
        return text

    def send(self, text):
        self._connection.sendall(text.encode())


class Line(Terminal):
    """A line of the system with a shell behind it."""

    def __init__(self, listener):
        super().__init__(LineEnd(listener), timeout=LIMIT)

    def prompt(self):
        """Waits for the shell's next prompt: what came before it, and the status that it tells."""
        printed, _, status = self.wait_for(PROMPT_END).removesuffix(PROMPT_END).rpartition("[")
        return printed, int(status)

    def run(self, command, status=0):
        """A command in the shell: what it prints."""
        self.type(command)
        printed, got = self.prompt()
        check(f"the status of {command!r}, which printed {printed!r}", got, status)
        return printed

    def interrupt(self):
        """Ctrl-C."""
        self._spawned.send(INTERRUPT)

    def show(self, name):
        """The end of what came, for whoever looks for a fault."""
        with contextlib.suppress(DialogueTimeout):
            while self._read(Deadline(0)):
                pass
        print(f"--- {name}:", *self.transcript.splitlines()[-LINES_SHOWN:], sep="\n", flush=True)


def qemu(words, *more):
    return subprocess.Popen(["qemu-system-aarch64", *words.split(), *more], stdin=subprocess.DEVNULL)


@contextlib.contextmanager
def booting(system, packages):
    """A machine that begins to boot: its serial console, and a second line. Waits until it is switched off."""
    with contextlib.ExitStack() as stack:
        lines = stack.enter_context(tempfile.TemporaryDirectory(prefix="r47-booted-"))
        listeners = []
        for name in "console", "second":
            listeners.append(stack.enter_context(socket.socket(socket.AF_UNIX)))
            listeners[-1].settimeout(LIMIT)
            listeners[-1].bind(f"{lines}/{name}")
            listeners[-1].listen()
        tree = f"{lines}/tree"
        qemu(MACHINE.format(options=f",dumpdtb={tree}")).wait(LIMIT)
        subprocess.run(["fdtput", "--create", tree, GPIO_CHIP], check=True)
        for kind, *words in GPIO_CHIP_PROPERTIES:
            subprocess.run(["fdtput", kind, tree, GPIO_CHIP, *words], check=True)
        hardware = MACHINE.format(options="") + HARDWARE.format(lines=lines, system=system, packages=packages)
        machine = qemu(hardware, "-append", KERNEL_WORDS)
        stack.callback(machine.wait)
        stack.callback(machine.kill)
        serial, second = (Line(listener) for listener in listeners)
        try:
            yield serial, second
            check("the status of QEMU", machine.wait(LIMIT), 0)
        except BaseException:
            serial.show("serial console")
            second.show("second line")
            raise


def log_in(serial, second):
    begin("boot")
    serial.wait_for("login: ")
    serial.type("root")
    serial.wait_for("# ")
    serial.type("stty -echo; exec env PS1='[$?]''> ' sh")  # in two parts, as its echo is no prompt
    serial.prompt()
    serial.run("setsid --fork --ctty sh </dev/hvc0 >/dev/hvc0 2>&1")
    second.prompt()
    second.run("stty -echo")
    serial.run("dmesg --console-off")  # what the kernel tells would stand in what the console prints
    check("the system", serial.run("systemctl is-system-running --wait"), "running\n")
    check("dpkg --audit", serial.run("dpkg --audit"), "")
    check("machine and init", serial.run("uname -m; cat /proc/1/comm"), "aarch64\nsystemd\n")
    serial.run("ip address add 10.0.2.15/24 dev eth0 && ip link set eth0 up")


def install(serial):
    begin("installation")
    serial.run("mount -o ro LABEL=packages /mnt")
    serial.run(f"apt-get install --quiet=2 --no-install-recommends -o DPkg::Lock::Timeout={LIMIT} /mnt/*.deb")
    print(serial.run("dpkg-query --show 'r47-*'"), end="")
    check("dpkg --audit", serial.run("dpkg --audit"), "")


def start_by_hand(serial, r47_sim, r47_console):
    """What the console prints of a first check of the device: in the system's own files and with no device, and in a
    virtual one, as root and as a user."""
    begin("first checks")
    _, error, reason = serial.run("r47-console", 127).rpartition("error while loading shared libraries: ")
    check("without a library", error + reason, "error while loading shared libraries: libhal.so.2: "
          "cannot open shared object file: No such file or directory\n")
    typed = "A\nx\n"
    printed = subprocess.run([r47_sim, "run", "--", r47_console], input=typed, stdout=subprocess.PIPE, text=True,
                             check=True, timeout=LIMIT).stdout
    there = "File Error Code: 0\n"
    check("the number of checks here", printed.count(there), 1)
    serial.run(f"cd /home/engineer && printf {typed!r} >typed")
    check("in a virtual device", serial.run("r47-sim run -- r47-console <typed"), printed)
    check("as a user", serial.run("runuser -u engineer -- r47-sim run -- r47-console <typed"), printed)
    # Of the device's files this system has the chip and the line that the console exports, in no sandbox's /sys.
    lines = "ls -d /sys/class/gpio/gpio4??"
    serial.run("echo 492 >/sys/class/gpio/export")
    check("the lines before", serial.run(lines), "/sys/class/gpio/gpio492\n")
    check("in the system's own files", serial.run(f"LD_LIBRARY_PATH={LIBRARY_DIRECTORY} r47-console <typed 2>errors"),
          printed.replace(there, "File Error Code: 215\n"))
    check("errors of the system's own files", serial.run("cat errors"),
          "libhal: no device: start the program with r47-sim run\n")
    check("the lines after", serial.run(lines), "/sys/class/gpio/gpio481\n")


class BenchHere:
    """The console of this machine in a virtual device."""

    port = PORT + 1  # of a network in which nobody else is

    def __init__(self, device, r47_console):
        self._device = device
        self._console = r47_console

    def start(self, *words):
        """Starts the console: its terminal."""
        command = self._device.run(self._console, *words, port=self.port)
        return Terminal.socket_mode(command, timeout=LIMIT)

    def end(self, terminal):
        """Waits for the console's end: what it has printed from its start on, and its status."""
        status = terminal.wait_for_end()
        return terminal.transcript, status

    def control(self, command):
        """Controls the device: what it answers."""
        return self._device.command(command, timeout=LIMIT)


class BenchThere:
    """The system's console at its serial line, in a virtual device that init has started and that is controlled at the
    other line."""

    port = PORT

    def __init__(self, serial, second):
        self.second = second
        self._serial = serial
        self._start = 0
        serial.run("systemd-run --unit=bench r47-sim device --name bench")
        serial.run("until r47-sim --device bench clock 2>/dev/null; do :; done")

    def start(self, *words):
        self._start = len(self._serial.transcript)
        self._serial.type(" ".join(["r47-sim run --device bench -- r47-console", *words]))
        return self._serial

    def end(self, terminal):
        _, status = terminal.prompt()
        return terminal.transcript[self._start:].removesuffix(f"[{status}{PROMPT_END}"), status

    def control(self, command):
        return self.second.run(f"r47-sim --device bench --timeout {LIMIT}s {command}").splitlines()


def digital_io(bench, terminal):
    terminal.wait_for_menu()
    check("A", terminal.press("A"), "File Error Code: 0\n")
    terminal.press("a")
    terminal.press("f", 1, 1, 0, 0, 0, 0, 0, 1, 30, 0, 5)
    terminal.press("F", 1)
    terminal.press("h", 1, 1)
    bench.control("wait dio.1.value == true")
    terminal.press("H", 1)
    terminal.press("p")
    terminal.press("2")
    terminal.press("x")
    terminal.type("x")


def tilt_alarm(bench, terminal):
    terminal.wait_for_menu()
    terminal.press("G")
    bench.control("wait system.state == running")
    bench.control("tilt 0 20 0")
    bench.control("wait system.state == warning")
    terminal.press("a", 30)
    bench.control("wait system.state == running")
    bench.control("tilt 0 0 0")
    terminal.press("x")
    terminal.type("x")


def station(bench, terminal):
    with Console("127.0.0.1", bench.port, patience=LIMIT, timeout=LIMIT) as console:
        check("the file error code", console.first_check, 0)
        console.configure_pin(2, PinConfiguration(PinType.PUSH_PULL, PinFunction.OUTPUT))
        console.set_pin(2, True)
        check("pin 2", console.pins()[2], True)
    terminal.wait_for("Entered Option = x\n")
    terminal.type("x")


def station_that_is_cut(bench, terminal):
    console = Console("127.0.0.1", bench.port, patience=LIMIT, timeout=LIMIT)
    check("pin 2", console.pins()[2], True)
    connection = console._socket
    connection.sendall(b"h\n2\n")  # a pin is to be set ...
    check("the echo", connection.recv(1), b"2")
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, RESET)
    connection.close()  # ... and is not told to what
    terminal.wait_for("Entered Option = x\n")
    terminal.type("x")


# In this order: the words that the console is started with, and the session.
SESSIONS = {
    "digital I/O": ([], digital_io),
    "tilt alarm": ([], tilt_alarm),
    "station": (["socket"], station),
    "station that is cut": (["socket"], station_that_is_cut),
}


def play(bench, name):
    """What the console has printed, its status, and what the pins are then."""
    words, session = SESSIONS[name]
    terminal = bench.start(*words)
    session(bench, terminal)
    printed, status = bench.end(terminal)
    return printed, status, "\n".join(bench.control("show dio"))


def compare_sessions(there, r47_sim, r47_console):
    with VirtualDevice.start(r47_sim, timeout=LIMIT) as device:
        here = BenchHere(device, r47_console)
        for name in SESSIONS:
            begin(name)
            printed, _, pins = play(here, name)
            printed_there, status, pins_there = play(there, name)
            check(f"{name}: what is printed", printed_there, printed)
            check(f"{name}: the status", status, 0)
            check(f"{name}: the pins", pins_there, pins)


def open_panel(there):
    """The front panel: its page, and a command that the page gives."""
    begin("front panel")
    address = urllib.parse.urlsplit(there.second.run("r47-sim panel --device bench --beside $$").split()[1])

    def ask(method, name, body=""):
        request = "\r\n".join([f"{method} {address.path}{name} HTTP/1.0", f"Host: {address.netloc}",
                               f"Origin: http://{address.netloc}", f"Content-Length: {len(body)}", "", body])
        connect = f"exec 3<>/dev/tcp/{address.hostname}/{address.port} && printf {request!r} >&3 && cat <&3"
        answer = there.second.run(f"bash -c {shlex.quote(connect)}").replace("\r\n", "\n")
        headers, _, content = answer.partition("\n\n")
        check(f"the answer to {method}", headers.partition("\n")[0], "HTTP/1.1 200 OK")
        return content

    check("the page", ask("GET", ""), PAGE.read_text())
    check("a command of the page", json.loads(ask("POST", "command", "show dio.2.value")),
          {"ok": True, "text": "".join(f"{line}\n" for line in there.control("show dio.2.value"))})


def end_by_signals(there):
    begin("signals")
    for name, status in ("TERM", 143), ("HUP", 129), ("INT", 130):
        serial = there.start()
        serial.wait_for_menu()
        serial.press("G")
        if name == "INT":
            serial.interrupt()
        else:
            there.second.run(f"kill -{name} $(pidof r47-console)")
        check(f"the status after SIG{name}", there.end(serial)[1], status)
    there.second.run("while r47-sim --device bench programs | grep .; do :; done")


def end_service(there):
    """A console that init has started, and ends."""
    begin("service")
    shell = there.second
    shell.run("echo 'echo $SERVICE_RESULT $EXIT_CODE $EXIT_STATUS >ended' >tell_end")
    shell.run("systemd-run --unit=station --working-directory=$PWD --property=ExecStopPost='/bin/sh tell_end' "
              "r47-sim run --device bench -- r47-console socket")
    console = Console("127.0.0.1", there.port, patience=LIMIT, timeout=LIMIT)
    check("pin 2", console.pins()[2], True)
    shell.run("systemctl stop station")
    check("what init tells", shell.run("cat ended"), "success killed TERM\n")
    try:
        raise AssertionError(f"the console has been ended, and answers {console.pins()}")
    except ConnectionLost:
        pass


def main(system, packages, r47_sim, r47_console):
    with booting(system, packages) as (serial, second):
        log_in(serial, second)
        install(serial)
        start_by_hand(serial, r47_sim, r47_console)
        there = BenchThere(serial, second)
        compare_sessions(there, r47_sim, r47_console)
        open_panel(there)
        end_by_signals(there)
        end_service(there)
        begin("power off")
        serial.type("systemctl poweroff")


if __name__ == "__main__":
    main(*sys.argv[1:])
