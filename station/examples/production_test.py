"""The production test of a camera, ten steps, with a report for the line's database:

    PYTHONPATH=station pytest-3 station/examples/production_test.py --serial-number 4711 --junitxml report.xml

Each step is about one component, which the report names with what was measured and its limits. So tested is a virtual
device, whose r47-sim and r47-console are in the search path; a real one with --r47-address and --r47-terminal.
"""

import re

import pytest

from r47_station import MissingFile, PinConfiguration, PinFunction, PinType
from r47_station.codes import PINS


def number(text, pattern):
    """What the console printed behind a label."""
    match = re.search(pattern, text)
    assert match, f"the console printed {text!r}, where {pattern!r} was expected"
    return float(match[1])


@pytest.mark.component("device")
def test_01_all_files_of_the_device_are_there(console):
    missing = console.check_device() & ~MissingFile.IMAGE_SENSOR  # there is one of two
    assert not missing, f"missing: {missing!r}"


@pytest.mark.component("real-time unit")
def test_02_real_time_unit_has_the_released_firmware(terminal, limits):
    terminal.press("b")
    revision = terminal.revision()
    limits("firmware", revision.major + revision.minor / 100, 1.06, 1.99)


@pytest.mark.component("digital I/O")
@pytest.mark.parametrize("pattern", [0b010101, 0b101010], ids=["even", "odd"])
def test_03_outputs_follow_their_commands(console, limits, pattern):
    for pin in PINS:
        console.configure_pin(pin, PinConfiguration(PinType.PUSH_PULL, PinFunction.OUTPUT))
        console.set_pin(pin, bool(pattern >> pin & 1))
    limits("pins", sum(high << pin for pin, high in enumerate(console.pins())), pattern, pattern)


@pytest.mark.component("button")
def test_04_button_is_not_stuck(console):
    assert not console.button_level()


@pytest.mark.component("camera")
def test_05_region_of_interest_can_be_moved(console, limits):
    limits("status", console.set_roi_offset(8, 8).status, 0, 0)


@pytest.mark.component("real-time unit")
def test_06_exposure_is_kept(terminal, limits):
    terminal.press("b")
    terminal.press("e", 2500)
    limits("exposure", number(terminal.press("E"), r"exposure: (\d+)"), 2500, 2500, "us")


@pytest.mark.component("illumination")
def test_07_illumination_is_not_hot(terminal, limits):
    terminal.press("c")
    limits("temperature", number(terminal.press("o"), r"(-?\d+)"), 5, 60, "C")


@pytest.mark.component("autofocus")
def test_08_autofocus_finds_its_frequency(terminal, limits):
    terminal.press("f")
    terminal.press("c")
    limits("frequency", float(terminal.poll("d", r"get freq: ([1-9]\d*)hz")[1]), 150, 200, "Hz")


@pytest.mark.component("ranging sensor")
def test_09_ranging_sensor_sees_the_wall(terminal, limits):
    terminal.press("p")
    terminal.press("a", 16)
    zones = [int(zone) for zone in terminal.press("h").split()]
    limits("zones", len(zones), 16, 16)
    limits("nearest zone", min(zones), 750, 850, "mm")
    limits("farthest zone", max(zones), 750, 850, "mm")


@pytest.mark.component("image sensor")
def test_10_image_sensor_keeps_its_gain(terminal, limits):
    terminal.press("e")
    terminal.press("E", 120)
    limits("gain", number(terminal.press("e"), r"gain: (\d+)"), 120, 120, "0.1 dB")
