"""A console at its terminal: a local process, ssh, or a serial line. Needs python3-pexpect."""

from __future__ import annotations

import dataclasses
import os
import re
import termios
import time
from types import TracebackType
from typing import Any, Sequence

from .deadline import Deadline
from .errors import ConnectionLost, DialogueTimeout, UnexpectedReply

# All menus end in one of these.
PROMPT = re.compile(r"(?:Please enter your|Enter your) option(?:: | = )")
MAIN_MENU = "\x1b[0m"
# With one of these each menu begins.
SCREEN = re.compile(
    r"\x1b\[0m\n{5}\*{4}  Enter the Option"  # the main menu
    r"|\n{3}Please Enter the Option\*{6}"  # real-time unit, digital I/O, illumination, sensors, autofocus, gyro
    r"|\t\t\n{5}(?:Camera|Button|TOF) Control"
    r"|\t\t f\. Set Device State"
    r"|\t\t  a: set ALpha"
    r"|\t\t  t: toggle run"
    r"|\t\t  Socket test menu")
ECHO = re.compile(r"\A\s*(?:Your [Oo]ption|Entered Option) = .\n")
REVISION = re.compile(r"Major \t(\d+),\nMinor \t(\d+),\nWeek \t(\d+),\nYear \t(\d+),\nNum \t(\d+),\nPatch \t(\d+),")
POLL_PAUSE = 0.1  # s
SPEEDS = {9600: termios.B9600, 19200: termios.B19200, 38400: termios.B38400, 57600: termios.B57600,
          115200: termios.B115200}


@dataclasses.dataclass(frozen=True)
class Revision:
    """Of a module, as its driver tells it. year: two digits; week: of the calendar."""

    major: int
    minor: int
    patch: int
    num: int
    year: int
    week: int


