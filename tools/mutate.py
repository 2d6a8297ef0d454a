#!/usr/bin/env python3
"""How much the tests see: changes one place of the library or of the tool at a time, builds that, and runs the tests.

    mutate.py [--count N] [--seed S] [--jobs J] [PATTERN...]    mutants of the files whose path has one of the patterns
    mutate.py --again JOURNAL [PATTERN...]                      the mutants of an earlier run whose lines still stand, with
                                                                the tests of today; --survivors: those that survived

An interrupted run goes on where it was when it is started again; --fresh begins anew.

A mutant is one line of src/ or tools/kx with another operator, constant, condition or boundary, or without its statement.
Lines are drawn at random. A mutant that does not compile, or compiles to the same code, is drawn again. It is killed when
a test fails or takes several times its time. Trees and builds are below build/mutate, with journal.jsonl (one result a
line) and report.md. tools/equal_mutants.tsv lists those that no test can see, each with the reason.

Build and run this at low priority: a mutant takes about as long as compiling one file and running the suite once.
"""
import argparse
import collections
import fcntl
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build/mutate"
EQUAL = ROOT / "tools/equal_mutants.tsv"

# What a mutant's own folder says about the scripts that see it. They run first; the other fast ones follow.
SCRIPTS = {"tools/kx/sort_key": "kx.sort|python.package",
           "src/collate|tools/kx/(sort|coll|merge|lines|languages)": "kx.sort", "tools/kx/(regis|codep)": "kx.registry",
           "tools/kx/(help|option|version|near)": "kx.help", "tools/kx/(chart|unit_table|json)": "kx.chart",
           "tools/kx/detect": "kx.detect", "tools/kx/through": "kx.(exact|convert)", "tools/kx/(east|strip)": "kx.letters",
           "tools/kx/(dump|names|stream|archive)": "kx.(streams|characters)", "tools/kx/(files|options|main|os)": "kx.files",
           "tools/kx": "kx.convert", "src/platform": "platform.settings_before_main", "src/simd/plain": "kernels.plain"}
OTHERS = "platform.settings_before_main|kx.(files|letters|characters|detect|registry|streams|convert|help|chart|demo|sort)"

# Code is formatted: a space on both sides makes an operator a binary one, and never a template's bracket.
OPERATORS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
             "+": ("-",), "-": ("+",), "*": ("/", "+"), "/": ("*",), "%": ("*",), "&": ("|",), "|": ("&",), "^": ("|",),
             "<<": (">>",), ">>": ("<<",), "&&": ("||",), "||": ("&&",), "+=": ("-=", "="), "-=": ("+=", "="),
             "|=": ("&=", "="), "&=": ("|=", "=")}
