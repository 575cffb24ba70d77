"""Fixtures for tests of a console and its device: pytest -p r47_station.pytest_plugin

console: a Console in its main menu. terminal: a Terminal in its main menu. virtual_device: the VirtualDevice around
both. Each is made once for a test module, as late as it is needed. limits: judges a measurement, and reports it.

Without --r47-address and --r47-terminal all is a virtual device's, which a module has for itself; fault rules go after
each test. With one of them a real console is tested, and tests that need virtual_device are skipped.
"""

from __future__ import annotations

import shlex
import socket
import subprocess
from typing import Callable, Iterator

import pytest

from .console import PORT, Console
from .errors import StationError
from .terminal import Terminal
from .virtual_device import VirtualDevice

Limits = Callable[..., None]


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("r47", "R47 test station")
    group.addoption("--r47-address", metavar="HOST[:PORT]", help="a console in socket mode; none: a virtual device's")
    group.addoption("--r47-terminal", metavar="COMMAND",
                    help="starts a console at this terminal, as \"ssh -tt root@camera r47-console\"")
    group.addoption("--r47-sim", metavar="PATH", default="r47-sim", help="for virtual devices")
    group.addoption("--r47-console", metavar="PATH", default="r47-console", help="what runs in virtual devices")
    group.addoption("--r47-clock", metavar="CLOCK", default="real", help="of virtual devices")
    group.addoption("--r47-fault", metavar="RULE", action="append", default=[],
                    help="a fault rule, in force in each test; of virtual devices")
    group.addoption("--r47-timeout", metavar="SECONDS", type=float, default=10.0, help="longest time of a command")
    group.addoption("--serial-number", metavar="NUMBER", help="of the device that is tested, for the report")


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "component(name): the component that a test is about, for the report")


@pytest.fixture(scope="session", autouse=True)
def _serial_number(pytestconfig: pytest.Config, record_testsuite_property: Callable[[str, object], None]) -> None:
    number = pytestconfig.getoption("--serial-number")
    if number is not None:
        record_testsuite_property("serial_number", number)


@pytest.fixture(autouse=True)
def _component(request: pytest.FixtureRequest, record_property: Callable[[str, object], None]) -> None:
    marker = request.node.get_closest_marker("component")
    if marker is not None:
        record_property("component", marker.args[0])


@pytest.fixture
def limits(record_property: Callable[[str, object], None]) -> Limits:
    """limits(name, value, low, high, unit=""): reports the measurement, and fails where it is not low to high."""

    def judge(name: str, value: float, low: float, high: float, unit: str = "") -> None:
        text = f"{value:g} {unit}".strip()
        wanted = f"{low:g} to {high:g} {unit}".strip()
        record_property(name, f"{text} ({wanted})")
        assert low <= value <= high, f"{name}: {text} is not {wanted}"

    return judge


@pytest.fixture(scope="module")
def _device(pytestconfig: pytest.Config) -> Iterator[VirtualDevice]:
    with VirtualDevice.start(pytestconfig.getoption("--r47-sim"), clock=pytestconfig.getoption("--r47-clock"),
                             timeout=pytestconfig.getoption("--r47-timeout")) as device:
        yield device


def _is_virtual(config: pytest.Config) -> bool:
    return config.getoption("--r47-address") is None and config.getoption("--r47-terminal") is None


@pytest.fixture
def _rules(request: pytest.FixtureRequest) -> Iterator[None]:
    """The fault rules of one test."""
    if not _is_virtual(request.config):
        yield
        return
    device: VirtualDevice = request.getfixturevalue("_device")
    for rule in request.config.getoption("--r47-fault"):
        device.fault(rule)
    yield
    device.clear_faults()


@pytest.fixture
def virtual_device(request: pytest.FixtureRequest, _rules: None) -> VirtualDevice:
    if not _is_virtual(request.config):
        pytest.skip("a real device is tested")
    device: VirtualDevice = request.getfixturevalue("_device")
    return device


@pytest.fixture(scope="module")
def _module_console(request: pytest.FixtureRequest) -> Iterator[Console]:
    config = request.config
    timeout: float = config.getoption("--r47-timeout")
    address: str | None = config.getoption("--r47-address")
    if address is not None:
        host, _, port = address.partition(":")
        with Console(host, int(port or PORT), timeout=timeout) as console:
            yield console
        return
    device: VirtualDevice = request.getfixturevalue("_device")
    port_number = free_port()
    process = subprocess.Popen(device.run(config.getoption("--r47-console"), "socket", port=port_number),
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    try:
        with Console("127.0.0.1", port_number, patience=timeout, timeout=timeout) as console:
            yield console
    finally:
        process.terminate()
        process.wait()


@pytest.fixture
def console(_rules: None, _module_console: Console) -> Console:
    _module_console.settle()
    return _module_console


@pytest.fixture(scope="module")
def _module_terminal(request: pytest.FixtureRequest) -> Iterator[Terminal]:
    config = request.config
    command: str | None = config.getoption("--r47-terminal")
    if command is not None:
        words = shlex.split(command)
    else:
        device: VirtualDevice = request.getfixturevalue("_device")
        words = device.run(config.getoption("--r47-console"))
    with Terminal.local(words, timeout=config.getoption("--r47-timeout")) as terminal:
        yield terminal


@pytest.fixture
def terminal(_rules: None, _module_terminal: Terminal) -> Iterator[Terminal]:
    """A test may leave a menu open: the next finds the main menu."""
    yield _module_terminal
    try:
        _module_terminal.main_menu()
    except StationError:
        pass  # the test that ended the console has told so; the next finds it ended


def free_port() -> int:
    """A port of 127.0.0.1 that nobody listens at."""
    with socket.create_server(("127.0.0.1", 0)) as server:
        port: int = server.getsockname()[1]
        return port
