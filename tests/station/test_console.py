"""Console against the real console in a virtual device."""

import signal
import subprocess

import pytest

from r47_station import (CameraReading, CommandRefused, ConnectionLost, Contact, DialogueTimeout, LightBar, MissingFile,
                         OperatedMenu, PinConfiguration, PinFunction, PinType, ScanMode, Terminal, Console)
from r47_station.pytest_plugin import free_port

INPUT = PinConfiguration(PinType.PNP, PinFunction.INPUT)
OUTPUT = PinConfiguration()


def test_check_names_what_is_missing(console, virtual_device):
    assert console.check_device() == MissingFile(0)
    virtual_device.command("node remove /dev/i2c-2")
    virtual_device.command("node remove /dev/imx567")
    assert console.check_device() == MissingFile.HUB_BUS | MissingFile.IMAGE_SENSOR
    virtual_device.command("node restore /dev/i2c-2")
    virtual_device.command("node restore /dev/imx567")


def test_pins_are_set_and_read(console, virtual_device):
    console.configure_pin(5, OUTPUT)
    console.set_pin(5, True)
    assert virtual_device.value("dio.5.value") is True
    assert console.pin(5) is True
    assert console.pins() == [False, False, False, False, False, True]
    console.set_pin(5, False)
    assert console.pin(5) is False


@pytest.mark.parametrize("configuration", [
    INPUT,
    PinConfiguration(PinType.PUSH_PULL, PinFunction.ILLUMINATION_OUTPUT, Contact.NORMALLY_CLOSED, inverted=True),
    PinConfiguration(PinType.NPN, PinFunction.TRIGGER_INPUT, off_delay=10, on_delay=2**31 - 1, pulse=0),
], ids=["input", "illumination", "times"])
def test_pin_configuration_is_read_back(console, configuration):
    console.configure_pin(1, configuration)
    assert console.pin_configuration(1) == configuration


def test_refused_pin_tells_status_and_dialogue(console):
    console.configure_pin(3, INPUT)
    with pytest.raises(CommandRefused) as failure:
        console.set_pin(3, True)
    assert failure.value.status == -1
    assert failure.value.menu == "digital I/O"
    assert (failure.value.sent, failure.value.received) == ("h\n3\n1\n", "31-1;\\n")
    assert console.pin(3) is False  # the dialogue goes on


@pytest.mark.parametrize("command", [
    lambda console: console.pin(6),
    lambda console: console.set_pin(-1, True),
    lambda console: console.pin_configuration(256),
    lambda console: console.configure_pin(6, OUTPUT),
    lambda console: console.set_rate(0),
    lambda console: console.set_rate(1001),
    lambda console: console.set_roi_offset(2472, 0),
    lambda console: console.set_roi_offset(0, -1),
    lambda console: PinConfiguration(pulse=2**31),
    lambda console: PinConfiguration(off_delay=-1),
])
def test_what_is_beyond_its_limits_is_not_sent(console, command):
    menu = console.menu
    with pytest.raises(ValueError):
        command(console)
    assert console.menu == menu


def test_results_that_wait_come_with_the_next_reply_each_to_its_command(console, virtual_device):
    virtual_device.fault("rtu_t::set_lightbar_col count 1 status -7")
    red = console.set_light_bar(LightBar.RED)
    offset = console.set_roi_offset(8, 8)
    refused = console.set_roi_offset(3, 3)
    cyan = console.set_light_bar(LightBar.CYAN)
    assert not red.known and not cyan.known
    console.pins()
    assert (red.status, offset.status, refused.status, cyan.status) == (-7, 0, -1, 0)
    assert virtual_device.value("rtu.lightbar.blue") == 255
    with pytest.raises(CommandRefused, match="status -7"):
        red.check()
    cyan.check()


def test_result_is_fetched_where_nothing_else_replies(console):
    assert console.check_scan_mode().status == 0
    assert console.menu == "main"


def test_camera_does_what_it_is_told(console, virtual_device):
    frames = virtual_device.value("imx296.frames")
    console.set_rate(25)
    console.set_scan_mode(ScanMode.BINNING)
    console.start_acquisition()
    console.trigger()
    console.show(CameraReading.FRAME_COUNT)
    virtual_device.wait("camera.acquiring", "==", True)
    virtual_device.wait("imx296.frames", "==", frames + 1)
    assert virtual_device.value("rtu.trigger.rate") == 25
    assert virtual_device.show("imx296.scan_mode")["imx296.scan_mode"].value == ScanMode.BINNING
    console.set_continuous_trigger(True)
    virtual_device.wait("rtu.trigger.continuous", "==", True)
    console.set_continuous_trigger(False)
    console.stop_acquisition()
    virtual_device.wait("camera.acquiring", "==", False)
    console.reset_missed_triggers()
    console.settle()
    assert virtual_device.value("rtu.trigger.continuous") is False


def test_button_level_follows_the_button(console, virtual_device):
    released = console.button_level()
    virtual_device.command("button down")
    assert console.button_level() is not released
    virtual_device.command("button up")
    assert console.button_level() is released


def test_command_that_hangs_is_a_timeout(own_console, virtual_device):
    console, _ = own_console
    fault = virtual_device.fault("rtu_t::get_all_pin_values delay 3600000")
    console.timeout = 0.2
    with pytest.raises(DialogueTimeout) as failure:
        console.pins()
    assert (failure.value.menu, failure.value.sent, failure.value.received) == ("digital I/O", "a\np\n", "")
    fault.clear()


def test_console_that_is_killed_is_told(own_console):
    console, process = own_console
    process.send_signal(signal.SIGTERM)
    process.wait()
    with pytest.raises(ConnectionLost):
        console.check_device()


def test_console_ends_and_its_port_is_free_when_the_client_closes(virtual_device, r47_console):
    for _ in range(2):  # in this network: a port that is still held would end the second
        with subprocess.Popen(virtual_device.run(r47_console, "socket"), stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL) as process:
            with Console("127.0.0.1", patience=60.0, timeout=60.0) as console:
                red = console.set_light_bar(LightBar.RED)
            assert red.known
            assert process.wait() == 0


def test_operated_menu_asks_the_client_and_leaves_its_items(virtual_device, r47_console):
    port = free_port()
    with Terminal.socket_mode(virtual_device.run(r47_console, "socket", port=port), timeout=60.0) as terminal:
        with Console("127.0.0.1", port, patience=60.0, timeout=60.0) as console:
            with console.operated(OperatedMenu.REAL_TIME_UNIT) as answers:
                with pytest.raises(RuntimeError, match="real_time_unit"):
                    console.pins()
                terminal.wait_for("Rtu Low Level Control v0.1")
                terminal.wait_for("option: ")  # before it the keys are still the local menu's
                terminal.type("t")
                answers.give(40)
                terminal.wait_for("sensor set  fps: 40\n")
                terminal.type("x")
            assert console.foreign_items == [0]
            assert console.pins() == [False] * 6
    assert virtual_device.value("rtu.trigger.rate") == 40
