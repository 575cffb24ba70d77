#!/usr/bin/env python3
"""Changes one thing at a time in the sources and sees whether a test fails.

    tests/mutate.py [OPTION...] [PATH...]      files or folders; sim/models where none is told

A mutant is a comparison, a constant, a sign or operator of arithmetic, or a logical operator changed, a statement
removed, or two arguments swapped. It is built and tested in copies of the tree, build-mutate/, with builds of their
own. What does not compile is no mutant; one that does not end, or fills the memory, counts as killed. Survivors are
printed as they are found, then what was killed of each source (a header counts with its .cpp), also where Ctrl-C ends
it. Ends with 1 where less than 95 % of a source of sim/models, or 98 % of any other, is killed or has its reason in
tests/survivors.txt; those without are written to build-mutate/survivors.txt, in that file's form.
"""
import argparse
import collections
import concurrent.futures
import json
import math
import os
import pathlib
import queue
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build-mutate"
ACCEPTED = ROOT / "tests" / "survivors.txt"
MODELS = "sim/models"
BUILD_LIMIT = 900  # s, of one mutant
LONGEST_LIMIT = 60  # s, of a test
CPU_LIMIT = 600  # s of the processor, of a model's own tests without a mutant
SLOWER = 10  # times as long: then they do not end, however busy the machine is
SHORTEST_LIMIT = 5  # s
RUN_LIMIT = 900  # s, of the tests of one mutant
MEMORY_LIMIT = 4 << 30  # bytes, of each process: a loop that does not end may fill all there is
COMPILER = "clang++" if shutil.which("clang++") else "g++"
CTEST = ["ctest", "-j4", "--no-tests=ignore"]  # most tests wait for a process of their own
CACHE = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []  # of what is built once
LINKER = next(([f"-fuse-ld={name}"] for name in ("lld", "gold") if shutil.which(f"ld.{name}")), [])
# Without optimization, which takes longer than the tests; what reaches beyond an array ends there and then.
FLAGS = "-O0 -w -D_GLIBCXX_ASSERTIONS -fsanitize=bounds,shift -fsanitize-undefined-trap-on-error"

TOKEN = re.compile(
    r"""(?P<comment>//.*|/\*.*?\*/)
      | (?P<text>R"\(.*?\)"|"(?:\\.|[^"\\])*"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\])+')
      | (?P<number>(?<![\w.])(?:0[xX][0-9A-Fa-f']+|0b[01']+|[0-9][0-9']*(?:\.[0-9]*)?(?:[eE][-+]?[0-9]+)?)[uUlLf]*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<binary>(?<=\ )(?:<=|>=|==|!=|&&|\|\||<<=|>>=|<<|>>|[-+*/%&|^]=|[-+*/%&|^<>])(?=\ |$))
      | (?P<step>\+\+|--)
      | (?P<minus>(?<=[(\[{ ])-(?=[\w(.]))
      | (?P<negation>!(?=[\w(*]))
      | (?P<other>\S)""",
    re.VERBOSE)

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "&", "<<": ">>", ">>": "<<",
              "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*=", "&=": "|=", "|=": "&=", "^=": "&=",
              "<<=": ">>=", ">>=": "<<=", "++": "--", "--": "++"}
LOGIC = {"&&": "||", "||": "&&"}
TRUTH = {"true": "false", "false": "true"}
# On one line, and no declaration: those that are left out do not compile without, or are a return that is needed.
STATEMENT = re.compile(r"\s{4,}(?!return .|using |static_assert|case |default:|\S+ .*\b\w+ = |"
                       r"[\w:<>]+ (const )?\w+(\{.*\})?;)\S.*;$")
COMMUTATIVE = ("min", "max", "hypot", "angle_between", "tilt_between")

Mutant = collections.namedtuple("Mutant", "file number kind old new place")


def shown(mutant):
    return f"{mutant.file}:{mutant.number}: {mutant.kind}\n    -{mutant.old.strip()}\n    +{mutant.new.strip()}"


def record(mutant):
    """As survivors.txt has it: by the text of the line, so that it stays true when lines move."""
    return f"{mutant.file}: {mutant.place}{mutant.old.strip()} => {mutant.new.strip()}"


def other_number(text):
    digits = re.match(r"0[xX][0-9A-Fa-f']+|0b[01']+|[0-9.'eE+-]+", text)[0]
    suffix = text[len(digits):]
    plain = digits.replace("'", "")
    if re.match(r"0[xXbB]", plain):
        return hex(int(plain, 0) + 1) + suffix
    if re.search(r"[.eE]", plain):
        value = float(plain)
        return repr(value * 1.1 if value else 1.0) + suffix
    return str(int(plain) + 1) + suffix


