#!/usr/bin/env python3
"""Prints the coverage in gcovr's JSON: tests/coverage_report.py COVERAGE.json REASONS.txt

REASONS.txt has a reason at the start of a line and below it, indented, the lines that it holds for, as "FILE: CODE".
Ends with 1 where a line that was not reached has no reason.
"""
import json
import sys

FOLDERS = ("app", "net", "menus", "sim")


class Count:
    def __init__(self):
        self.lines = self.lines_reached = self.branches = self.branches_reached = 0

    def add(self, line):
        self.lines += 1
        self.lines_reached += line["count"] > 0
        self.branches += len(line["branches"])
        self.branches_reached += sum(branch["count"] > 0 for branch in line["branches"])

    def __str__(self):
        return f"{share(self.lines_reached, self.lines)}   {share(self.branches_reached, self.branches)}"


def share(reached, total):
    percent = 100.0 * reached / total if total else 100.0
    return f"{percent:6.1f} % of {total:5}"


def read_reasons(path):
    reasons = {}
    reason = ""
    with open(path, encoding="utf-8") as lines:
        for line in map(str.rstrip, lines):
            if line.startswith(" "):
                reasons[line.strip()] = reason
            elif line and not line.startswith("#"):
                reason = line
    return reasons


def main(coverage_path, reasons_path):
    with open(coverage_path, encoding="utf-8") as file:
        files = json.load(file)["files"]
    reasons = read_reasons(reasons_path)
    folders = {folder: Count() for folder in FOLDERS}
    counts = {}
    unreached = []
    for file in sorted(files, key=lambda file: file["file"]):
        path = file["file"]
        with open(path, encoding="utf-8") as source:
            code = [line.strip() for line in source]
        counts[path] = Count()
        for line in file["lines"]:
            if line["gcovr/noncode"]:
                continue
            counts[path].add(line)
            folders[path.split("/")[0]].add(line)
            if line["count"] == 0:
                unreached.append((path, line["line_number"], code[line["line_number"] - 1]))

    print(f"{'':40} {'lines':>18}   {'branches':>16}")
    for name, count in [*folders.items(), *counts.items()]:
        print(f"{name:40} {count}")

    missing = 0
    print("\nNot reached:")
    for path, number, text in unreached:
        reason = reasons.get(f"{path}: {text}", "NO REASON GIVEN")
        missing += reason == "NO REASON GIVEN"
        print(f"{path}:{number}: {text}\n    {reason}")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
