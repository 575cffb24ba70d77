"""A console in socket mode, driven over TCP."""

from __future__ import annotations

import collections
import contextlib
import enum
import re
import socket
import time
from types import TracebackType
from typing import Iterator, NoReturn

from .codes import (PINS, RATES, ROI_HEIGHT, ROI_WIDTH, CameraReading, LightBar, MissingFile,
                    PinConfiguration, ScanMode)
from .deadline import Deadline
from .errors import CommandRefused, ConnectionLost, DialogueError, DialogueTimeout, UnexpectedReply

PORT = 32360
END_MARK = b"\\n"  # a backslash and an n
PAUSE = 0.05  # s between two attempts to connect
REPLY = re.compile(rb"(?:-?[0-9]+;)*")


class _Menu(enum.Enum):
    MAIN = ("main", "")
    DIGITAL_IO = ("digital I/O", "a")
    CAMERA = ("camera", "k")
    BUTTON = ("button", "t")

    def __init__(self, title: str, key: str) -> None:
        self.title = title
        self.key = key


class OperatedMenu(enum.Enum):
    """Menus whose keys are typed at the console's terminal; the value is the main menu's key."""

    REAL_TIME_UNIT = "b"
    ILLUMINATION = "c"
    IMX296 = "e"
    IMX567 = "E"
    AUTOFOCUS = "f"
    GYRO = "g"
    ALARM = "G"
    DELEGATE = "h"
    DELEGATE_AND_ALARM = "H"
    RANGING = "p"
    SYSTEM = "l"


class Waiting:
    """The status of a command that the console keeps until some later command replies."""

    def __init__(self, console: Console, command: str, menu: str) -> None:
        self._console = console
        self._command = command
        self._menu = menu
        self._status: int | None = None

    @property
    def known(self) -> bool:
        """Whether the status has come."""
        return self._status is not None

    @property
    def status(self) -> int:
        """0 for success. Fetched by `Console.settle()` where it has not come yet."""
        if self._status is None:
            self._console.settle()
        assert self._status is not None
        return self._status

    def check(self) -> None:
        """Raises CommandRefused where the status is not 0."""
        if self.status != 0:
            raise CommandRefused(f"{self._command} was answered with status {self.status}", self._menu, self._command,
                                 f"{self.status};", self.status)

    def _arrive(self, status: int) -> None:
        self._status = status


class Answers:
    """The client's part in a menu that is operated at the terminal: the numbers that this asks the client for."""

    def __init__(self, console: Console) -> None:
        self._console = console

    def give(self, number: int) -> None:
        """Answers the question that the menu asks now or next. Returns when the console has taken the number."""
        self._console._begin()
        self._console._answer(_number("number", number, range(-2**31, 2**31)))


