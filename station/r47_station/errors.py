"""What can go wrong at a station: one exception for each cause, each with all that is known of it."""

from __future__ import annotations


class StationError(Exception):
    """Whatever this package raises, but for ValueError where an argument is beyond its limits."""


class DialogueError(StationError):
    """A dialogue with a console that did not go as it should. The console is in an unknown state: connect anew.

    menu: the menu that the console was in, as "digital I/O".
    sent: what was sent since the command began.
    received: what came since then, as it came.
    """

    def __init__(self, problem: str, menu: str, sent: str, received: str) -> None:
        super().__init__(f"{problem}; in the menu {menu!r}, sent {sent!r}, received {received!r}")
        self.problem = problem
        self.menu = menu
        self.sent = sent
        self.received = received


class DialogueTimeout(DialogueError, TimeoutError):
    """The answer did not come in time."""


class ConnectionLost(DialogueError, ConnectionError):
    """The console ended or closed the connection, or never took it."""


class UnexpectedReply(DialogueError):
    """Something came that the console does not say there."""


class CommandRefused(DialogueError):
    """The hardware's library answered a command with a status that is not 0. The dialogue itself is as it should be.

    status: that status.
    """

    def __init__(self, problem: str, menu: str, sent: str, received: str, status: int) -> None:
        super().__init__(problem, menu, sent, received)
        self.status = status


class DeviceRefused(StationError):
    """The virtual device refused a control command.

    command: the command.
    reason: the device's own words.
    """

    def __init__(self, command: str, reason: str) -> None:
        super().__init__(f"{command!r}: {reason}")
        self.command = command
        self.reason = reason


class DeviceGone(StationError, ConnectionError):
    """There is no such virtual device, or it has ended."""


class DeviceTimeout(StationError, TimeoutError):
    """The virtual device did not answer in time."""
