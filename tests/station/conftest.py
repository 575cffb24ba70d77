"""What the tests of the package share: consoles of their own, and peers that say what no console says."""

import socket
import subprocess
import threading

import pytest

from r47_station import Console
from r47_station.pytest_plugin import free_port

LIMIT = 60  # s, which no working run ever reaches


@pytest.fixture
def r47_console(pytestconfig):
    return pytestconfig.getoption("--r47-console")


@pytest.fixture
def own_console(virtual_device, r47_console):
    """A console that a test may break, and its process (r47-sim, which ends with it)."""
    port = free_port()
    process = subprocess.Popen(virtual_device.run(r47_console, "socket", port=port), stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL)
    with Console("127.0.0.1", port, patience=LIMIT, timeout=LIMIT) as console:
        yield console, process
        console._socket.close()
    process.terminate()
    process.wait()


class Peer:
    """Takes one client after the other and plays one script to each: what it waits for, and then says."""

    def __init__(self, *scripts):
        self.server = socket.create_server(("127.0.0.1", 0))
        self.server.settimeout(LIMIT)
        self.port = self.server.getsockname()[1]
        self.thread = threading.Thread(target=self.play, args=[scripts])
        self.thread.start()

    def play(self, scripts):
        for script in scripts:
            client, _ = self.server.accept()
            with client:
                client.settimeout(LIMIT)
                for awaited, said in script:
                    got = b""
                    while len(got) < len(awaited):
                        data = client.recv(len(awaited) - len(got))
                        if not data:
                            return
                        got += data
                    assert got == awaited
                    client.sendall(said)
                if script and script[-1][1] == b"":
                    client.recv(1)  # says nothing more, until the client goes

    def end(self):
        self.thread.join()
        self.server.close()


@pytest.fixture
def peer():
    peers = []

    def make(*scripts):
        peers.append(Peer(*scripts))
        return peers[-1].port

    yield make
    for one in peers:
        one.end()
