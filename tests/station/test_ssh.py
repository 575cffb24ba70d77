"""Terminal.ssh at the real console, over a real sshd of the test's own: its port, keys, user and log are private."""

import os
import pwd
import shlex
import shutil
import subprocess

import pytest

from conftest import LIMIT
from r47_station import ConnectionLost, Terminal
from r47_station.pytest_plugin import free_port

SSHD = os.environ.get("R47_SSHD") or shutil.which("sshd", path=os.environ["PATH"] + ":/usr/sbin:/sbin")
USER = "station"
UID = "1000"
# Of a network of its own a user has a capability, which bwrap does not expect.
IN_NAMESPACE = ["setpriv", "--inh-caps=-all", "--ambient-caps=-all",
                "bwrap", "--dev-bind", "/", "/", "--dev", "/dev", "--unshare-user", "--uid", UID, "--gid", UID,
                "--die-with-parent"]


def missing():
    if SSHD is None or not all(map(shutil.which, ["ssh", "ssh-keygen"])):
        return "openssh-server or openssh-client is not installed"
    try:
        pwd.getpwuid(os.getuid())
    except KeyError:
        return "ssh serves no user without a name"
    if subprocess.run([*IN_NAMESPACE, "--", "true"], stderr=subprocess.DEVNULL).returncode != 0:
        return "the host allows no user namespaces in others"
    return ""


MISSING = missing()
pytestmark = pytest.mark.skipif(bool(MISSING), reason=MISSING)


class Server:
    """Lets USER in, with the key, at 127.0.0.1. Whoever runs the tests, root too, is USER in a namespace of its own:
    there sshd runs without rights, and so needs no user and no directory of this machine."""

    def __init__(self, directory):
        self.port = free_port()
        self.key = directory / "user_key"
        self.known_hosts = directory / "known_hosts"
        self.log = directory / "log"
        host_key = directory / "host_key"
        for key in self.key, host_key:
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", key], check=True)
        (directory / "authorized_keys").write_bytes(self.key.with_suffix(".pub").read_bytes())
        self.known_hosts.write_text(f"[127.0.0.1]:{self.port} {host_key.with_suffix('.pub').read_text()}")
        (directory / "passwd").write_text(f"{USER}:x:{UID}:{UID}::{directory}:/bin/sh\n")
        (directory / "group").write_text(f"{USER}:x:{UID}:\n")
        (directory / "config").write_text(
            f"ListenAddress 127.0.0.1:{self.port}\n"
            f"HostKey {host_key}\n"
            f"AuthorizedKeysFile {directory}/authorized_keys\n"
            "StrictModes no\n"  # the directories above belong to whoever runs the tests
            "AuthenticationMethods publickey\n"
            "UsePAM no\n"
            "PidFile none\n")
        self.process = subprocess.Popen(
            [*IN_NAMESPACE, "--ro-bind", directory / "passwd", "/etc/passwd",
             "--ro-bind", directory / "group", "/etc/group",
             "--", SSHD, "-D", "-E", self.log, "-f", directory / "config"])

    def wait(self):
        """Until it listens."""
        while not (self.log.exists() and "Server listening" in self.log.read_text()):
            assert self.process.poll() is None, self.log.read_text() if self.log.exists() else "no log"

    def options(self):
        return ["-F", "none", "-p", str(self.port), "-i", str(self.key), "-o", "IdentitiesOnly=yes",
                "-o", f"UserKnownHostsFile={self.known_hosts}", "-o", "GlobalKnownHostsFile=none"]

    def end(self):
        self.process.terminate()
        self.process.wait()


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    one = Server(tmp_path_factory.mktemp("sshd"))
    one.wait()
    yield one
    one.end()


@pytest.fixture
def over_ssh(server, virtual_device, r47_console):
    with Terminal.ssh(f"{USER}@127.0.0.1", shlex.join(virtual_device.run(r47_console)), options=server.options(),
                      timeout=LIMIT) as terminal:
        yield terminal


def test_key_gives_what_it_printed_alone(over_ssh):
    assert over_ssh.press("A") == "File Error Code: 0\n"
    over_ssh.press("b")
    assert over_ssh.press("E") == "sensor actual exposure: 10000\n"


def test_answers_reach_the_device(over_ssh, virtual_device):
    over_ssh.press("b")
    assert over_ssh.ask("e", "exposure: ") == "Enter a value for exposure: "
    assert over_ssh.answer(4321) == "sensor set  exposure: 4321\n"
    assert virtual_device.value("rtu.exposure.time") == 4321


def test_control_d_reaches_a_terminal(over_ssh):
    over_ssh.type("\x04")
    over_ssh.wait_for("Entered Option = \0\n")
    over_ssh.wait_for_menu()
    assert over_ssh.press("A") == "File Error Code: 0\n"


def test_end_of_the_console_is_the_end_of_the_connection(over_ssh):
    assert over_ssh.press("x") == ""
    assert over_ssh.wait_for_end() == 0


def test_hanging_up_ends_the_console(over_ssh, virtual_device):
    with virtual_device.journal() as journal:
        over_ssh.press("b")
        over_ssh.press("E")
        console = journal.wait_for("get_exposure").program
        over_ssh.close()
        journal.wait_for(lambda line: line.kind == "program" and line.program == console)


def test_key_that_the_host_does_not_know_is_told(server, tmp_path):
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", tmp_path / "key"], check=True)
    options = [str(tmp_path / "key") if word == str(server.key) else word for word in server.options()]
    with pytest.raises(ConnectionLost, match="Permission denied"):
        Terminal.ssh(f"{USER}@127.0.0.1", options=options, timeout=LIMIT)
