#!/usr/bin/env python3
"""Plays the shell examples of README.md and docs/: each block ```sh, and each indented block with "$ " before its commands.

    tests/shell_examples.py R47-SIM R47-CONSOLE

They are played in an empty directory with a `run` that builds nothing, with the programs that were built in its `build/`
and in the search path. What stands below a command is its output. A comment before a block says what it takes; a block
without one has a device of its own with the clock stepped.

    <!-- example: alone -->          no device
    <!-- example: continued -->      what the block before had is still there
    <!-- example: console KEYS -->   beside a console in which these keys were typed
    <!-- example: stays -->          its command waits for input: it goes on until a block that is not beside it
    <!-- example: beside -->         beside the command that stays; with `prints TEXT`, it prints this
    <!-- example: help -->           the commands themselves, with --help alone, as they install and build
    <!-- example: needs FILE... -->  is left out where one of these was not built, or is not installed
    <!-- example: needs networks --> is left out where the host lets nobody make a network namespace
    <!-- example: packaged -->       is left out: it needs the packages, whose stage plays it (tests/packages/run.sh)

What goes on until Ctrl-C, or in the background, is waited for until it has said something. To be run in a network of its
own, as the console's port is fixed (tests/support/own_network.sh)."""

import os
import pathlib
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import threading

from documents import ROOT

DOCUMENTS = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]
BLOCK = re.compile(r"(?:<!-- example: (?P<mark>[^>]*?) -->\n\n?)?"
                   r"(?:```sh\n(?P<fenced>(?s:.*?))```|(?P<indented>^    \$ .*\n(?:^    .*\n|^\n(?=    ))*))", re.M)
OTHER_NAMES = re.compile(r"^```(bash|shell|console|zsh)", re.M)
FOLLOWS = re.compile(r"\b(?:watch|journal follow|panel)\b")
ENDED = re.compile(r"#.*\buntil Ctrl-C$")
LIMIT = 60  # seconds, for whatever is waited for
RUN = '#!/bin/sh\noptions=\nwhile [ $# -gt 0 ] && [ "$1" != -- ]; do options="$options $1"; shift; done\n' \
      '[ $# -eq 0 ] || shift\nexec build/r47-sim run $options -- build/r47-console "$@"\n'