class Console:
    """One connection to a console in socket mode; a context manager that closes it.

    Methods return when the console has carried the command out and told so, those that say "not acknowledged" when it
    was sent; `settle()` waits for these. Each has `timeout` seconds for all of it and raises a DialogueError after
    that. After a DialogueError other than CommandRefused the connection is closed, and every method raises the same
    again. Arguments beyond their limits raise ValueError, and nothing is sent. One thread at a time.
    """

    def __init__(self, host: str, port: int = PORT, *, patience: float = 10.0, timeout: float = 10.0) -> None:
        """Connects, again and again for `patience` seconds, until a console is there and has answered a device check.

        timeout: seconds for each command; may be changed later.
        Raises ConnectionLost where there is none, DialogueTimeout where it serves another client.
        """
        self.timeout = timeout
        self.foreign_items: list[int] = []
        """Results that waited for a reply, of commands that were not this client's."""
        self._menu = _Menu.MAIN
        self._operated = ""
        self._sent = b""
        self._received = b""
        self._unread = b""
        self._waiting: collections.deque[Waiting] = collections.deque()
        self._others_may_have_items = True
        self._unacknowledged = False
        self._failure: DialogueError | None = None
        patient = Deadline(patience)
        while True:
            try:
                self._connect(host, port, patient)
                return
            except ConnectionLost:
                if patient.over():
                    raise
            # Nothing tells a client when a console begins to listen.
            time.sleep(min(PAUSE, patient.left()))

    def _connect(self, host: str, port: int, patient: Deadline) -> None:
        self._failure = None
        self._begin()
        try:
            self._socket = socket.create_connection((host, port), max(patient.left(), PAUSE))
        except OSError as error:
            raise ConnectionLost(f"{host}:{port}: {error}", "none", "", "") from error
        self._socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.first_check = self.check_device()
        """What the device check at the connection found missing."""

    def __enter__(self) -> Console:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        if kind is None:
            self.close()
        else:
            self._socket.close()

    def close(self) -> None:
        """Waits until all is carried out, and closes the connection; the console leaves its menus by itself.

        The client closes first, so that the port is free for the next console at once.
        """
        try:
            if self._failure is None and not self._operated and (self._unacknowledged or self._waiting):
                self.settle()
        finally:
            self._socket.close()

    # The dialogue.

    @property
    def menu(self) -> str:
        """The menu that the console is in."""
        return self._operated or self._menu.title

    def _begin(self) -> None:
        """A command begins."""
        if self._failure is not None:
            raise self._failure
        self._deadline = Deadline(self.timeout)
        self._sent = b""
        self._received = b""

    def _seen(self) -> tuple[str, str, str]:
        return self.menu, self._sent.decode("ascii"), self._received.decode("latin-1")

    def _fail(self, error: DialogueError) -> NoReturn:
        self._failure = error
        self._socket.close()
        raise error

    def _send(self, line: str) -> None:
        data = line.encode("ascii") + b"\n"
        self._sent += data
        self._socket.settimeout(max(self._deadline.left(), 0.001))
        try:
            self._socket.sendall(data)
        except TimeoutError:
            self._fail(DialogueTimeout(f"not sent within {self.timeout} s", *self._seen()))
        except OSError as error:
            self._fail(ConnectionLost(str(error), *self._seen()))

    def _receive(self) -> None:
        """Takes what comes next, at least one byte."""
        self._socket.settimeout(max(self._deadline.left(), 0.001))
        # The console sends an echo and its reply one after the other: the second waits until the first is acknowledged.
        self._socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)
        try:
            data = self._socket.recv(4096)
        except TimeoutError:
            self._fail(DialogueTimeout(f"no answer within {self.timeout} s", *self._seen()))
        except OSError as error:
            self._fail(ConnectionLost(str(error), *self._seen()))
        if not data:
            self._fail(ConnectionLost("the console has closed the connection", *self._seen()))
        self._received += data
        self._unread += data

    def _key(self, key: str) -> None:
        self._send(key)
        self._unacknowledged = True

    def _answer(self, number: int) -> None:
        """Sends a number that the console asks for, and takes its echo."""
        text = str(number)
        self._send(text)
        echo = text.encode("ascii")
        while len(self._unread) < len(echo) and echo.startswith(self._unread):
            self._receive()
        if not self._unread.startswith(echo):
            self._fail(UnexpectedReply(f"the echo of {text} was expected", *self._seen()))
        self._unread = self._unread[len(echo):]

    def _reply(self, count: int) -> list[int]:
        """The items of the command's own reply, so many; those that waited go to whom they belong."""
        while END_MARK not in self._unread:
            self._receive()
        text, _, self._unread = self._unread.partition(END_MARK)
        if not REPLY.fullmatch(text) or self._unread:
            self._fail(UnexpectedReply("a reply was expected", *self._seen()))
        items = [int(item) for item in text.split(b";")[:-1]]
        foreign = len(items) - count - len(self._waiting)
        if foreign < 0 or foreign > 0 and not self._others_may_have_items:
            self._fail(UnexpectedReply(f"{count} items and {len(self._waiting)} that waited were expected",
                                       *self._seen()))
        self.foreign_items += items[:foreign]
        for waiting, status in zip(self._waiting, items[foreign:]):
            waiting._arrive(status)
        self._waiting.clear()
        self._others_may_have_items = False
        self._unacknowledged = False
        return items[len(items) - count:]

    def _enter(self, menu: _Menu) -> None:
        if self._operated:
            raise RuntimeError(f"{self._operated} is operated at the terminal; leave the with block first")
        self._begin()
        if self._menu is menu:
            return
        if self._menu is not _Menu.MAIN:
            self._key("x")
            self._menu = _Menu.MAIN
        if menu is not _Menu.MAIN:
            self._key(menu.key)
            self._menu = menu

    def _wait(self, command: str) -> Waiting:
        waiting = Waiting(self, command, self.menu)
        self._waiting.append(waiting)
        return waiting

    def _checked_status(self, command: str) -> None:
        [status] = self._reply(1)
        if status != 0:
            raise CommandRefused(f"{command} was answered with status {status}", *self._seen(), status)

    # The main menu.

    def check_device(self) -> MissingFile:
        """Which of the device's files cannot be opened; 0: all are there. A device with one image sensor answers
        MissingFile.IMAGE_SENSOR. Leaves the menu that the console was in."""
        self._enter(_Menu.MAIN)
        self._key("A")
        [code] = self._reply(1)
        return MissingFile(code)

    def settle(self) -> None:
        """Waits until every command so far has been carried out, and the results that wait have come. Goes to the main
        menu, so an acquisition of the camera ends."""
        self.check_device()

    def use_old_gyro_firmware(self) -> None:
        """For the gyro menus from now on. Not acknowledged."""
        self._enter(_Menu.MAIN)
        self._key("O")

    @contextlib.contextmanager
    def operated(self, menu: OperatedMenu) -> Iterator[Answers]:
        """Enters a menu that is operated at the console's terminal; the object answers what this asks the client.

        The operator must leave the menu before the block ends: its end waits for that with a device check, of which
        `timeout` is the limit. What the menu's commands left waiting is in `foreign_items` then. `SYSTEM` ends the
        console when it is left.
        """
        if self._waiting:
            self.settle()
        self._enter(_Menu.MAIN)
        self._key(menu.value)
        self._operated = menu.name.lower()
        self._others_may_have_items = True
        yield Answers(self)
        self._operated = ""
        if menu is not OperatedMenu.SYSTEM:
            self.settle()

    # Digital I/O.

    def _ask_of_pin(self, key: str, pin: int) -> None:
        """Presses a key that asks for a pin first, and answers that."""
        _number("pin", pin, PINS)
        self._enter(_Menu.DIGITAL_IO)
        self._key(key)
        self._answer(pin)

    def configure_pin(self, pin: int, configuration: PinConfiguration) -> None:
        """Pins 0 to 5. Raises CommandRefused where the device does not take it."""
        self._ask_of_pin("f", pin)
        for number in configuration.fields():
            self._answer(number)
        self._checked_status(f"configure_pin({pin})")

    def pin_configuration(self, pin: int) -> PinConfiguration:
        """Of pins 0 to 5. The protocol has no status for it: where the device fails, it is a new configuration."""
        self._ask_of_pin("F", pin)
        items = self._reply(11)
        try:
            configuration = PinConfiguration.from_fields(items[1:])
        except ValueError as error:
            self._fail(UnexpectedReply(str(error), *self._seen()))
        if items[0] != pin:
            self._fail(UnexpectedReply(f"pin {pin} was asked for", *self._seen()))
        return configuration

    def set_pin(self, pin: int, high: bool) -> None:
        """Of pins 0 to 5. Raises CommandRefused where it is no output, and where the device fails."""
        self._ask_of_pin("h", pin)
        self._answer(int(high))
        self._checked_status(f"set_pin({pin}, {high})")

    def pin(self, pin: int) -> bool:
        """Whether pin 0 to 5 is high. The protocol has no status for it: where the device fails, it is low."""
        self._ask_of_pin("H", pin)
        value, again = self._reply(2)
        if value != again or value not in (0, 1):
            self._fail(UnexpectedReply("a value and the same again were expected", *self._seen()))
        return value == 1

    def pins(self) -> list[bool]:
        """Of all six, at one moment, pin 0 first. Without a status, as `pin`."""
        self._enter(_Menu.DIGITAL_IO)
        self._key("p")
        [bits] = self._reply(1)
        if bits not in range(2 ** len(PINS)):
            self._fail(UnexpectedReply("a bit for each of six pins was expected", *self._seen()))
        return [bits >> pin & 1 == 1 for pin in PINS]

    def set_light_bar(self, colour: LightBar) -> Waiting:
        self._enter(_Menu.DIGITAL_IO)
        self._key(colour.value)
        return self._wait(f"set_light_bar({colour.name})")

    # The camera. It is opened by the first of these commands, and closed by one of another menu.

    def _camera(self, key: str) -> None:
        self._enter(_Menu.CAMERA)
        self._key(key)

    def trigger(self) -> None:
        """A single shot. Not acknowledged."""
        self._camera("m")

    def set_continuous_trigger(self, continuous: bool) -> None:
        """Whether the unit triggers by itself. Not acknowledged."""
        self._camera("t" if continuous else "T")

    def set_rate(self, rate: int) -> None:
        """Frames per second, 1 to 1000. The number has arrived when it returns; whether the sensor can do it, is shown
        at the terminal alone."""
        _number("rate", rate, RATES)
        self._camera("u")
        self._answer(rate)

    def start_acquisition(self) -> None:
        """It lasts until `stop_acquisition`, or until the camera menu is left. Not acknowledged."""
        self._camera("v")

    def stop_acquisition(self) -> None:
        """Not acknowledged."""
        self._camera("V")

    def set_roi_offset(self, x: int, y: int) -> Waiting:
        """Upper left corner of the region of interest, in pixels, inside the larger sensor; which of these the fitted
        one can do, the status tells."""
        _number("x", x, range(ROI_WIDTH))
        _number("y", y, range(ROI_HEIGHT))
        self._camera("j")
        self._answer(x)
        self._answer(y)
        return self._wait(f"set_roi_offset({x}, {y})")

    def set_scan_mode(self, mode: ScanMode) -> None:
        """The number has arrived when it returns; there is no status."""
        self._camera("S")
        self._answer(int(mode))

    def check_scan_mode(self) -> Waiting:
        """Whether the scan mode can be read; the mode is shown at the terminal."""
        self._camera("s")
        return self._wait("check_scan_mode()")

    def reset_missed_triggers(self) -> None:
        """Not acknowledged."""
        self._camera("Z")

    def show(self, reading: CameraReading) -> None:
        """At the console's terminal; it is not sent. Not acknowledged."""
        self._camera(reading.value)

    # The button.

    def button_level(self) -> bool:
        """The level of the button's interrupt line. Where the device fails, it is low."""
        self._enter(_Menu.BUTTON)
        self._key("r")
        [level] = self._reply(1)
        if level not in (0, 1):
            self._fail(UnexpectedReply("0 or 1 was expected", *self._seen()))
        return level == 1


def _number(name: str, number: int, legal: range) -> int:
    """The number, where it is legal."""
    if number not in legal:
        raise ValueError(f"{name}: {number} is not {legal.start} to {legal.stop - 1}")
    return number
