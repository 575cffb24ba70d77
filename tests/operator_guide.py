#!/usr/bin/env python3
"""Holds docs/operator-guide.md against the menus' sources, and against the console in the virtual device.

    tests/operator_guide.py R47-SIM R47-CONSOLE

Each heading "Key `b`: ..." has a table of this menu's keys, "Main menu" that of the main menu. It must have each key that
the menu's source handles or lists, and no other; "not listed" stands with those that work and are not listed, and
"Nothing" with those that are listed and do nothing. Each row is played: its first cell is typed, and the code of its last
cell must be printed in this order, where `N` is a number and `...` any text. The rows of the checklists are played, too.
Each error text must stand in a source. To be run in a network of its own, as the port of socket mode is fixed
(tests/support/own_network.sh)."""

import concurrent.futures
import re
import subprocess
import sys

from documents import CODE, EXIT_KEY, MAIN_MENU, ROOT, handled_keys, listed_keys, menu_keys, sources_of_menus, tables
from socket_mode import Console

GUIDE = ROOT / "docs" / "operator-guide.md"
ENDS_THE_CONSOLE = ["0"]
SOCKET_MODE = "L"
INPUT_HAS_ENDED = "Entered Option = \0\n"
ECHO = re.compile(r"(?:Entered|Your) [Oo]ption = (.)\n")


def wrong_keys(table, source):
    handled, listed = handled_keys(source), listed_keys(source)
    told = {}
    for row in table.rows:
        for key in CODE.findall(row[0])[:1]:
            if key in told:
                yield f"{table.heading}: `{key}` has two rows"
            told[key] = row[2]
    for key in sorted((handled | listed) - told.keys()):
        yield f"{table.heading}: `{key}` is missing"
    for key in sorted(told.keys() - handled - listed):
        yield f"{table.heading}: `{key}` is no key of the menu"
    for key in sorted(told.keys() & (handled | listed)):
        if (key not in listed) != ("not listed" in told[key].lower()):
            yield f"{table.heading}: `{key}` is {'' if key in listed else 'not '}listed"
        if (key not in handled) != told[key].startswith("Nothing"):
            yield f"{table.heading}: `{key}` does {'something' if key in handled else 'nothing'}"


def pattern(code):
    """What the code of a cell describes, as it is printed."""
    parts = re.split(r"(\bN\b|\.\.\.)", code)
    return "".join({"N": r"-?\d+", "...": "(?s:.*?)"}.get(part, re.escape(part)) for part in parts)


def runs_of(table):
    """The rows of a table as runs of the console: each a list of what is typed and what is printed."""
    rows = [(CODE.findall(row[0]), CODE.findall(row[-1])) for row in table.rows if row[0].startswith("`")]
    if not menu_keys(table.heading):
        return [[row] for row in rows]  # each leads to another menu
    last = [row for row in rows if row[0] == ENDS_THE_CONSOLE]
    leaving = [row for row in rows if row[0] == [EXIT_KEY]]
    return [[row for row in rows if row not in last + leaving] + leaving, *[[row] for row in last]]


def shown_in_socket_mode(sim, program):
    """What is shown from its key on until its local menu has been left: then the main menu has no input any more."""
    console = Console(sim, program, [SOCKET_MODE])
    console.wait_for("Socket test menu")
    console.wait_for("Please enter your option: ")
    console.wait_for("Please enter your option: ")  # the station's main menu
    console.type([EXIT_KEY])
    console.wait_for(INPUT_HAS_ENDED)
    console.wait_for(INPUT_HAS_ENDED)
    console.process.terminate()
    console.wait_for_exit()
    return console.shown


def play(sim, console, socket_mode, table):
    """Tells what is not printed of a table. socket_mode: the future of what is shown there."""
    entry = menu_keys(table.heading)[:1]
    for run in runs_of(table):
        words = [*entry, *[word for typed, _ in run for word in typed], EXIT_KEY, EXIT_KEY]
        if words[0] == SOCKET_MODE:
            shown = socket_mode.result()
        else:
            shown = subprocess.run([sim, "run", "--clock", "stepped", "--", console], input="\n".join(words) + "\n",
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
                                   timeout=120).stdout
        pieces = ECHO.split(shown)
        answers = list(zip(pieces[1::2], pieces[2::2]))[len(entry):]
        for typed, expected in run:
            key, printed = answers.pop(0) if answers else ("", "")
            if key != typed[0]:
                yield f"{table.heading}: the console took {key!r} where {typed[0]!r} was typed"
                break
            if not re.search("(?s:.*?)".join(pattern(code) for code in expected), printed):
                yield f"{table.heading}: {' '.join(typed)} does not print {expected}, but: {printed[:300]!r}"


def wrong_errors(table):
    sources = [path.read_text() for folder in ("app", "menus", "net") for path in (ROOT / folder).glob("**/*.cpp")]
    for row in table.rows:
        text = CODE.findall(row[0])[0]
        if not any(text in source for source in sources):
            yield f"{table.heading}: no source says `{text}`"


def main():
    sim, console = sys.argv[1:]
    menus, wrong, played = sources_of_menus(), [], []
    unmet = {"": MAIN_MENU, **menus}
    for table in tables(GUIDE):
        if table.head[:1] == ["typed"]:
            played.append(table)
        if table.head[:2] == ["typed", "asked for"]:
            for key in menu_keys(table.heading) or [""]:
                if key in unmet:
                    wrong += wrong_keys(table, unmet.pop(key))
                else:
                    wrong.append(f"{table.heading}: `{key}` leads to no menu, or has two tables")
        if table.head[:1] == ["text"]:
            wrong += wrong_errors(table)
    wrong += [f"`{key}` of the main menu opens a menu that has no table" for key in unmet]
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        socket_mode = pool.submit(shown_in_socket_mode, sim, console)
        for found in pool.map(lambda table: list(play(sim, console, socket_mode, table)), played):
            wrong += found
    print("\n".join(f"{GUIDE}: {text}" for text in wrong) or f"{sum(len(t.rows) for t in played)} rows are so")
    return bool(wrong) or len(played) < 2


sys.exit(main())
