"""The fixtures, and what they leave to the next test."""

import pytest


def test_fault_of_one_test(virtual_device):
    virtual_device.fault("rtu_t::get_exposure status -1")
    assert len(virtual_device.command("fault list")) == 1


def test_is_none_of_the_next(virtual_device):
    assert virtual_device.command("fault list") == []


def test_menu_that_one_test_leaves_open(terminal, console):
    terminal.press("b")
    console.pins()
    assert console.menu == "digital I/O"


def test_is_closed_for_the_next(terminal, console):
    assert terminal.menu.startswith("\x1b[0m")
    assert console.menu == "main"


@pytest.mark.parametrize("value", [89.99, 110.01])
def test_limits_fail_outside(limits, value):
    with pytest.raises(AssertionError, match="exposure: .* us is not 90 to 110 us"):
        limits("exposure", value, 90, 110, "us")


@pytest.mark.parametrize("value", [90, 110])
def test_limits_hold_at_their_ends(limits, value, request):
    limits("exposure", value, 90, 110, "us")
    assert ("exposure", f"{value} us (90 to 110 us)") in request.node.user_properties
