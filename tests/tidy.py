"""Runs clang-tidy on sources, quiet where it finds nothing: tests/tidy.py SOURCE...

Sources are looked at by the batch, as one that includes them: their headers are most of what the linter reads. A batch
that is not clean, or does not even compile as one, is halved.

The path analysis is for the product alone: in tests it follows the framework's macros, and takes five times as long. Of
the gate it would follow one function for each operation that there is, for minutes.
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
# The steps that the analysis follows a function, a fifth of what it would: few functions have more, and these take most
# of its time.
ANALYSIS = [word for argument in ("-Xclang", "-analyzer-config", "-Xclang", "max-nodes=50000")
            for word in ("--extra-arg", argument)]


def is_analyzed(source):
    return source.startswith(ANALYZED) and source != NOT_ANALYZED


def lint(source, database, analyzed, checks=""):
    """What the linter finds in the source; nothing where it is clean."""
    checks += "" if analyzed else ",-clang-analyzer-*"
    command = ["clang-tidy", "--quiet", str(source), f"-p={database}", f"--checks={checks}", *ANALYSIS]
    run = subprocess.run(command, capture_output=True, text=True)
    return "" if run.returncode == 0 else run.stdout + run.stderr


def lint_alone(source):
    return lint(source, BUILD / "fuzz" if source.startswith("tests/fuzz/") else BUILD, is_analyzed(source))


def lint_batch(sources, entry):
    if len(sources) == 1:
        return lint_alone(sources[0])
    batch = BUILD / "batches" / f"{sources[0]}-{len(sources)}".replace("/", "-")
    batch.mkdir(parents=True, exist_ok=True)
    # (in a source of another name the analysis would pass over what is included)
    together = batch / "UnifiedSource.cpp"
    together.write_text("".join(f'#include "{source}"\n' for source in sources))
    command = entry["command"].replace(entry["file"], str(together))
    (batch / "compile_commands.json").write_text(json.dumps([{**entry, "file": str(together), "command": command}]))
    if not lint(together, batch, is_analyzed(sources[0]), "-bugprone-suspicious-include"):
        return ""
    middle = len(sources) // 2
    return lint_batch(sources[:middle], entry) + lint_batch(sources[middle:], entry)


def main():
    commands = {entry["file"]: entry for entry in json.loads((BUILD / "compile_commands.json").read_text())}
    jobs = []
    together = defaultdict(list)
    for source in sys.argv[1:]:
        entry = commands.get(str(Path(source).resolve()))
        if entry is None:
            jobs.append((lint_alone, source))
        else:
            kind = os.path.dirname(source), entry["command"].split(" -o ")[0], is_analyzed(source)
            together[kind].append(source)
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
