"""What the tests of the documents have of socket mode: a console in it, its operator's terminal and its station."""

import re
import socket
import subprocess
import sys
import threading

PORT = 32360
LIMIT = 60  # seconds, for whatever is waited for
ASKS = re.compile(r"(?:your option|a value for \w+): $")


class Console:
    """A console in socket mode with its operator's terminal, and the station that is connected with it.

    It starts in that mode, or goes there by what is typed."""

    def __init__(self, sim, console, typed=()):
        self.process = subprocess.Popen([sim, "run", "--clock", "stepped", "--", console, *([] if typed else ["socket"])],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.shown, self.seen, self.news = "", 0, threading.Condition()
        threading.Thread(target=self.follow, daemon=True).start()
        self.type(typed)
        self.wait_for("int test_socket()\n")
        self.station = self.connect()

    def follow(self):
        while piece := self.process.stdout.read1():
            with self.news:
                self.shown += piece.decode("latin-1")
                self.news.notify()

    def connect(self):
        while True:  # it listens soon after it has said so
            try:
                return socket.create_connection(("127.0.0.1", PORT), LIMIT)
            except ConnectionRefusedError:
                if self.process.poll() is not None:
                    sys.exit("the console has ended")

    def wait_for(self, text):
        """Until the text is shown behind what was waited for before."""
        with self.news:
            if not self.news.wait_for(lambda: text in self.shown[self.seen:], LIMIT):
                sys.exit(f"the console does not show {text!r}, but {self.shown[self.seen:]!r}")
            self.seen = self.shown.index(text, self.seen) + len(text)

    def wait_until_it_asks(self):
        with self.news:
            if not self.news.wait_for(lambda: ASKS.search(self.shown[self.seen:]), LIMIT):
                sys.exit(f"the console does not ask, but shows {self.shown[self.seen:]!r}")

    def send(self, lines):
        self.station.sendall("".join(f"{line}\n" for line in lines).encode())

    def type(self, words):
        self.process.stdin.write("".join(f"{word}\n" for word in words).encode())
        self.process.stdin.flush()

    def receive(self, size):
        """So many bytes, or fewer where the connection ends or nothing more comes."""
        text = ""
        try:
            while len(text) < size and (piece := self.station.recv(size - len(text))):
                text += piece.decode()
        except (TimeoutError, ConnectionResetError):
            pass
        return text

    def wait_for_exit(self):
        status = self.process.wait(LIMIT)
        self.station.close()
        return status