def arguments(line, start):
    """(start, end) of each argument of the call whose parenthesis opens at `start`; none where it ends elsewhere."""
    depth = 0
    parts = []
    begin = start + 1
    for i in range(start, len(line)):
        if line[i] in "([{":
            depth += 1
        elif line[i] in ")]}":
            depth -= 1
            if depth == 0:
                return parts + [(begin, i)]
        elif line[i] == "," and depth == 1:
            parts.append((begin, i))
            begin = i + 1
    return []


def swaps(line):
    for call in re.finditer(r"\b(\w+)\(", line):
        if call[1] in COMMUTATIVE or call[1] in ("if", "for", "while", "switch", "return"):
            continue
        parts = arguments(line, call.end() - 1)
        texts = [line[begin:end].strip() for begin, end in parts]
        if any(re.search(r"\w[&*]* \w", text) or '"' in text or not text for text in texts):
            continue  # parameters that are declared
        for i in range(len(parts) - 1):
            if texts[i] != texts[i + 1]:
                changed = ", ".join(texts[:i] + [texts[i + 1], texts[i]] + texts[i + 2:])
                yield line[:parts[0][0]] + changed + line[parts[-1][1]:]


def mutants_of(path):
    """Every mutant of the file at `path`, relative to the tree."""
    lines = (ROOT / path).read_text(encoding="utf-8").splitlines()
    same = collections.Counter(map(str.strip, lines))
    in_comment = False
    above = ""
    previous = "{"
    for number, line in enumerate(lines, 1):
        # Which it is of the lines with the same text, by the line above it.
        place = f"{above} | " if same[line.strip()] > 1 else ""
        above = line.strip()
        if in_comment or line.lstrip().startswith(("#", "/*")):
            in_comment = ("/*" in line or in_comment) and "*/" not in line
            continue
        if line.lstrip().startswith(("static_assert", "using ", "template", "class ", "friend ")) or "extern " in line:
            continue
        tokens = [t for t in TOKEN.finditer(line) if t.lastgroup != "comment"]
        code = line[:tokens[-1].end()] if tokens else ""
        if not code:
            continue
        for token in tokens:
            text = token.group()
            changes = []
            if token.lastgroup == "binary" and text in COMPARISONS:
                changes = [("comparison", COMPARISONS[text])]
            elif token.lastgroup == "binary" and text in LOGIC:
                changes = [("logic", LOGIC[text])]
            elif token.lastgroup in ("binary", "step"):
                changes = [("arithmetic", ARITHMETIC[text])]
            elif token.lastgroup == "minus":
                changes = [("sign", "")]
            elif token.lastgroup == "negation":
                changes = [("logic", "")]
            elif token.lastgroup == "number":
                changes = [("constant", other_number(text))]
            elif token.lastgroup == "word" and text in TRUTH:
                changes = [("constant", TRUTH[text])]
            for kind, new in changes:
                yield Mutant(path, number, kind, line, line[:token.start()] + new + line[token.end():], place)
        if path.endswith(".cpp"):
            begins_here = previous.endswith(("{", "}", ";", ":", ")", "else"))
            if begins_here and STATEMENT.fullmatch(code) and not code.endswith("= delete;"):
                yield Mutant(path, number, "removed", line, line[:len(line) - len(line.lstrip())] + ";", place)
            for changed in swaps(code):
                yield Mutant(path, number, "swapped", line, changed + line[len(code):], place)
        previous = code.rstrip()


def sources(paths):
    for path in paths:
        full = ROOT / path
        found = sorted(full.rglob("*")) if full.is_dir() else [full]
        for file in found:
            if not file.exists():
                sys.exit(f"there is no {file}")
            if file.suffix in (".h", ".cpp"):
                yield file.relative_to(ROOT).as_posix()


def read_records(path, explained):
    """The records in a file of survivors; with their reasons where they are `explained`."""
    records = {}
    reason = ""
    lines = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
    for line in lines:
        if line.startswith(" "):
            if explained and not reason:
                sys.exit(f"{path}: no reason stands above {line.strip()}")
            records[line.strip()] = reason
        elif line and not line.startswith("#"):
            reason = line
    return records


