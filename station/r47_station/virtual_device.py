"""A virtual device, controlled from a test."""

from __future__ import annotations

import contextlib
import dataclasses
import json
import os
import pathlib
import socket
import subprocess
import tempfile
from types import TracebackType
from typing import Any, Callable, Iterator, Sequence, Union

from .deadline import Deadline
from .errors import DeviceGone, DeviceRefused, DeviceTimeout

Value = Union[bool, int, float, str]
LONGEST_COMMAND = 4096  # bytes
OPERATORS = ("==", "!=", "<", "<=", ">", ">=")


@dataclasses.dataclass(frozen=True)
class Property:
    """A property of the device: what it is, and what it was when it was looked at."""

    name: str
    type: str
    meaning: str
    settable: bool = False
    value: Value | None = None
    """None: of the schema, which has no values."""
    value_name: str | None = None
    """How this value of a choice is called."""
    unit: str | None = None
    minimum: float | None = None
    maximum: float | None = None
    step: float | None = None
    choices: dict[Value, str] = dataclasses.field(default_factory=dict)
    """Of a choice: all of its values with their names."""


@dataclasses.dataclass(frozen=True)
class JournalLine:
    """One line of the journal. Times are in seconds of the device's clock; what a line does not have is empty or 0."""

    sequence: int
    start: float
    took: float
    kind: str
    text: str
    program: str = ""
    thread: int = 0
    object: int = 0
    error: str = ""
    rule: int = 0


@dataclasses.dataclass(frozen=True)
class Fault:
    """A fault rule that is in force, or was."""

    device: VirtualDevice
    number: int

    def clear(self) -> None:
        self.device.command(f"fault clear {self.number}")

    def fired(self) -> int:
        """How often. DeviceRefused where it was cleared."""
        for line in self.device.command("fault list"):
            if line.split()[0] == str(self.number):
                return int(line.rsplit(" ", 1)[1])
        raise DeviceRefused("fault list", f"there is no rule {self.number}")


class _Connection:
    """One connection to the control socket."""

    def __init__(self, directory: str, timeout: float) -> None:
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(timeout)
        try:
            self._socket.connect(os.path.join(directory, "control"))
        except OSError as error:
            self._socket.close()
            raise DeviceGone(f"{directory}: {error}") from error
        self._unread = b""

    def close(self) -> None:
        self._socket.close()

    def send(self, line: str, deadline: Deadline) -> None:
        data = line.encode() + b"\n"
        if len(data) > LONGEST_COMMAND or b"\n" in data[:-1]:
            raise ValueError(f"a command is one line of at most {LONGEST_COMMAND} bytes")
        self._socket.settimeout(max(deadline.left(), 0.001))
        try:
            self._socket.sendall(data)
        except TimeoutError:
            raise DeviceTimeout(f"{line!r} was not taken in time") from None
        except OSError as error:
            raise DeviceGone(str(error)) from error

    def line(self, deadline: Deadline) -> str:
        while b"\n" not in self._unread:
            self._socket.settimeout(max(deadline.left(), 0.001))
            try:
                data = self._socket.recv(65536)
            except TimeoutError:
                raise DeviceTimeout("the device did not answer in time") from None
            except OSError as error:
                raise DeviceGone(str(error)) from error
            if not data:
                raise DeviceGone("the device has ended")
            self._unread += data
        line, _, self._unread = self._unread.partition(b"\n")
        return line.decode("utf-8", "replace")


class Journal:
    """The journal's lines from now on, as they are written."""

    def __init__(self, connection: _Connection, timeout: float) -> None:
        self._connection = connection
        self._timeout = timeout

    def next(self) -> JournalLine:
        """The next line, for which it waits. Raises DeviceTimeout."""
        return self._next(Deadline(self._timeout))

    def wait_for(self, what: str | Callable[[JournalLine], bool]) -> JournalLine:
        """The next line that has the text `what` in its own, or of which the function is true. Raises DeviceTimeout."""
        deadline = Deadline(self._timeout)
        while True:
            line = self._next(deadline)
            if what in line.text if isinstance(what, str) else what(line):
                return line

    def _next(self, deadline: Deadline) -> JournalLine:
        members = json.loads(self._connection.line(deadline))
        names = {field.name for field in dataclasses.fields(JournalLine)}
        return JournalLine(**{name: value for name, value in members.items() if name in names})


