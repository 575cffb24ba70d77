"""For test stations: a console over TCP, a console at its terminal, and the virtual device in their place."""

from .codes import (CameraReading, Contact, LightBar, MissingFile, PinConfiguration, PinFunction, PinType, ScanMode)
from .console import PORT, Answers, Console, OperatedMenu, Waiting
from .errors import (CommandRefused, ConnectionLost, DeviceGone, DeviceRefused, DeviceTimeout, DialogueError,
                     DialogueTimeout, StationError, UnexpectedReply)
from .terminal import Revision, Terminal
from .virtual_device import Fault, Journal, JournalLine, Property, VirtualDevice

__all__ = [
    "Answers", "CameraReading", "CommandRefused", "ConnectionLost", "Console", "Contact", "DeviceGone",
    "DeviceRefused", "DeviceTimeout", "DialogueError", "DialogueTimeout", "Fault", "Journal", "JournalLine",
    "LightBar", "MissingFile", "OperatedMenu", "PORT", "PinConfiguration", "PinFunction", "PinType", "Property",
    "Revision", "ScanMode", "StationError", "Terminal", "UnexpectedReply", "VirtualDevice", "Waiting",
]
