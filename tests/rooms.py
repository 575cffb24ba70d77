#!/usr/bin/env python3
"""Holds the rooms of the sources against their #include lines: each may include itself and what stands here."""

import graphlib
import pathlib
import re
import sys

MENUS = ["menus/imaging", "menus/light", "menus/motion", "menus/ranging"]
ROOMS = {
    "hal": [],
    "app": ["hal", "net", *MENUS],
    "net": ["app"],
    **{menu: ["app", "hal"] for menu in MENUS},
    "sim/core": [],
    "sim/models": ["sim/core", "hal"],
    "sim/device": ["sim/models", "sim/core", "hal"],
    "sim/calls": ["sim/core", "hal"],
    "sim/service": ["sim/device", "sim/calls", "sim/models", "sim/core", "hal"],
    "sim/library": ["sim/calls", "sim/core", "hal"],
    "sim/control": ["sim/device", "sim/calls", "sim/models", "sim/core", "hal"],
    "sim/panel": ["sim/tool", "sim/control", "sim/core"],
    "sim/tool": ["sim/control", "sim/service", "sim/device", "sim/calls", "sim/core"],
    "tests/second_library": ["hal", "tests/support"],
}
FOLDERS = ["hal", "app", "net", "menus", "sim", "tests/second_library"]
STANDARD = re.compile(r"<[a-z_]+>")  # a header of the C++ standard library


def includes(root):
    """(room, file, line number, what stands behind #include) of every line."""
    for path in sorted(p for folder in FOLDERS for p in root.glob(f"{folder}/**/*.*")):
        if path.suffix in (".h", ".cpp"):
            name = path.relative_to(root)
            for number, line in enumerate(path.read_text().splitlines(), 1):
                if match := re.match(r'\s*#\s*include\s*(["<].*?[">])', line):
                    yield name.parent.as_posix(), name, number, match[1]


def may_include(room, what):
    if what.startswith("<"):
        return room != "hal" or STANDARD.fullmatch(what)
    return pathlib.PurePath(what.strip('"')).parent.as_posix() in [room, *ROOMS[room]]


def main():
    lines = list(includes(pathlib.Path(__file__).resolve().parent.parent))
    wrong = [f"{file}:{number}: {room}/ may not include {what}" if room in ROOMS else f"{file}: {room}/ is no room"
             for room, file, number, what in lines
             if room not in ROOMS or not may_include(room, what)]
    graph = {room: set() for room in ROOMS if room.startswith("sim/")}
    for room, _, _, what in lines:
        other = pathlib.PurePath(what.strip('"<>')).parent.as_posix()
        if room in graph and other in graph and other != room:
            graph[room].add(other)
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as circle:
        wrong.append("a circle of rooms: " + " <- ".join(circle.args[1]))
    print("\n".join(wrong) or f"{len(lines)} #include lines keep to the rooms")
    return bool(wrong) or not lines


sys.exit(main())
