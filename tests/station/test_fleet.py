"""r47-sim fleet: many devices at once, and what happens to those that are harmed."""

import contextlib
import os
import pathlib
import re
import select
import signal
import subprocess
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
LIMIT = 60  # s, which no working run ever reaches
EXAMPLE = HERE.parents[1] / "station/examples/fleet.py"


@pytest.fixture
def fleet(pytestconfig, tmp_path, monkeypatch):
    """Starts r47-sim fleet with these words; its devices are the only ones."""
    monkeypatch.setenv("XDG_RUNTIME_DIR", str(tmp_path))
    sim = pytestconfig.getoption("--r47-sim")
    console = pytestconfig.getoption("--r47-console")

    def start(*words, **options):
        if "--console" not in words:
            words = [words[0], "--console", console, *words[1:]]
        return subprocess.Popen([sim, "fleet", *map(str, words)], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, **options)

    yield start
    assert subprocess.run([sim, "list"], stdout=subprocess.PIPE).stdout == b""
    assert list(tmp_path.glob("r47-sim/*")) == []
    assert programs_of(tmp_path) == []


def programs_of(directory):
    """Processes whose environment has the directory: all that a fleet started."""
    mark = f"XDG_RUNTIME_DIR={directory}\0".encode()
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if mark in (process / "environ").read_bytes() and process.name != str(os.getpid()):
                found.append(process.name)
        except OSError:
            pass
    return found


@pytest.mark.parametrize("count", [1, 10, 50])
def test_all_devices_serve_at_once(fleet, count):
    with fleet(count, "--usage", "--", sys.executable, EXAMPLE, env={**os.environ, "TIMEOUT": "60"}) as process:
        printed, usage = process.communicate()
    assert process.returncode == 0, printed + usage
    assert printed.count(" passed\n") == count
    lines = re.findall(r"^\S+-(\d+)  (127\.32\.\d+\.\d+)  (\d+\.\d) MB  (\d+\.\d\d) s$", usage, re.MULTILINE)
    assert len({address for _, address, _, _ in lines}) == count
    assert all(float(memory) > 0 for _, _, memory, _ in lines)


def test_devices_that_hang_die_or_are_unplugged_harm_no_other(fleet, pytestconfig):
    with fleet(5, "--", HERE / "harmed_fleet.sh", pytestconfig.getoption("--r47-sim"), sys.executable, EXAMPLE,
               env={**os.environ, "TIMEOUT": "10"}) as process:
        printed, errors = process.communicate()
    assert process.returncode == 1, printed + errors
    results = [line.split("  ")[2] for line in printed.splitlines()]
    assert [result.split(":")[0] for result in results] == ["DialogueTimeout", "ConnectionLost", "CommandRefused",
                                                            "CommandRefused", "passed"], printed


def test_signal_goes_to_the_command_and_ends_all(fleet):
    with fleet(2, "--", "sh", "-c", "trap 'exit 7' TERM; echo ready; while :; do read line; done",
               stdin=subprocess.PIPE) as process:
        assert process.stdout.readline() == "ready\n"
        process.send_signal(signal.SIGTERM)
        process.stdin.close()
        assert process.wait() == 7


def test_signal_ends_a_fleet_that_starts(fleet, pytestconfig, tmp_path):
    never = tmp_path / "never"
    never.write_text("#!/bin/sh\nsleep 1000\n")
    never.chmod(0o755)
    with fleet(2, "--console", never, "--", "true") as process:
        while not subprocess.run([pytestconfig.getoption("--r47-sim"), "list"], stdout=subprocess.PIPE).stdout:
            assert process.poll() is None
        process.send_signal(signal.SIGINT)
        _, errors = process.communicate()
    assert process.returncode == 125
    assert "ended by a signal" in errors


def test_all_end_with_a_fleet_that_is_killed(fleet, tmp_path):
    with fleet(2, "--", "sh", "-c", "echo $R47_FLEET; read line", stdin=subprocess.PIPE) as process:
        file = pathlib.Path(process.stdout.readline().strip())
        process.kill()
        file.unlink()  # the one thing that stays
        assert process.wait() == -signal.SIGKILL
        for pid in programs_of(tmp_path):
            with contextlib.suppress(ProcessLookupError), os.fdopen(os.pidfd_open(int(pid))) as ended:
                assert select.select([ended], [], [], LIMIT)[0]


def test_scenario_and_clock_are_each_device_s(fleet, pytestconfig, tmp_path):
    scenario = tmp_path / "scenario"
    scenario.write_text("set system.state warning\n")
    script = 'while read name rest; do "$0" --device "$name" show system.state clock.mode; done <"$R47_FLEET"'
    with fleet(2, "--scenario", scenario, "--clock", "scaled", "20", "--", "sh", "-c", script,
               pytestconfig.getoption("--r47-sim")) as process:
        printed, _ = process.communicate()
    assert printed.count("  5 warning  ") == 2
    assert printed.count("  scaled 20  ") == 2


@pytest.mark.parametrize("words, status, reason", [
    (["0", "--", "true"], 125, "bad number of devices 0: 1 to 1000"),
    (["1001", "--", "true"], 125, "bad number of devices 1001"),
    (["two", "--", "true"], 125, "bad number of devices two"),
    (["2"], 125, "no command given"),
    (["2", "--", "/no/such/command"], 127, "/no/such/command: no such command"),
    (["2", "--clock", "sideways", "--", "true"], 125, "usage: clock"),
    (["2", "--without", "/dev/nothing", "--", "true"], 125, "/dev/nothing is no file of the device"),
    (["2", "--console", "/bin/true", "--", "true"], 125, "ended before its console served a client"),
])
def test_what_cannot_be_is_told(fleet, words, status, reason):
    with fleet(*words) as process:
        _, errors = process.communicate()
    assert process.returncode == status
    assert reason in errors