class Terminal:
    """A console that is operated by its keys; a context manager that ends it.

    Every method has `timeout` seconds and raises DialogueTimeout after that, ConnectionLost where the console ends
    meanwhile. Both tell what came. One thread at a time.
    """

    def __init__(self, spawned: Any, *, timeout: float = 10.0) -> None:
        """spawned: of pexpect, a `spawn` or an `fdspawn` with encoding; see `local`, `ssh` and `serial`."""
        self.timeout = timeout
        self.transcript = ""
        """All that was printed, with line feeds as line ends."""
        self._spawned = spawned
        self._spawned.delaybeforesend = None  # pexpect waits otherwise, for programs that ask for passwords
        self._unread = ""
        self._sent = ""
        self._command_start = 0
        self.menu = ""
        """The screen of the menu that was shown last."""

    @classmethod
    def local(cls, command: Sequence[str], *, timeout: float = 10.0) -> Terminal:
        """Starts the command in a terminal of its own, and waits for the first menu."""
        terminal = cls._start(command, timeout)
        terminal.wait_for_menu()
        return terminal

    @classmethod
    def ssh(cls, host: str, command: str = "r47-console", *, options: Sequence[str] = (),
            timeout: float = 10.0) -> Terminal:
        """Runs the command at `host` ("root@camera"), which must let this user in without a question."""
        # Otherwise ssh tells the end of the connection, as if the console had printed it.
        quiet = ["-o", "LogLevel=ERROR"]
        return cls.local(["ssh", "-tt", "-o", "BatchMode=yes", *options, *quiet, host, command], timeout=timeout)

    @classmethod
    def serial(cls, device: str, speed: int = 115200, *, command: str = "r47-console",
               timeout: float = 10.0) -> Terminal:
        """Opens a serial line with a root shell behind it, 8 bits, no parity, and types the command there."""
        from pexpect import fdpexpect  # type: ignore[import]

        if speed not in SPEEDS:
            raise ValueError(f"speed: {speed} is none of {', '.join(map(str, SPEEDS))}")
        descriptor = os.open(device, os.O_RDWR | os.O_NOCTTY)
        attributes: list[Any] = [0, 0, termios.CS8 | termios.CREAD | termios.CLOCAL, 0, SPEEDS[speed], SPEEDS[speed],
                                 termios.tcgetattr(descriptor)[6]]
        termios.tcsetattr(descriptor, termios.TCSANOW, attributes)
        terminal = cls(fdpexpect.fdspawn(descriptor, encoding="utf-8", codec_errors="replace"), timeout=timeout)
        terminal.type(command)
        terminal.wait_for_menu()
        return terminal

    @classmethod
    def socket_mode(cls, command: Sequence[str], *, timeout: float = 10.0) -> Terminal:
        """Starts a command that serves a client, such as `r47-console socket`: it shows its menu with the client."""
        return cls._start(command, timeout)

    @classmethod
    def _start(cls, command: Sequence[str], timeout: float) -> Terminal:
        import pexpect

        return cls(pexpect.spawn(command[0], list(command[1:]), echo=False, encoding="utf-8",
                                 codec_errors="replace"), timeout=timeout)

    def __enter__(self) -> Terminal:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def close(self) -> None:
        """Hangs up; the process that was started is ended by that, or killed."""
        self._spawned.close()

    def type(self, text: str) -> None:
        """Types the text and a line end, and waits for nothing."""
        self._sent += text + "\n"
        self._spawned.send(text + "\n")

    def press(self, key: str, *answers: object) -> str:
        """Presses a key, answers what it asks, and returns what it printed, up to the next menu: its questions too, not
        the echo of the key. With the key that ends the console, up to its end."""
        self._begin()
        self.type("\n".join([key, *(str(answer) for answer in answers)]))
        return self._result()

    def ask(self, key: str, question: str) -> str:
        """Presses a key, and returns what it printed up to the end of the question, to be `answer`ed."""
        self._begin()
        self.type(key)
        return ECHO.sub("", self._take(re.compile(re.escape(question))))

    def answer(self, *answers: object) -> str:
        """Answers a question, and returns what was printed up to the next menu."""
        self._begin()
        self.type("\n".join(str(answer) for answer in answers))
        return self._result()

    def poll(self, key: str, pattern: str) -> re.Match[str]:
        """Presses a key again and again, until what it prints has the regular expression; for what takes its time and
        does not tell its end."""
        deadline = Deadline(self.timeout)
        while True:
            printed = self.press(key)
            match = re.search(pattern, printed)
            if match is not None:
                return match
            if deadline.over():
                raise DialogueTimeout(f"{pattern!r} did not come within {self.timeout} s", *self._seen())
            time.sleep(POLL_PAUSE)

    def wait_for(self, text: str) -> str:
        """Returns what was printed up to the end of the text: of callbacks, or of a client's commands."""
        self._begin()
        return self._take(re.compile(re.escape(text)))

    def wait_for_menu(self) -> str:
        """Returns what was printed before the next menu. For the start, and where a client opened the menu."""
        self._begin()
        return self._result()

    def wait_for_end(self) -> int:
        """Waits for the end of the process that was started; its exit status, 128 and the number for a signal."""
        self._begin()
        self._take(None)
        self._spawned.close()
        status: int | None = self._spawned.exitstatus
        return status if status is not None else 128 + int(self._spawned.signalstatus)

    def main_menu(self) -> None:
        """Leaves the menu that is open for the main menu. The system state's menu has no way back."""
        if not self.menu.startswith(MAIN_MENU):
            self.press("x")

    def revision(self) -> Revision:
        """Of the module whose menu is open, by key 2. Raises UnexpectedReply where the module does not answer."""
        printed = self.press("2")
        match = REVISION.search(printed)
        if match is None:
            raise UnexpectedReply("a revision was expected", *self._seen())
        major, minor, week, year, num, patch = map(int, match.groups())
        return Revision(major, minor, patch, num, year, week)

    def _begin(self) -> None:
        self._sent = ""
        self._command_start = len(self.transcript) - len(self._unread)

    def _seen(self) -> tuple[str, str, str]:
        return self.menu, self._sent, self.transcript[self._command_start:]

    def _read(self, deadline: Deadline) -> bool:
        """Takes what comes next; False at the end."""
        import pexpect

        try:
            text = self._spawned.read_nonblocking(65536, deadline.left())
        except pexpect.TIMEOUT:
            raise DialogueTimeout(f"no answer within {self.timeout} s", *self._seen()) from None
        except (pexpect.EOF, OSError):
            return False
        text = text.replace("\r", "")  # of the terminal: the console prints none
        self._unread += text
        self.transcript += text
        return True

    def _take(self, pattern: re.Pattern[str] | None) -> str:
        """What is printed up to the end of the pattern; without one, up to the end of all."""
        deadline = Deadline(self.timeout)
        while True:
            match = pattern.search(self._unread) if pattern else None
            if match is not None:
                taken, self._unread = self._unread[:match.end()], self._unread[match.end():]
                return taken
            if not self._read(deadline):
                if pattern is not None:
                    raise ConnectionLost("the console has ended", *self._seen())
                taken, self._unread = self._unread, ""
                return taken

    def _result(self) -> str:
        """What a key printed, up to the next menu's screen or to the console's end."""
        try:
            printed = self._take(PROMPT)
        except ConnectionLost:
            if not self._sent:
                raise
            printed, self._unread = self._unread, ""
            return ECHO.sub("", printed)
        screens = list(SCREEN.finditer(printed))
        if screens:
            self.menu = printed[screens[-1].start():].strip("\n\t ")
            printed = printed[:screens[-1].start()]
        return ECHO.sub("", printed)