def run(command, cwd, limit):
    """Exit status and output; no status where it did not end in time. What it started ends with it then."""
    with subprocess.Popen(command, cwd=cwd, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          start_new_session=True, text=True, errors="replace") as process:
        try:
            output, _ = process.communicate(timeout=limit)
            return process.returncode, output
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return None, ""


def suites_in(folder, stem=""):
    """The names of the test suites below a folder of the tests, or in those of its files that begin with `stem`."""
    pattern = re.compile(r"^TEST(?:_F|_P)?\((\w+),", re.MULTILINE)
    files = (ROOT / "tests" / folder).rglob(f"{stem}*.cpp")
    return sorted({suite for file in files for suite in pattern.findall(file.read_text(encoding="utf-8"))})


def tests_of(file):
    """The tests that mirror a source."""
    return f"tests/{pathlib.PurePath(file).with_suffix('')}_test.cpp"


def has_suite(file):
    """Whether the source is a model that is tested on its own."""
    return file.startswith(MODELS) and (ROOT / tests_of(file)).exists()


def suite_of(file):
    """The sources of a program that has only the tests of the model's `file`, and what these call."""
    found = set()
    waiting = [tests_of(file)]
    while waiting:
        name = waiting.pop()
        if name not in found and (ROOT / name).exists():
            found.add(name)
            # The grammar is there for its words alone: nothing of the device that its verbs work on.
            room = "sim/(?:control|calls)" if name.startswith("sim/control/") else "sim"
            headers = re.findall(rf'#include "({room}/.*)\.h"', (ROOT / name).read_text(encoding="utf-8"))
            waiting += [header + suffix for header in headers for suffix in (".h", ".cpp")]
            if name == "sim/device/describe.h":
                waiting += [path.relative_to(ROOT).as_posix() for path in (ROOT / "sim/device").glob("describe_*.cpp")]
    return sorted(name for name in found if name.endswith(".cpp"))


def concerns(name, header):
    """Whether a source uses what the model's header declares."""
    stem = pathlib.PurePath(header).stem
    type_name = "".join(part.capitalize() for part in stem.split("_"))
    return re.search(rf"\b{type_name}\b|models/{stem}\.h", (ROOT / name).read_text(encoding="utf-8")) is not None


