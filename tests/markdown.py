#!/usr/bin/env python3
"""Holds the documents to one width, but for the rows of tables, and what they name to what is there: the files and
folders in `code` that begin with a folder of the tree, and the links, to headings too."""

import re
import sys

from documents import CODE, ROOT

WIDTH = 120
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("bench/*.md")])
FOLDERS = [path.name for path in ROOT.iterdir() if path.is_dir() and not path.name.startswith((".", "build"))]
PATH = re.compile(rf"({'|'.join(FOLDERS)})/[\w./-]*")
LINK = re.compile(r"\]\(([^)]+)\)")


def anchors(document):
    """What a link to a heading of the document can name."""
    headings = re.findall(r"^#+ (.*)", document.read_text(), re.M)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def faults(document):
    text = document.read_text()
    for number, line in enumerate(text.splitlines(), 1):
        if len(line) > WIDTH and not line.startswith("|"):
            yield f"{number}: {len(line)} columns"
    prose = re.sub(r"```.*?```", "", text, flags=re.S)
    for code in CODE.findall(prose):
        path = code.split()[0] if code.split() else ""
        if PATH.fullmatch(path) and not (ROOT / path).exists():
            yield f"there is no {path}"
    for link in LINK.findall(prose):
        path, _, heading = link.partition("#")
        target = document.parent / path if path else document
        if "://" not in link and (not target.exists() or heading and heading not in anchors(target)):
            yield f"there is no {link}"


wrong = [f"{document}: {fault}" for document in DOCUMENTS for fault in faults(document)]
print("\n".join(wrong) or f"{len(DOCUMENTS)} documents keep to {WIDTH} columns and name what is there")
sys.exit(bool(wrong) or not DOCUMENTS)
