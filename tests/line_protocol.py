#!/usr/bin/env python3
"""Holds docs/line-protocol.md against the console in the virtual device.

    tests/line_protocol.py R47-SIM R47-CONSOLE

Each row of the tables of commands is played over TCP: the menu is entered, the lines of the row are sent, what the operator
types is typed, and what comes back is compared, with the items that wait in front of the reply of a device check. The menus
that read their options from the client must have a row for each of their keys. The session at the document's end is
played, too. To be run in a network of its own, as the console's port is fixed (tests/support/own_network.sh)."""

import signal
import sys

from documents import CODE, EXIT_KEY, ROOT, handled_keys, listed_keys, menu_keys, sources_of_menus, tables
from socket_mode import LIMIT, Console

DOCUMENT = ROOT / "docs" / "line-protocol.md"
DEVICE_CHECK, CHECKED = "A", "0;\\n"
ENDS_THE_CONSOLE = "the connection ends"


def reads_options_from_the_client(source):
    return "kogetchar(" in source.read_text()


def play(console, key, row, by_client):
    """What is wrong with a row, or None."""
    sent, typed, _, at_once, waits = (CODE.findall(cell) for cell in row)
    leaving = [EXIT_KEY] if key else []
    if row[3] == ENDS_THE_CONSOLE:
        console.send([key, *sent])
        ended = console.receive(1) == "" and console.wait_for_exit() == 0
        return None if ended else "does not end the console"
    if by_client:
        leaves = leaving if sent != leaving else []
        console.send([*([key] if key else []), *sent, *leaves, DEVICE_CHECK])
        echo = f"ption = {sent[0]}\n"
    else:
        console.send([key, *sent, DEVICE_CHECK])
        echo = f"Entered Option = {key}\n"
        typed += leaving
    if typed:
        if by_client:
            console.wait_for(f"Entered Option = {key}\n")
        console.wait_for(echo)
        console.wait_until_it_asks()
        console.type(typed)
    expected = "".join(at_once + waits) + CHECKED
    received = console.receive(len(expected))
    console.wait_for(f"Entered Option = {DEVICE_CHECK}\n")
    return None if received == expected else f"brings {received!r} instead of {expected!r}"


def session():
    """(sent, what comes back for it) of the session in the document."""
    block = DOCUMENT.read_text().split("## A session")[1].split("```")[1]
    lines = [line.split() for line in block.splitlines() if line[:2] in ("> ", "< ")]
    return [(line[0] == ">", line[1]) for line in lines]


def main():
    sim, program = sys.argv[1:]
    signal.alarm(5 * LIMIT)
    wrong, played, sources = [], 0, sources_of_menus()
    commands = [table for table in tables(DOCUMENT) if table.head[:2] == ["sent", "typed"]]

    console = Console(sim, program)
    for sends, text in session():
        if sends:
            console.send([text])
        elif (received := console.receive(len(text))) != text:
            wrong.append(f"A session: {received!r} comes instead of {text!r}")
    # The station closes first, so that the port is free for the next console.
    console.station.close()
    console.wait_for("Entered Option = x\n")
    console.type([EXIT_KEY])
    if console.wait_for_exit() != 0:
        wrong.append("A session: the console does not end with 0")

    rows = []
    for table in commands:
        key = "".join(menu_keys(table.subheading)[:1])
        by_client = not key or reads_options_from_the_client(sources[key])
        rows += [(table.subheading, key, row, by_client) for row in table.rows]
        if key and by_client:
            told = {CODE.findall(row[0])[0] for row in table.rows}
            keys = handled_keys(sources[key]) | listed_keys(sources[key])
            wrong += [f"{table.subheading}: `{each}` is {'missing' if each in keys else 'no key'}"
                      for each in sorted(told ^ keys)]
    driven = {key for key, source in sources.items() if reads_options_from_the_client(source)}
    wrong += [f"`{key}` has no table" for key in driven - {key for _, key, _, _ in rows}]
    console = Console(sim, program)
    for heading, key, row, by_client in sorted(rows, key=lambda each: each[2][3] == ENDS_THE_CONSOLE):
        played += 1
        if fault := play(console, key, row, by_client):
            wrong.append(f"{heading}: {' '.join(row[:2])} {fault}")
    print("\n".join(f"{DOCUMENT}: {text}" for text in wrong) or f"{played} rows are so")
    return bool(wrong) or not played


sys.exit(main())