class Process:
    """A command that goes on beside others."""

    def __init__(self, place, command):
        self.process = subprocess.Popen(["bash", "-c", "exec " + command], cwd=place.directory, env=place.environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.said, self.news = "", place.news
        self.skipped = 0  # of what it has said, which is no output of the example
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        while piece := self.process.stdout.read1():
            with self.news:
                self.said += piece.decode()
                self.news.notify_all()

    def hears(self, condition, limit=LIMIT):
        """Waits until the condition is so, which is looked at whenever a process says something."""
        with self.news:
            return self.news.wait_for(condition, limit)

    def has_said(self, pattern, limit=LIMIT):
        return self.hears(lambda: re.search(pattern, self.said), limit) is not None

    def type(self, keys):
        self.process.stdin.write(keys.encode())
        self.process.stdin.flush()

    def end(self, number):
        if self.process.poll() is None:
            self.process.send_signal(number)
        try:
            self.process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            self.process.kill()
        self.reader.join(LIMIT)


class Place:
    """Where the examples are played."""

    def __init__(self, directory, sim, console):
        self.directory = directory
        self.news = threading.Condition()  # of all processes
        self.runtime = directory / "runtime"
        self.runtime.mkdir(mode=0o700)
        build = directory / "build"
        build.mkdir()
        for program in sim.parent.iterdir():
            if program.is_file():
                (build / program.name).symlink_to(program)
        (build / "r47-console").unlink(missing_ok=True)
        (build / "r47-console").symlink_to(console)
        (directory / "run").write_text(RUN)
        (directory / "run").chmod(0o755)
        (directory / "station").symlink_to(ROOT / "station")
        self.environment = {**os.environ, "XDG_RUNTIME_DIR": str(self.runtime), "NO_COLOR": "1",
                            "PYTHONDONTWRITEBYTECODE": "1", "PYTEST_ADDOPTS": "-p no:cacheprovider",
                            "PATH": f"{build}:{os.environ['PATH']}"}
        self.environment.pop("R47_SIM_DEVICE", None)

    def run(self, command):
        return subprocess.run(["bash", "-c", command], cwd=self.directory, env=self.environment, timeout=LIMIT,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8")

    def device(self):
        device = Process(self, "r47-sim device --name bench --clock stepped")
        if not device.has_said("device "):
            sys.exit("the device does not start")
        return device

    def alike(self, text):
        """The text without what is different each time."""
        text = text.replace(str(self.runtime), "/run/user/1000")
        text = re.sub(r"\b\d+ s  /", "N s  /", text)
        text = re.sub(r"127\.0\.0\.1:\d+/\w+/", "127.0.0.1:PORT/TOKEN/", text)
        return [line.rstrip() for line in text.splitlines()]


def commands_of(block):
    """[command, its output] of a block, and whether its outputs stand there."""
    if block["fenced"] is not None:
        return [[line, ""] for line in block["fenced"].replace("\\\n", "").splitlines() if line], False
    commands = []
    for line in block["indented"].splitlines():
        if line.startswith("    $ "):
            commands.append([line[6:], ""])
        else:
            commands[-1][1] += line[4:] + "\n"
    return commands, True


class Player:
    def __init__(self, place):
        self.place = place
        self.beside = []  # processes that go on, the last one first to end

    def clear(self):
        while self.beside:
            self.beside.pop().end(signal.SIGTERM)

    def prepare(self, mark):
        word, _, rest = mark.partition(" ")
        if word in ("beside", "continued"):
            return
        self.clear()
        if word == "console":
            self.beside.append(self.place.device())
            console = Process(self.place, "r47-sim run --device bench -- r47-console")
            self.beside.append(console)
            console.type(rest + "\n")
            if not console.has_said(rf"ption = {rest[-1]}\n(?s:.*)option: $"):
                sys.exit(f"the console does not take {rest}")
        elif not word:
            self.beside.append(self.place.device())

    def make_follower_speak(self, process):
        """Changes the state until it has said so, and leaves it as it was: then it follows."""
        for _ in range(LIMIT * 10):
            self.place.run("r47-sim set system.state confirm; r47-sim set system.state boot")
            if process.has_said("system.state.*(?:confirm|2)(?s:.*)system.state.*(?:boot|1)\n", 0.1):
                return True
        return False

    def play(self, mark, commands, has_outputs):
        """Tells what is wrong."""
        followers = []
        said, expected = [], []
        for command, output in commands:
            expected += self.place.alike(output)
            if mark.startswith("help"):
                words = shlex.split(command, comments=True)
                command = f"{ROOT / words[0]} --help"
            if mark == "stays":
                process = Process(self.place, command)
                self.beside.append(process)
                if not process.has_said(r"option: $|int test_socket\(\)\n"):
                    yield f"{command}: waits for nothing, but says {process.said!r}"
                continue
            if ENDED.search(command) or command.endswith("&") or FOLLOWS.search(command) and has_outputs:
                process = Process(self.place, command.partition(" #")[0].rstrip("&"))
                first = output.splitlines()[:1]
                heard = True
                if first:
                    heard = process.has_said(re.escape(first[0].split()[0]))
                elif FOLLOWS.search(command):
                    heard = self.make_follower_speak(process)
                    process.skipped = len(process.said)
                if not heard:
                    yield f"{command}: says nothing, or {process.said!r}"
                if ENDED.search(command):
                    process.end(signal.SIGINT)
                else:
                    followers.append(process)
                continue
            try:
                done = self.place.run(command)
            except subprocess.TimeoutExpired:
                yield f"{command}: does not end"
                continue
            said += self.place.alike(done.stdout)
            if not has_outputs and done.returncode != 0:
                yield f"{command}: status {done.returncode}: {done.stdout}"
            if " prints " in mark and done.stdout.strip() != mark.partition(" prints ")[2]:
                yield f"{command}: prints {done.stdout!r}"

        def missing():
            heard = [line for process in followers for line in self.place.alike(process.said)]
            return set(expected) - set(said) - set(heard)

        if followers:
            followers[0].hears(lambda: not missing())
        for process in reversed(followers):
            process.end(signal.SIGTERM)
            said += self.place.alike(process.said[process.skipped:])
        if has_outputs and (sorted(said) if followers else said) != (sorted(expected) if followers else expected):
            yield f"{commands[0][0]} ...: prints\n" + "\n".join(said) + "\ninstead of\n" + "\n".join(expected)


def has(sim, what):
    if what == "networks":
        return subprocess.run([sim, "run", "--private-network", "--", "true"], capture_output=True).returncode == 0
    return (sim.parent / what).exists()


def main():
    sim, console = (pathlib.Path(word).resolve() for word in sys.argv[1:])
    wrong, count, left_out = [], 0, 0
    with tempfile.TemporaryDirectory(dir="/tmp") as directory:
        player = Player(Place(pathlib.Path(directory), sim, console))
        for document in DOCUMENTS:
            text = document.read_text()
            wrong += [f"{document}: ```{word} is not played, ```sh is" for word in OTHER_NAMES.findall(text)]
            for block in BLOCK.finditer(text):
                mark = block["mark"] or ""
                if mark == "packaged":
                    continue
                if mark.startswith("needs ") and not all(has(sim, what) for what in mark.split()[1:]):
                    left_out += 1
                    continue
                commands, has_outputs = commands_of(block)
                player.prepare("" if mark.startswith("needs ") else mark)
                wrong += [f"{document}: {fault}" for fault in player.play(mark, commands, has_outputs)]
                count += len(commands)
            player.clear()
    print("\n".join(wrong) or f"{count} commands do what they say, {left_out} blocks need what is not there")
    return bool(wrong) or not count


sys.exit(main())
