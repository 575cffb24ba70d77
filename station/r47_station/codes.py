"""The numbers of the line protocol, by name."""

from __future__ import annotations

import dataclasses
import enum

PINS = range(6)
LONGEST_TIME = 2**31 - 1  # ms, of the times of a pin
RATES = range(1, 1001)  # frames per second; which of them the fitted sensor can do, the device knows
ROI_WIDTH = 2472  # pixels of the larger sensor
ROI_HEIGHT = 2064


class MissingFile(enum.IntFlag):
    """What a device check did not find."""

    HUB_BUS = 1
    REAL_TIME_UNIT = 2
    AUTOFOCUS = 4
    ILLUMINATION = 16
    BUTTON = 32
    IMAGE_SENSOR = 64
    """One of the two image sensors: normal for a device, which has only one."""
    HUB_FIRMWARE = 128
    HUB_INTERRUPT = 256


class PinType(enum.IntEnum):
    NPN = 0
    PNP = 1
    PUSH_PULL = 2


class PinFunction(enum.IntEnum):
    OUTPUT = 0
    ILLUMINATION_OUTPUT = 1
    INPUT = 2
    TRIGGER_INPUT = 3
    QUADRATURE_INPUT_A = 4
    QUADRATURE_INPUT_B = 5


class Contact(enum.IntEnum):
    NORMALLY_OPEN = 0
    NORMALLY_CLOSED = 1


class LightBar(enum.Enum):
    """The colours that a client can give the light bar; the value is the console's key."""

    RED = "o"
    CYAN = "O"


class ScanMode(enum.IntEnum):
    NORMAL = 0
    SUBSAMPLING = 1
    BINNING = 2


class CameraReading(enum.Enum):
    """What the camera menu shows at the console's terminal, and never sends; the value is the console's key."""

    TRIGGER_MODE = "W"
    RATE = "U"
    RATE_LIMITS = "L"
    GAIN = "e"
    EXPOSURE = "f"
    EXPOSURE_LIMITS = "w"
    FRAME_COUNT = "i"
    ROI_OFFSET = "J"
    SENSOR = "k"
    MISSED_TRIGGERS = "z"


@dataclasses.dataclass(frozen=True)
class PinConfiguration:
    """How a digital I/O pin works. Times are in milliseconds, 0 to 2147483647; None: not active."""

    type: PinType = PinType.NPN
    function: PinFunction = PinFunction.OUTPUT
    contact: Contact = Contact.NORMALLY_OPEN
    inverted: bool = False
    off_delay: int | None = None
    on_delay: int | None = None
    pulse: int | None = None

    def __post_init__(self) -> None:
        for name in ("off_delay", "on_delay", "pulse"):
            time = getattr(self, name)
            if time is not None and not 0 <= time <= LONGEST_TIME:
                raise ValueError(f"{name}: {time} is not 0 to {LONGEST_TIME} ms")

    def fields(self) -> list[int]:
        """As the line protocol has them, behind the pin."""
        fields = [int(self.type), int(self.function), int(self.contact), int(self.inverted)]
        for time in (self.off_delay, self.on_delay, self.pulse):
            fields += [int(time is not None), time or 0]
        return fields

    @staticmethod
    def from_fields(fields: list[int]) -> PinConfiguration:
        """Of what `fields` gives. ValueError where a number has no name."""
        off_delay, on_delay, pulse = (fields[i + 1] if fields[i] else None for i in (4, 6, 8))
        return PinConfiguration(PinType(fields[0]), PinFunction(fields[1]), Contact(fields[2]), fields[3] != 0,
                                off_delay, on_delay, pulse)