BINARY = re.compile(r"(?<= )(%s)(?= )" % "|".join(re.escape(sign) for sign in sorted(OPERATORS, key=len, reverse=True)))
STEP = re.compile(r"\+\+|--")
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|\d[\d']*)([uUlLzZ]*)(?![\w.'])")
WORD = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(if|while) \(")
STATEMENT = re.compile(r"^\s*(?:if \(.*\) |else )?((?!return\b|throw\b|using\b|case\b|default\b)[\w:*+(-][^;{}]*|return);$")
DECLARATION = re.compile(r"[\w:]+(?:<[^;=]*>)?(?: const)? +[*&]*\w")
LITERAL = re.compile(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\'')
NO_CODE = re.compile(r"^\s*(#|//|\*|/\*|}[;,)]*$|static_assert|namespace|using |template |extern |struct |class |enum |case .*:$)")


NOT_TRIED = ("same code", "no code", "too wide")


def mutants_of_line(line):
    """All lines that differ from this one by a single mutation."""
    code = LITERAL.sub(lambda text: "\1" * len(text[0]), line)  # nothing within a literal
    code = code.split("//")[0]
    if NO_CODE.match(code):
        return
    for match in BINARY.finditer(code):
        for other in OPERATORS[match[0]]:
            yield line[:match.start()] + other + line[match.end():]
    for match in STEP.finditer(code):
        yield line[:match.start()] + ("--" if match[0] == "++" else "++") + line[match.end():]
    for match in NUMBER.finditer(code):
        digits = match[1].replace("'", "")
        value = int(digits, 8 if digits.isdigit() and digits[0] == "0" else 0)
        for other in {value + 1, max(value - 1, 0)} - {value}:
            text = hex(other) if digits[:2] in ("0x", "0X") else str(other)
            yield line[:match.start()] + text + match[2] + line[match.end():]
    for match in LITERAL.finditer(line):
        if len(match[0]) == 3 and match[0][0] == "'" and match.start() < len(code):  # a character
            yield line[:match.start()] + f"'{chr(ord(match[0][1]) ^ 1)}'" + line[match.end():]
    for match in WORD.finditer(code):
        yield line[:match.start()] + ("false" if match[0] == "true" else "true") + line[match.end():]
    for match in CONDITION.finditer(code):
        depth, end = 1, match.end()
        while depth and end < len(code):
            depth += {"(": 1, ")": -1}.get(code[end], 0)
            end += 1
        if not depth and ";" not in code[match.end():end]:
            yield f"{line[:match.end()]}!({line[match.end():end - 1]}){line[end - 1:]}"
    match = STATEMENT.match(code.rstrip())
    if match and code.count("(") == code.count(")") and (match[1][:2] == "if" or not DECLARATION.match(match[1])):
        yield line[:match.start(1)] + line[match.end(1):]


def drawn(files, seed):
    """Mutants without end, of lines at random, none twice."""
    pick = random.Random(seed)
    sites = []
    for path in files:
        for number, line in enumerate((ROOT / path).read_text(encoding="utf-8").splitlines(), 1):
            choices = sorted(mutants_of_line(line))
            if choices:
                sites.append((path, number, line, choices))
    while sites:
        place = pick.randrange(len(sites))
        path, number, line, choices = sites[place]
        mutated = choices.pop(pick.randrange(len(choices)))
        if not choices:
            sites.pop(place)
        yield {"file": path, "line": number, "was": line, "is": mutated}


def run(command, timeout, **options):
    """The exit status, or None when it took too long; with limits on what a wild program can do. An endless loop is told
    by the time that it takes of the processor, whatever else runs here."""
    def limits():
        os.setpgrp()
        if "seconds" in options:
            resource.setrlimit(resource.RLIMIT_CPU, (options["seconds"], options["seconds"]))
        resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, resource.RLIM_INFINITY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if "memory" in options:
            resource.setrlimit(resource.RLIMIT_AS, (options["memory"], options["memory"]))
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          preexec_fn=limits, cwd=options.get("cwd"), env=options.get("env")) as process:
        try:
            return process.wait(timeout)
        except subprocess.TimeoutExpired:
            return None
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)  # what it has started, too
            except ProcessLookupError:
                pass


