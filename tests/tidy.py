"""Runs clang-tidy on sources, quiet where it finds nothing: tests/tidy.py SOURCE...

The path analysis is for the product alone: in tests it follows the framework's macros, and takes five times as long. Of
the gate it would follow one function for each operation that there is, for minutes.

Tests are looked at by the batch, as one source that includes them: their headers are nine tenths of what the linter
reads. A batch that is not clean, or does not even compile as one, is halved.
"""

import json
import os
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

BATCH = 10
BUILD = Path("build-tidy").resolve()
ANALYZED = ("hal/", "app/", "net/", "menus/", "sim/")
NOT_ANALYZED = "sim/service/gate.cpp"


def lint(source, database, *checks):
    """What the linter finds in the source; nothing where it is clean."""
    command = ["clang-tidy", "--quiet", str(source), f"-p={database}", *(f"--checks={check}" for check in checks)]
    run = subprocess.run(command, capture_output=True, text=True)
    return "" if run.returncode == 0 else run.stdout + run.stderr


def lint_alone(source):
    database = BUILD / "fuzz" if source.startswith("tests/fuzz/") else BUILD
    analyzed = source.startswith(ANALYZED) and source != NOT_ANALYZED
    return lint(source, database, *([] if analyzed else ["-clang-analyzer-*"]))


def lint_batch(sources, entry):
    if len(sources) == 1:
        return lint_alone(sources[0])
    batch = BUILD / "batches" / f"{sources[0]}-{len(sources)}".replace("/", "-")
    batch.mkdir(parents=True, exist_ok=True)
    together = batch / "together.cpp"
    together.write_text("".join(f'#include "{source}"\n' for source in sources))
    command = entry["command"].replace(entry["file"], str(together))
    (batch / "compile_commands.json").write_text(json.dumps([{**entry, "file": str(together), "command": command}]))
    if not lint(together, batch, "-clang-analyzer-*,-bugprone-suspicious-include"):
        return ""
    middle = len(sources) // 2
    return lint_batch(sources[:middle], entry) + lint_batch(sources[middle:], entry)


def main():
    commands = {entry["file"]: entry for entry in json.loads((BUILD / "compile_commands.json").read_text())}
    jobs = []
    together = defaultdict(list)
    for source in sys.argv[1:]:
        entry = commands.get(str(Path(source).resolve()))
        if source.startswith("tests/") and entry is not None:
            together[(os.path.dirname(source), entry["command"].split(" -o ")[0])].append(source)
        else:
            jobs.append((lint_alone, source))
    for sources in together.values():
        for first in range(0, len(sources), BATCH):
            batch = sources[first : first + BATCH]
            jobs.append((lint_batch, batch, commands[str(Path(batch[0]).resolve())]))
    clean = True
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for found in pool.map(lambda job: job[0](*job[1:]), jobs):
            if found:
                clean = False
                print(found, flush=True)
    return 0 if clean else 1


if __name__ == "__main__":
    sys.exit(main())
