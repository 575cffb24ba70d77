#!/usr/bin/env python3
"""Holds the tables of properties in docs/ against what the device tells of them.

    tests/property_tables.py R47-SIM [--write]

A table stands between the two marks

    <!-- properties: PREFIX[=NAME]... -->
    <!-- end of properties -->

and has the properties that begin with a PREFIX, or with NAME in its place where one stands for several. What every module
has is in the table of MODULE alone. The operator's guide has, between the two marks

    <!-- limits: KEY=PROPERTY... -->
    <!-- end of limits -->

the limits of what a key asks for, and the value at the start. --write makes the tables anew."""

import json
import pathlib
import re
import subprocess
import sys

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
DOCUMENT = DOCS / "virtual-device.md"
GUIDE = DOCS / "operator-guide.md"
TABLE = re.compile(r"(<!-- properties: (.*?) -->\n).*?(<!-- end of properties -->)", re.S)
LIMITS = re.compile(r"(<!-- limits: (.*?) -->\n).*?(<!-- end of limits -->)", re.S)
OF_EVERY_MODULE = re.compile(r"\.(status|serial_number|revision\.\w+)$")
EVERY_MODULE = "MODULE"
PINS = re.compile(r"dio\.[1-5]\.")  # as pin 0


def schema_of(sim):
    shown = subprocess.run([sim, "run", "--clock", "stepped", "--", sim, "show", "--json"], check=True,
                           stdout=subprocess.PIPE, stdin=subprocess.DEVNULL, encoding="utf-8")
    return json.loads(shown.stdout)


def number(value):
    return f"{value:g}" if abs(value) < 1e6 else str(value)


def values(about):
    if about["type"] == "choice":
        return ", ".join(c["name"] if c["value"] == c["name"] else f"{c['value']} {c['name']}"
                         for c in about["choices"])
    text = about["type"]
    if "range" in about:
        limits = about["range"]
        text = f"{number(limits['min'])} to {number(limits['max'])}"
        text += f" by {number(limits['step'])}" if "step" in limits else ""
    return f"{text}, {about['unit']}" if "unit" in about else text


def rows(schema, words, told):
    for word in words.split():
        prefix, _, alias = word.partition("=")
        for name, about in schema.items():
            wanted = name == prefix or name.startswith(prefix + ".")
            if wanted and bool(OF_EVERY_MODULE.search(name)) == (alias == EVERY_MODULE):
                told.add(name)
                shown = (alias or prefix) + name[len(prefix):]
                yield f"| `{shown}` | {values(about)} | {'set' if about['settable'] else ''} | {about['meaning']} |\n"


def limits(schema, words):
    for word in words.split():
        key, _, name = word.partition("=")
        about = schema[name]
        start = number(about["value"]) if isinstance(about["value"], (int, float)) else about["value"]
        yield f"| `{key}` | {about['meaning']} | {values(about)} | {start} |\n"


def hold(document, after, write):
    """True where the document has these tables already, or has got them."""
    if write:
        document.write_text(after)
    elif after != document.read_text():
        print(f"{document}: a table is not what the device tells: {sys.argv[0]} {sys.argv[1]} --write")
        return False
    return True


def main():
    sim, write = sys.argv[1], "--write" in sys.argv[2:]
    schema, told = schema_of(sim), set()
    head = "| property | values | | |\n|---|---|---|---|\n"
    after = TABLE.sub(lambda mark: mark[1] + head + "".join(rows(schema, mark[2], told)) + mark[3],
                      DOCUMENT.read_text())
    untold = [name for name in schema
              if name not in told and not PINS.match(name) and not OF_EVERY_MODULE.search(name)]
    if untold:
        sys.exit(f"{DOCUMENT}: no table has " + ", ".join(untold))
    head_of_limits = "| key | value | limits | at the start |\n|---|---|---|---|\n"
    guide = LIMITS.sub(lambda mark: mark[1] + head_of_limits + "".join(limits(schema, mark[2])) + mark[3],
                       GUIDE.read_text())
    held = [hold(DOCUMENT, after, write), hold(GUIDE, guide, write)]
    print(f"{len(told)} properties in {len(TABLE.findall(after))} tables, limits in {len(LIMITS.findall(guide))}")
    sys.exit(not all(held))


main()