class Bench:
    """A copy of the tree with a build of its own, where one mutant at a time is tried."""

    def __init__(self, number):
        self.tree, self.out = WORK / str(number) / "tree", WORK / str(number) / "out"
        self.scratch = pathlib.Path(tempfile.mkdtemp())
        self.scratch.chmod(0o755)  # some tests go on as another user
        self.environment = os.environ | {"HOME": str(self.scratch), "TMPDIR": str(self.scratch), "CCACHE_DISABLE": "1"}
        self.copy_tree()
        # Not optimised more than compiling fast allows; linked by what links fast.
        flags = [f"-DCMAKE_{kind}_LINKER_FLAGS=-fuse-ld=lld" for kind in ("EXE", "SHARED")]
        subprocess.run(["cmake", "-S", self.tree, "-B", self.out, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                        "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", "-DKXSTR_WERROR=OFF", *flags],
                       check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["ninja", "-C", self.out, "-j1", "kx", "kxstr", "kxstr_tests"], check=True, stdout=subprocess.DEVNULL)
        self.objects = self.code()
        listing = self.scratch / "tests.json"
        run([self.out / "kxstr_tests", f"--gtest_output=json:{listing}"], 3600, cwd=self.scratch, env=self.environment)
        self.folders = collections.defaultdict(set)  # of tests/, and the suites in each
        self.seconds = collections.Counter()  # that their tests take
        for suite in json.loads(listing.read_text(encoding="utf-8"))["testsuites"]:
            for test in suite["testsuite"]:
                folder = test["file"].split("tree/tests/")[1].split("/")[0]
                self.folders[folder].add(suite["name"] + ".*")
                self.seconds[folder] += float(test["time"][:-1])
        failed = self.killer("src/platform/", patient=True)
        if failed and self.killer("src/platform/", patient=True):  # twice: this machine may be busy
            sys.exit(f"mutate.py: {failed} fails without any mutant")

    def copy_tree(self):
        listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, check=True).stdout
        for name in listed.decode().split("\0")[:-1]:
            source, target = ROOT / name, self.tree / name
            if not source.exists():
                target.unlink(missing_ok=True)
            elif not target.exists() or source.read_bytes() != target.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(source.read_bytes())
                target.chmod(source.stat().st_mode)

    def code(self):
        """What the compiler has made of the sources that are mutated."""
        digests = hashlib.sha256()
        for folder in ("src/CMakeFiles/kxstr_objects.dir", "tools/kx/CMakeFiles/kx_objects.dir", "tools/kx/CMakeFiles/kx.dir"):
            for path in sorted((self.out / folder).rglob("*.o")):
                digests.update(path.read_bytes())
        return digests.hexdigest()

    def is_wide(self):
        """Whether more is to be compiled than one mutant is worth: the headers that everything reads."""
        plan = subprocess.run(["ninja", "-C", self.out, "-n", "kx", "kxstr_tests"], capture_output=True, check=True)
        return plan.stdout.count(b"Building CXX") > 16

    def build(self, *targets):
        return run(["ninja", "-C", self.out, "-j1", *targets], 1800, env=self.environment) == 0

    def killer(self, path, patient=False):
        """The stage whose tests fail, None when all pass."""
        stages = []
        if not path.startswith("tools/"):
            folder = path.split("/")[1]
            own = ":".join(sorted(self.folders[folder])) or "none"
            suite = [self.out / "kxstr_tests", "--gtest_brief=1", "--gtest_fail_fast"]
            stages.append(("own folder", [*suite, "--gtest_filter=" + own], self.seconds[folder]))
            stages.append(("other folders", [*suite, "--gtest_filter=-" + own], sum(self.seconds.values())))
        first = next((script for pattern, script in SCRIPTS.items() if re.match(pattern, path)), None)
        for script in filter(None, (first, OTHERS)):
            stages.append((script, ["ctest", "--test-dir", self.out, "--stop-on-failure", "-R", f"^({script})$"], 10))
        for name, command, seconds in stages:
            status = run(command, 3600 if patient else 300, cwd=self.scratch, env=self.environment, memory=8 << 30,
                         seconds=int(4 + 3 * seconds))
            if status != 0:
                return name + (" (time)" if status is None else "")
        return None

    def result(self, mutant):
        """One of NOT_TRIED, survived, or the stage that killed it."""
        target = self.tree / mutant["file"]
        original = target.read_text(encoding="utf-8")
        lines = original.split("\n")
        lines[mutant["line"] - 1] = mutant["is"]
        try:
            target.write_text("\n".join(lines), encoding="utf-8")
            if self.is_wide():
                return "too wide"
            if not self.build("kxstr_objects", "kx"):
                return "no code"
            if self.code() == self.objects:
                return "same code"
            if not self.build("kxstr", "kxstr_tests"):
                return "no code"
            return self.killer(mutant["file"]) or "survived"
        finally:
            target.write_text(original, encoding="utf-8")


def key(mutant):
    return mutant["file"], mutant["was"].strip(), mutant["is"].strip()


def read_journal(path):
    return [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]


def standing(mutants):
    """The mutants whose line is still in its file, each with the number that the line has now."""
    texts = {}
    for mutant in mutants:
        path = ROOT / mutant["file"]
        if path not in texts:
            texts[path] = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
        numbers = [number for number, line in enumerate(texts[path], 1) if line == mutant["was"]]
        if numbers:
            yield mutant | {"line": min(numbers, key=lambda number: abs(number - mutant["line"]))}


def equal_mutants():
    if not EQUAL.exists():
        return {}
    rows = [line.split("\t") for line in EQUAL.read_text(encoding="utf-8").splitlines() if line and line[0] != "#"]
    return {(file, was, changed): why for file, was, changed, why in rows}


