"""What the tests of the documents share: Markdown tables, and the keys of the menus as their sources have them."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
MAIN_MENU = ROOT / "app" / "console_main.cpp"
MODULE_INFORMATION = ROOT / "app" / "module_information.cpp"
EXIT_KEY = "x"
HANDLED = re.compile(r"case '(.)':|option [!=]= '(.)'")
LISTED = re.compile(r'"(?:\\t| )+(\w)[.: ] +\S')
CODE = re.compile(r"`([^`]+)`")


class Table:
    """A table of a document: the headings it stands under, its first line and its rows, each a list of cells."""

    def __init__(self, heading, subheading, head):
        self.heading, self.subheading, self.head, self.rows = heading, subheading, head, []


def tables(document):
    heading, subheading, found, table = "", "", [], None
    for line in document.read_text().splitlines():
        if line.startswith("## "):
            heading, subheading = line[3:], ""
        if line.startswith("### "):
            subheading = line[4:]
        if not line.startswith("|"):
            table = None
            continue
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        if table is None:
            table = Table(heading, subheading, cells)
            found.append(table)
        elif not set(line) <= set("|-"):
            table.rows.append(cells)
    return found


def menu_keys(heading):
    """The keys at the main menu that lead to the menu of a heading such as "Key `b`: ..."."""
    return CODE.findall(heading.partition(":")[0]) if heading.startswith("Key") else []


def handled_keys(source):
    text = source.read_text()
    keys = {a or b for a, b in HANDLED.findall(text)}
    if "kExitKey" in text:
        keys.add(EXIT_KEY)
    if source != MODULE_INFORMATION and "run_module_option(" in text:
        keys |= handled_keys(MODULE_INFORMATION)
    return keys


def listed_keys(source):
    text = source.read_text()
    keys = set(LISTED.findall(text))
    if source != MODULE_INFORMATION and "top_usage()" in text:
        keys |= listed_keys(MODULE_INFORMATION)
    return keys


def sources_of_menus():
    """{key at the main menu: the source of the menu that it opens}"""
    definitions = {}
    for path in [*ROOT.glob("app/*.cpp"), *ROOT.glob("menus/*/*.cpp"), *ROOT.glob("net/*.cpp")]:
        for name in re.findall(r"^(?:int|void) (test_\w+)\(", path.read_text(), re.M):
            definitions[name] = path
    opened = re.findall(r"case '(.)':\s+(?:if \(!bsock\) {\s+)?(test_\w+)\(", MAIN_MENU.read_text())
    return {key: definitions[name] for key, name in opened}
