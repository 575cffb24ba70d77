#!/usr/bin/env python3
"""Holds the man page of r47-sim against what r47-sim tells of itself: tests/man_pages.py R47-SIM"""

import pathlib
import re
import subprocess
import sys

PAGE = pathlib.Path(__file__).resolve().parent.parent / "packaging/man/r47-sim.1"


def plain(roff):
    """What is read of the page: without requests, fonts and escapes."""
    text = re.sub(r"^\.\\\".*$", "", roff, flags=re.M)
    text = re.sub(r"^\.[A-Z]+ ?", "", text, flags=re.M)
    for escape, character in ((r"\-", "-"), (r"\(aq", "'"), (r"\(dq", '"'), ("\\ ", " "), (r"\|", ""), (r"\e", "\\")):
        text = text.replace(escape, character)
    return text


def told(sim, *words):
    return subprocess.run([sim, *words, "--help"], capture_output=True, text=True, check=True).stdout


def main():
    page = plain(PAGE.read_text())
    lines = [" ".join(line.split()) for line in page.splitlines()]
    whole = told(sys.argv[1])
    options = set(re.findall(r"--[a-z-]+", whole.split("Control commands:")[0]))
    for command in ("show", "diff"):
        options |= set(re.findall(r"^ +(--[a-z-]+)", told(sys.argv[1], "journal", command), re.M))
    missing = [option for option in sorted(options) if not re.search(re.escape(option) + r"(?![a-z-])", page)]
    # The forms of the control commands, and below each group what it does.
    for line in whole.split("Control commands:")[1].splitlines():
        form = line.strip()
        sentence = form[:1].upper() + form[1:] + "."
        if form and (sentence if line.startswith(" ") else form) not in lines:
            missing.append(form)
    print("\n".join(f"{PAGE}: no {what}" for what in missing) or f"{PAGE}: {len(lines)} lines tell all")
    return 1 if missing else 0


sys.exit(main())