class Workshop:
    """A copy of the tree and its build, for one mutant at a time."""

    learning = threading.Lock()
    selections = {}  # of all workshops, by their patterns: the words for ctest that select a source's tests

    def __init__(self, number, jobs):
        self.number = number
        self.jobs = jobs  # of the builds before the mutants
        self.tree = WORK / f"tree-{number}"
        self.build = WORK / f"build-{number}"
        self.commands = {}  # that compile each source
        self.limits = {}  # s of the processor, of each model's own tests

    def copy(self):
        self.tree.mkdir(parents=True, exist_ok=True)
        listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True).stdout
        for name in filter(None, listed.decode().split("\0")):
            source, copy = ROOT / name, self.tree / name
            if source.is_file() and (not copy.exists() or copy.read_bytes() != source.read_bytes()):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(source, copy)
                os.utime(copy)
        self.demand(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                     f"-DCMAKE_CXX_FLAGS_DEBUG={FLAGS}", f"-DCMAKE_CXX_COMPILER={COMPILER}", *CACHE])
        with open(self.build / "compile_commands.json", encoding="utf-8") as file:
            for entry in json.load(file):
                name = os.path.relpath(entry["file"], self.tree)
                command = shlex.split(entry["command"])
                self.commands[name] = command[1:] if pathlib.PurePath(command[0]).name == "ccache" else command

    def prepare(self, targets):
        """Builds the targets of the tree as it is."""
        if not self.commands:
            self.copy()
        self.demand(["ninja", f"-j{self.jobs}", *targets])

    def demand(self, command):
        status, output = run(list(map(str, command)), self.build if self.build.exists() else ROOT, None)
        if status != 0:
            sys.exit(f"{shlex.join(map(str, command))} failed:\n{output}")

    def object_of(self, name):
        command = self.commands[name]
        return command[command.index("-o") + 1]

    def compile(self, name, folder, mutated):
        """Compiles one source into `folder`, with what stands below `mutated` instead of the same of the copy.

        Nothing where that fails.
        """
        target = str(folder / (name.replace("/", "_") + ".o"))
        source = mutated / name if (mutated / name).exists() else self.tree / name
        words = {self.object_of(name): target, str(self.tree / name): str(source)}
        compiler, *options = (words.get(word, word) for word in self.commands[name])
        status, _ = run([compiler, "-I", str(mutated), *options], self.build, BUILD_LIMIT)
        return target if status == 0 else None

    def suite(self, file, text, worker):
        """Tests the model's `file` with this `text`, or as it is, with that model's tests alone, linked on their own.

        The copy stays as it is: workers may do this at the same time. What else includes a header is built only for
        those that live through this.
        """
        objects = {name: self.object_of(name) for name in suite_of(file)}
        with tempfile.TemporaryDirectory(prefix=f"worker-{worker}-", dir=WORK) as name:
            folder = pathlib.Path(name)
            if text is not None:
                mutant = folder / "mutated" / file
                mutant.parent.mkdir(parents=True)
                mutant.write_text(text, encoding="utf-8")
                changed = [file] if file.endswith(".cpp") else [name for name in objects if concerns(name, file)]
                for name in changed:
                    objects[name] = self.compile(name, folder, folder / "mutated")
                    if not objects[name]:
                        return "invalid"
            program = folder / "suite"
            libraries = ["-lgtest_main", "-lgtest", "-lpthread"]
            status, _ = run([COMPILER, *LINKER, "-Wl,--unresolved-symbols=ignore-all", "-o", program,
                             *objects.values(), *libraries], self.build, BUILD_LIMIT)
            if status != 0:
                return "invalid"
            before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
            limited = ["prlimit", f"--cpu={self.limits.get(file, CPU_LIMIT)}", program]
            status, _ = run([*limited, "--gtest_brief=1", "--gtest_fail_fast"], self.build, RUN_LIMIT)
            if text is None:
                used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
                self.limits[file] = max(math.ceil(SLOWER * used), SHORTEST_LIMIT)
            return "survived" if status == 0 else "killed"

    def rest(self, mutant, patterns, targets):
        """Builds all that depends on the mutant, and runs the tests of each pattern until one fails."""
        status, _ = run(["ninja", "-j1", *targets], self.build, BUILD_LIMIT)
        if status is None:
            sys.exit(f"the build did not end: {shown(mutant)}")
        if status != 0:
            return "invalid"
        for pattern in patterns:
            status, _ = run([*CTEST, *self.selections[pattern], "--stop-on-failure"], self.build, RUN_LIMIT)
            if status != 0:
                return "killed"
        return "survived"

    def learn(self, targets, patterns):
        """Prepares for the tests of these patterns: one workshop after the other, so that their times are true."""
        with self.learning:
            unknown = [pattern for pattern in patterns if pattern not in self.selections]
            if unknown or not self.commands:
                self.prepare(targets)
            for pattern in unknown:
                self.selections[pattern] = self.selection(pattern)

    def selection(self, pattern):
        """How the tests of a pattern are selected: one that fails without a mutant says nothing of one, and one that
        takes much longer than any of them does without one does not end."""
        _, output = run([*CTEST, "--timeout", str(LONGEST_LIMIT), "-R", pattern], self.build, None)
        failed = re.findall(r"^\s*\d+ - (\S+) \(", output, re.MULTILINE)
        longest = max(map(float, re.findall(r"Passed +([\d.]+) sec$", output, re.MULTILINE)), default=LONGEST_LIMIT)
        limit = min(max(math.ceil(SLOWER * longest), SHORTEST_LIMIT), LONGEST_LIMIT)
        left_out = ["-E", f"^({'|'.join(map(re.escape, failed))})$"] if failed else []
        return ["--timeout", str(limit), "-R", pattern, *left_out]


def plan_of(file):
    """What is built, and the tests in their order, for a file that no suite of its own tests."""
    folder = pathlib.PurePath(file).parent.as_posix()
    stem = pathlib.PurePath(file).stem
    if folder.startswith("sim"):
        selections = [suites_in(folder, stem + "_test"), suites_in("sim")]
        targets = ["sim_tests", "r47-sim", "sim_probe"]
    else:
        all_of_them = [suite for room in ("app", "net", "menus", "hal") for suite in suites_in(room)]
        selections = [suites_in(folder, stem), suites_in(folder), all_of_them]
        targets = ["unit_tests", "transcript_tests"]
    # (the name of an instantiation stands before that of a suite with parameters)
    patterns = [f"^(.*/)?({'|'.join(suites)})\\." for suites in selections if suites]
    return targets, patterns