class VirtualDevice:
    """A device that runs; a context manager that ends it, where it was started here.

    Every command has `timeout` seconds and raises DeviceTimeout after that; DeviceRefused where the device does not
    want it, and then nothing was changed; DeviceGone where there is none. One thread at a time.
    """

    def __init__(self, name: str = "", *, timeout: float = 10.0) -> None:
        """Connects to a device by its name or, with a slash in it, its directory; without a name to the one around this
        program."""
        self.timeout = timeout
        self.directory = _directory(name)
        self._connection = _Connection(self.directory, timeout)
        self._process: subprocess.Popen[str] | None = None
        self._own_directory: tempfile.TemporaryDirectory[str] | None = None
        self._r47_sim = "r47-sim"

    @classmethod
    def start(cls, r47_sim: str = "r47-sim", *, clock: str = "real", without: Sequence[str] = (),
              journal: str | None = None, timeout: float = 10.0) -> VirtualDevice:
        """Starts a device in a directory of its own.

        clock: "real", "stepped" or "scaled FACTOR". without: files of the device that are not there. journal: a file.
        """
        own_directory = tempfile.TemporaryDirectory(prefix="r47-station-")
        directory = os.path.join(own_directory.name, "device")
        command = [r47_sim, "device", "--name", directory, "--clock", *clock.split()]
        for path in without:
            command += ["--without", path]
        if journal is not None:
            command += ["--journal", journal]
        process = None
        try:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, text=True)
            assert process.stdout is not None and process.stderr is not None
            if not process.stdout.readline():
                raise DeviceGone(process.stderr.read().strip())
            device = cls(directory, timeout=timeout)
        except BaseException:
            if process is not None:
                process.terminate()
                process.communicate()
            own_directory.cleanup()
            raise
        device._process = process
        device._own_directory = own_directory
        device._r47_sim = r47_sim
        return device

    def __enter__(self) -> VirtualDevice:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def close(self) -> None:
        """Ends the device, where it was started here."""
        self._connection.close()
        if self._process is not None:
            self._process.terminate()
            self._process.communicate()
            self._process = None
        if self._own_directory is not None:
            self._own_directory.cleanup()
            self._own_directory = None

    def run(self, *command: str, port: int | None = None) -> list[str]:
        """The words that start a command in this device, for `subprocess` or `Terminal.local`. port: of 127.0.0.1,
        where the command's console is reached."""
        published = [] if port is None else ["--publish", str(port)]
        return [self._r47_sim, "run", "--device", self.directory, *published, "--", *command]

    def command(self, line: str, *, timeout: float | None = None) -> list[str]:
        """Gives one line of the control grammar; the lines of its answer. Not for those that go on: see `journal`."""
        deadline = Deadline(self.timeout if timeout is None else timeout)
        self._connection.send(line, deadline)
        answer: list[str] = []
        try:
            while True:
                got = self._connection.line(deadline)
                if got == "ok":
                    return answer
                if got.startswith("error: "):
                    raise DeviceRefused(line, got[len("error: "):])
                answer.append(got)
        except DeviceTimeout:
            # What still comes belongs to this command: the next has a connection of its own.
            self._connection.close()
            self._connection = _Connection(self.directory, self.timeout)
            raise DeviceTimeout(f"{line!r} took longer than its limit, and answered {answer}") from None

    def show(self, *prefixes: str) -> dict[str, Property]:
        """The properties by name: all, or those that a prefix names or begins with a dot behind it."""
        return _properties(self.command(" ".join(["show --json", *prefixes])))

    def schema(self, *prefixes: str) -> dict[str, Property]:
        """As `show`, without the values."""
        return _properties(self.command(" ".join(["show --schema", *prefixes])))

    def value(self, name: str) -> Value:
        """Of one property."""
        shown = self.show(name)
        if name not in shown:
            raise DeviceRefused(f"show --json {name}", "this is no property")
        value = shown[name].value
        assert value is not None
        return value

    def set(self, name: str, value: Value) -> None:
        """A number, a truth value, or a text: the name of a choice, a place "X,Y"."""
        self.command(f"set {name} {_word(value)}")

    def fault(self, rule: str) -> Fault:
        """Adds a fault rule, as "rtu_t::get_exposure count 1 status -1"."""
        [number] = self.command(f"fault add {rule}")
        return Fault(self, int(number))

    def clear_faults(self) -> None:
        """All rules."""
        self.command("fault clear")

    def step(self, duration: str) -> None:
        """Moves the stepped clock on: "250ms", "3s". Returns when all callbacks have returned."""
        self.command(f"step {duration}")

    def wait(self, name: str, operator: str, value: Value, *, within: str | None = None) -> None:
        """Waits until a property is so. within: of the device's time; DeviceRefused after that. On a stepped clock
        somebody else must step."""
        if operator not in OPERATORS:
            raise ValueError(f"operator: {operator!r} is none of {' '.join(OPERATORS)}")
        limit = "" if within is None else f" --timeout {within}"
        self.command(f"wait {name} {operator} {_word(value)}{limit}")

    @contextlib.contextmanager
    def journal(self) -> Iterator[Journal]:
        """The journal from the beginning of the block on."""
        connection = _Connection(self.directory, self.timeout)
        try:
            deadline = Deadline(self.timeout)
            connection.send("journal follow --json", deadline)
            connection.line(deadline)  # "ok": what happens from now on is told
            yield Journal(connection, self.timeout)
        finally:
            connection.close()


def _directory(name: str) -> str:
    if not name:
        around = os.environ.get("R47_SIM_DEVICE")
        if not around:
            raise DeviceGone("no device is named, and none is around this program")
        return around
    if "/" in name:
        return name
    runtime = os.environ.get("XDG_RUNTIME_DIR")
    below = pathlib.Path(runtime, "r47-sim") if runtime else pathlib.Path(f"/tmp/r47-sim-{os.getuid()}")
    return str(below / name)


def _word(value: Value) -> str:
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, str):
        return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'
    return repr(value)


def _properties(lines: list[str]) -> dict[str, Property]:
    return {name: _property(name, members) for name, members in json.loads("\n".join(lines)).items()}


def _property(name: str, members: dict[str, Any]) -> Property:
    limits = members.get("range", {})
    return Property(name, members["type"], members["meaning"], members["settable"], members.get("value"),
                    members.get("name"), members.get("unit"), limits.get("min"), limits.get("max"), limits.get("step"),
                    {choice["value"]: choice["name"] for choice in members.get("choices", [])})
