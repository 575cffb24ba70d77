"""Terminal at the real console in a virtual device."""

import os
import pty
import subprocess

import pytest

from r47_station import ConnectionLost, DialogueTimeout, Revision, Terminal, UnexpectedReply


def test_key_gives_what_it_printed_alone(terminal):
    assert terminal.press("A") == "File Error Code: 0\n"
    assert terminal.press("b") == "\n\n\n\n\nStarted Rtu Low Level Control \n"
    assert terminal.press("E") == "sensor actual exposure: 10000\n"
    assert terminal.press("x") == ""
    assert terminal.menu.startswith("\x1b[0m")


def test_answers_go_with_the_key(terminal, virtual_device):
    terminal.press("b")
    assert terminal.press("e", 4321) == "Enter a value for exposure: sensor set  exposure: 4321\n"
    assert virtual_device.value("rtu.exposure.time") == 4321


def test_question_is_answered_when_it_was_read(terminal):
    terminal.press("b")
    assert terminal.ask("c", "exposure_offset: ") == "Enter a value for exposure_offset: "
    assert terminal.answer(17) == "sensor set  exposure_offset: 17\n"


def test_several_questions_are_answered_in_turn(terminal, virtual_device):
    terminal.press("p")
    printed = terminal.press("e", 50, 4, 800)
    assert "New Object Distance : 800\n" in printed


@pytest.mark.parametrize("key", "abcefkpt")
def test_each_menu_is_entered_and_left(terminal, key):
    terminal.press(key)
    assert not terminal.menu.startswith("\x1b[0m")
    terminal.main_menu()
    assert terminal.menu.startswith("\x1b[0m")


def test_revision_is_read(terminal, virtual_device):
    virtual_device.set("rtu.revision.week", 33)
    terminal.press("b")
    assert terminal.revision() == Revision(major=1, minor=6, patch=0, num=2, year=22, week=33)


def test_revision_that_does_not_come_is_told(terminal, virtual_device):
    virtual_device.fault("rtu_t::get_revision status -1")
    terminal.press("b")
    with pytest.raises(UnexpectedReply, match="Failed read rev"):
        terminal.revision()


def test_poll_ends_when_the_wanted_is_printed(terminal, virtual_device):
    virtual_device.fault("rtu_t::get_exposure count 2 status -1")
    terminal.press("b")
    assert terminal.poll("E", r"actual exposure: (\d+)")[1].isdigit()


def test_text_of_a_callback_is_waited_for(terminal, virtual_device):
    terminal.press("t")
    virtual_device.command("button down")
    terminal.wait_for("void testButtonp2() called")
    virtual_device.command("button up")


def test_key_that_does_not_end_is_a_timeout_with_what_came(virtual_device, r47_console):
    with Terminal.local(virtual_device.run(r47_console), timeout=60.0) as terminal:
        terminal.press("b")
        fault = virtual_device.fault("rtu_t::get_exposure delay 3600000")
        terminal.timeout = 0.1
        with pytest.raises(DialogueTimeout) as failure:
            terminal.press("E")
        fault.clear()
    assert failure.value.sent == "E\n"
    assert "Your Option = E\n".startswith(failure.value.received)
    assert "Rtu Low Level Control" in failure.value.menu


def test_end_of_the_console_is_seen(virtual_device, r47_console):
    with Terminal.local(virtual_device.run(r47_console), timeout=60.0) as terminal:
        assert terminal.press("x") == ""
        assert terminal.wait_for_end() == 0
        with pytest.raises((ConnectionLost, OSError, ValueError)):
            terminal.press("A")


def test_process_that_is_no_console_is_told():
    with pytest.raises(ConnectionLost, match="no console"):
        Terminal.local(["/bin/echo", "no console"], timeout=60.0)


def test_serial_line_is_driven(virtual_device, r47_console, tmp_path):
    shell = tmp_path / "shell"
    shell.write_text("#!/bin/sh\nread command\nexec " + " ".join(virtual_device.run(r47_console)) + "\n")
    shell.chmod(0o755)
    controller, device = pty.openpty()
    try:
        with subprocess.Popen([str(shell)], stdin=controller, stdout=controller, stderr=controller) as process:
            with Terminal.serial(os.ttyname(device), timeout=60.0) as terminal:
                assert terminal.press("A") == "File Error Code: 0\n"
                terminal.press("b")
                assert terminal.press("e", 500).endswith("exposure: 500\n")
                terminal.press("x")
                terminal.type("x")
            assert process.wait() == 0
    finally:
        os.close(controller)
        os.close(device)