def verdict(workshop, suites, mutant, quick):
    original = (ROOT / mutant.file).read_text(encoding="utf-8")
    lines = original.splitlines(keepends=True)
    lines[mutant.number - 1] = mutant.new + "\n"
    text = "".join(lines)
    if has_suite(mutant.file):
        result = suites.suite(mutant.file, text, workshop.number)
        if result != "survived" or quick:
            return result
    targets, patterns = plan_of(mutant.file)
    if quick:
        patterns = patterns[:1]
    workshop.learn(targets, patterns)
    source = workshop.tree / mutant.file
    try:
        source.write_text(text, encoding="utf-8")
        return workshop.rest(mutant, patterns, targets)
    finally:
        source.write_text(original, encoding="utf-8")


def prepare_suites(suites, files):
    if files:
        suites.copy()
        suites.prepare(sorted({suites.object_of(source) for file in files for source in suite_of(file)}))
    for file in files:
        if suites.suite(file, None, 0) != "survived":
            sys.exit(f"{tests_of(file)} fails without a mutant")


def report(counts, unexplained):
    print(f"\n{'':32} {'mutants':>8} {'killed':>8} {'':>8} {'explained':>10}")
    failed = False
    for source, count in sorted(counts.items()):
        mutants = count["killed"] + count["explained"] + count["survived"]
        share = 100.0 * count["killed"] / mutants if mutants else 100.0
        held = 100.0 * (count["killed"] + count["explained"]) / mutants if mutants else 100.0
        wanted = 95.0 if source.startswith(MODELS) else 98.0
        failed = failed or held < wanted
        print(f"{source:32} {mutants:8} {count['killed']:8} {share:6.1f} % {count['explained']:10}"
              f"{'' if held >= wanted else f'   {held:.1f} % is less than {wanted:.0f} %'}")
    (WORK / "survivors.txt").write_text("".join(f"    {record(mutant)}\n" for mutant in unexplained), encoding="utf-8")
    return failed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("paths", nargs="*", default=[MODELS], help="files or folders of the tree")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at the same time, each in a tree of its own")
    parser.add_argument("--sample", type=int, help="only so many mutants of each source")
    parser.add_argument("--seed", type=int, default=1, help="of the sample")
    parser.add_argument("--list", action="store_true", help="print the mutants and build nothing")
    parser.add_argument("--quick", action="store_true", help="only the tests of the source itself")
    parser.add_argument("--from-survivors", type=pathlib.Path, metavar="FILE",
                        help="only the mutants in this file, in the form of tests/survivors.txt")
    options = parser.parse_args()
    paths = [os.path.relpath(path if pathlib.Path(path).exists() else ROOT / path, ROOT) for path in options.paths]
    if any(path.startswith("..") for path in paths):
        sys.exit(f"not in {ROOT}: {' '.join(options.paths)}")

    by_source = collections.defaultdict(list)
    for file in sources(paths):
        by_source[pathlib.PurePath(file).with_suffix("").as_posix()] += mutants_of(file)
    if options.from_survivors:
        wanted = read_records(options.from_survivors, explained=False)
        by_source = {source: [m for m in all_of_it if record(m) in wanted] for source, all_of_it in by_source.items()}
    if options.sample:
        chosen = random.Random(options.seed)
        by_source = {source: chosen.sample(all_of_it, min(options.sample, len(all_of_it)))
                     for source, all_of_it in by_source.items()}
    mutants = [mutant for all_of_it in by_source.values() for mutant in all_of_it]
    if options.list:
        print("\n".join(map(shown, mutants)))
        return 0

    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    accepted = read_records(ACCEPTED, explained=True)
    suites = Workshop(0, options.jobs)  # of what all share; the others are for one mutant at a time
    prepare_suites(suites, sorted({mutant.file for mutant in mutants if has_suite(mutant.file)}))
    workshops = queue.SimpleQueue()
    for number in range(1, options.jobs + 1):
        workshops.put(Workshop(number, options.jobs))
    counts = collections.defaultdict(collections.Counter)
    unexplained = []

    def try_one(mutant):
        workshop = workshops.get()
        try:
            return mutant, verdict(workshop, suites, mutant, options.quick)
        finally:
            workshops.put(workshop)

    pool = concurrent.futures.ThreadPoolExecutor(options.jobs)
    try:
        for mutant, result in pool.map(try_one, mutants):
            if result == "survived" and record(mutant) in accepted:
                result = "explained"
            if result == "survived":
                unexplained.append(mutant)
                print(shown(mutant), flush=True)
            counts[pathlib.PurePath(mutant.file).with_suffix("").as_posix()][result] += 1
    except KeyboardInterrupt:
        pool.shutdown(cancel_futures=True)
    return int(report(counts, unexplained))


if __name__ == "__main__":
    sys.exit(main())
