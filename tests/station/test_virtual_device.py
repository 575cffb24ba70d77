"""VirtualDevice against the real one."""

import os

import pytest

from r47_station import DeviceGone, DeviceRefused, DeviceTimeout, VirtualDevice


@pytest.fixture(scope="module")
def stepped(pytestconfig):
    with VirtualDevice.start(pytestconfig.getoption("--r47-sim"), clock="stepped", timeout=60.0) as device:
        yield device


def test_shown_property_tells_all_of_it(stepped):
    stepped.set("system.state", "warning")
    state = stepped.show("system")["system.state"]
    assert (state.value, state.value_name, state.type, state.settable) == (5, "warning", "choice", True)
    assert state.choices[3] == "running"
    timeout = stepped.show("system.heartbeat.timeout")["system.heartbeat.timeout"]
    assert (timeout.unit, timeout.minimum, timeout.maximum) == ("ms", 0, 4294967295)


def test_schema_has_the_same_properties_without_values(stepped):
    schema = stepped.schema()
    assert schema.keys() == stepped.show().keys()
    assert all(one.value is None for one in schema.values())


@pytest.mark.parametrize("name, value", [
    ("system.heartbeat.timeout", 7), ("illumination.temperature.ambient", -3.25), ("autofocus.link", False),
    ("imx296.roi", "8,12"), ("autofocus.device_type", "R47XXXX2"),
])
def test_set_value_is_read_back(stepped, name, value):
    stepped.set(name, value)
    shown = stepped.show(name)[name]
    assert value in (shown.value, shown.value_name)
    assert type(shown.value) is type(value) or shown.value_name == value


def test_refusal_has_the_device_words(stepped):
    with pytest.raises(DeviceRefused) as failure:
        stepped.set("system.state", 7)
    assert failure.value.command == "set system.state 7"
    assert "system.state" in failure.value.reason
    with pytest.raises(DeviceRefused, match="did you mean"):
        stepped.value("system.stat")


def test_fault_counts_until_it_is_cleared(stepped):
    fault = stepped.fault("rtu_t::get_exposure status -1")
    assert fault.fired() == 0
    fault.clear()
    with pytest.raises(DeviceRefused):
        fault.fired()


def test_step_moves_the_clock(stepped):
    before = stepped.value("clock.time")
    stepped.step("2500ms")
    assert stepped.value("clock.time") == before + 2.5


def test_wait_ends_when_the_property_is_so(stepped):
    stepped.set("autofocus.target", 150)
    with stepped.journal() as journal:
        stepped.step("1s")
        assert journal.next().text == "step 1s"
    stepped.wait("autofocus.position", "<=", 150)
    with pytest.raises(ValueError):
        stepped.wait("autofocus.position", "=", 150)


def test_command_that_takes_too_long_is_a_timeout_and_the_next_is_answered(stepped):
    with pytest.raises(DeviceTimeout):
        stepped.command("wait autofocus.position == 2900", timeout=0.05)
    assert stepped.value("power") is True


def test_journal_tells_what_comes_after(stepped):
    stepped.set("system.heartbeat.timeout", 1)
    with stepped.journal() as journal:
        stepped.set("system.heartbeat.timeout", 2)
        stepped.set("system.heartbeat.timeout", 3)
        assert journal.next().text == "set system.heartbeat.timeout 2"
        line = journal.wait_for("timeout 3")
    assert (line.kind, line.error, line.object) == ("command", "", 0)


def test_journal_tells_calls_of_the_console(virtual_device, terminal):
    virtual_device.fault("rtu_t::get_exposure status -1")
    with virtual_device.journal() as journal:
        terminal.press("b")
        terminal.press("E")
        line = journal.wait_for(lambda line: line.kind == "call")
    assert (line.text, line.error) == ("rtu_t::get_exposure() = -1", "EIO")
    assert line.program.startswith("r47-console.")


def test_named_device_is_found_and_not_ended(stepped):
    with VirtualDevice(stepped.directory) as other:
        other.set("rtu.prohibited_time", 9)
    assert stepped.value("rtu.prohibited_time") == 9


def test_command_of_two_lines_is_not_sent(stepped):
    with pytest.raises(ValueError):
        stepped.command("power off\npower on")


def test_started_device_goes_with_its_directory(pytestconfig):
    with VirtualDevice.start(pytestconfig.getoption("--r47-sim")) as device:
        directory = device.directory
        assert os.path.isdir(directory)
    assert not os.path.exists(directory)
    with pytest.raises(DeviceGone):
        VirtualDevice(directory)


def test_device_that_does_not_start_says_why(pytestconfig):
    with pytest.raises(DeviceGone, match="usage: clock"):
        VirtualDevice.start(pytestconfig.getoption("--r47-sim"), clock="sideways")


def test_scaled_clock_has_two_words(pytestconfig):
    with VirtualDevice.start(pytestconfig.getoption("--r47-sim"), clock="scaled 20") as device:
        assert device.value("clock.mode") == "scaled 20"