def report(results):
    """The score of each folder and what survived."""
    equal = equal_mutants()
    counts = collections.defaultdict(collections.Counter)
    survivors = []
    for mutant in results:
        outcome = mutant["result"]
        kind = outcome if outcome in (*NOT_TRIED, "survived") else "killed"
        if kind == "survived":
            survivors.append(mutant)
            kind = "equal" if key(mutant) in equal else kind
        counts["/".join(mutant["file"].split("/")[:2])][kind] += 1
    rows = sorted(counts.items()) + [("all", sum(counts.values(), collections.Counter()))]
    lines = ["| folder | tried | killed | equal | survived | killed of those not equal | (same code, not compiled, too wide) |",
             "|---|---|---|---|---|---|---|"]
    for name, count in rows:
        tried = count["killed"] + count["equal"] + count["survived"]
        share = f"{100 * count['killed'] / max(count['killed'] + count['survived'], 1):.1f} %"
        lines.append(f"| {name} | {tried} | {count['killed']} | {count['equal']} | {count['survived']} | {share} | "
                     f"{', '.join(str(count[reason]) for reason in NOT_TRIED)} |")
    for mutant in sorted(survivors, key=lambda one: (one["file"], one["line"])):
        lines += ["", f"{mutant['file']}:{mutant['line']}" + (f" (equal: {equal[key(mutant)]})" if key(mutant) in equal else ""),
                  f"    - {mutant['was'].strip()}", f"    + {mutant['is'].strip()}"]
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=400)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("--again", type=pathlib.Path)
    parser.add_argument("--survivors", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--report", type=pathlib.Path, help="only writes the report of a journal, on standard output")
    parser.add_argument("patterns", nargs="*")
    arguments = parser.parse_args()
    if arguments.report:
        print(report(read_journal(arguments.report)), end="")
        return

    journal_file = WORK / "journal.jsonl"
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w", encoding="utf-8")  # held until the end: two runs in one tree spoil each other
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("mutate.py: another run is at work in build/mutate")
    earlier = read_journal(arguments.again) if arguments.again else []
    if arguments.fresh or arguments.again:
        journal_file.unlink(missing_ok=True)
    results = read_journal(journal_file) if journal_file.exists() else []

    def wanted(path):
        return not arguments.patterns or any(pattern in path for pattern in arguments.patterns)

    if arguments.again:
        source = standing([mutant for mutant in earlier if wanted(mutant["file"]) and mutant["result"] not in NOT_TRIED
                           and (not arguments.survivors or mutant["result"] == "survived")])
    else:
        # What this machine does not compile, and what is generated, has nothing to say.
        files = subprocess.run(["git", "ls-files", "src/*.cpp", "src/*.h", "tools/kx"], cwd=ROOT, capture_output=True,
                               check=True, text=True).stdout.split()
        source = drawn([path for path in files if path.endswith((".cpp", ".h")) and "windows" not in path
                        and not path.startswith("src/tables/") and wanted(path)], arguments.seed)
    known = {key(mutant) for mutant in results}
    guard, failures = threading.Lock(), queue.Queue()
    stop = threading.Event()

    def work(number):
        bench = None
        try:
            bench = Bench(number)
            while not stop.is_set():
                with guard:
                    counted = sum(one["result"] not in NOT_TRIED for one in results)
                    mutant = next(source, None) if counted < arguments.count else None
                if mutant is None:
                    return
                if key(mutant) in known:
                    continue
                mutant["result"] = bench.result(mutant)
                with guard, open(journal_file, "a", encoding="utf-8") as journal:
                    results.append(mutant)
                    journal.write(json.dumps(mutant) + "\n")
        except BaseException as failure:  # also the end of the program, which another thread has to tell
            stop.set()
            failures.put(failure)
        finally:
            if bench:
                shutil.rmtree(bench.scratch, ignore_errors=True)

    workers = [threading.Thread(target=work, args=(number,)) for number in range(arguments.jobs)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    (WORK / "report.md").write_text(report(results), encoding="utf-8")
    if not failures.empty():
        raise failures.get()
    print(report(results), end="")


if __name__ == "__main__":
    main()
