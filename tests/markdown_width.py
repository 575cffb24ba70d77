#!/usr/bin/env python3
"""Holds every line of Markdown to 120 columns, but for the rows of tables, which cannot be wrapped."""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WIDTH = 120
DOCUMENTS = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("bench/*.md")]

wide = [f"{document}:{number}: {len(line)} columns"
        for document in sorted(DOCUMENTS)
        for number, line in enumerate(document.read_text().splitlines(), 1)
        if len(line) > WIDTH and not line.startswith("|")]
print("\n".join(wide) or f"{len(DOCUMENTS)} documents keep to {WIDTH} columns")
sys.exit(bool(wide) or not DOCUMENTS)
