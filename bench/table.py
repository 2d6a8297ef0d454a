#!/usr/bin/env python3
"""table.py [FILTER...]: runs the benchmarks and prints one table of all rows, ours beside the best peer and the goal.

A FILTER is a regular expression that is searched in a row's name, job/text/size, such as W6azTowz, '/ja/' or
'^wstr.*/16$'; a row that matches any of them is run. A row is measured in processes of its own, in which ours and the
peers take turns in random order: what the machine does meanwhile meets all of them, and where the memory of a process
happens to lie does not decide a row.
"""

import argparse
import json
import re
import statistics
import subprocess
import sys
from pathlib import Path

BENCH = Path(__file__).resolve().parent
FLOOR = "floor-"
FLAT, FLAT_FROM = "flat", "65536"
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Sample(list):
    """Times of one entrant in nanoseconds, one for each repetition."""

    @property
    def median(self):
        return statistics.median(self)

    @property
    def spread(self):
        """Half the distance between the quartiles, as a part of the median: half of the repetitions lie within it."""
        if len(self) < 2:
            return 0.0
        first, _, third = statistics.quantiles(self, n=4)
        return (third - first) / 2 / self.median


# ---- running ----


def run(command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def rows_of(binary, corpus):
    """Pairs of a system and the name of a row that it has, in the order in which they are registered."""
    for system in run([binary, "--systems"]).split():
        names = run([binary, f"--system={system}", f"--corpus={corpus}", "--benchmark_list_tests=true"]).split()
        for row in dict.fromkeys(name.rpartition("/")[0] for name in names):
            yield system, row
    for row in LOADING:
        yield None, row


def measure(binary, corpus, system, row, repetitions, seconds):
    output = run([binary, f"--system={system}", f"--corpus={corpus}", f"--benchmark_filter=^{row}/[^/]*$",
                  f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
                  "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"])
    return samples_in(json.loads(output))


# Loading is timed by a program of its own: in a process that has nothing else, and in one that has the C++ library, as
# a host in C++ has.
LOADING = {"load/fresh/1": "-", "load/cxx-host/1": "libstdc++.so.6"}


def measure_loading(build, row, rounds=200):
    output = run([f"{build}/kxstr_load", row, str(rounds), LOADING[row], "ours", f"{build}/libkxstr.so", "wstrlen",
                  "libz", "libz.so.1", "zlibVersion"])
    return samples_in(json.loads(output))


def relocations(build):
    """How many entries the loader has to relocate, of what the library's tables should have none."""
    return len(re.findall(r"^[0-9a-f]+ +[0-9a-f]+ R_", run(["readelf", "-rW", f"{build}/libkxstr.so"]), re.M))


def samples_in(report):
    """Entrant -> Sample; None for one that said it was wrong."""
    samples = {}
    for result in report["benchmarks"]:
        if result["run_type"] != "iteration":
            continue
        entrant = result["name"].rpartition("/")[2]
        if result.get("error_occurred"):
            samples[entrant] = None
        elif samples.get(entrant, ()) is not None:
            # Time of the processor: what else the machine does shall not count.
            samples.setdefault(entrant, Sample()).append(result["cpu_time"] * NANOSECONDS[result["time_unit"]])
    return samples


# ---- judging ----


def read_goals(has_vbmi):
    goals = {}
    for line in (BENCH / "goals.txt").read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        job, size, *entries = line.split()
        for entry in entries:
            text, _, goal = entry.partition("=")
            number = float(goal.rstrip("h"))
            halved = goal.endswith("h") and not has_vbmi and number >= 4
            goals[f"{job}/{text}/{size}"] = number / 2 if halved else number
    return goals


class Line:
    """One row of the table."""

    def __init__(self, name, samples, goal, at_least=True):
        self.name = name
        self.goal = goal
        self.ours = samples.get("ours")
        right = {entrant: sample for entrant, sample in samples.items() if sample}
        self.wrong = [entrant for entrant, sample in samples.items() if sample is None]
        peers = [e for e in right if e != "ours" and not e.startswith(FLOOR)]
        self.peer = min(peers, key=lambda e: right[e].median, default=None)
        self.peer_sample = right.get(self.peer)
        self.floor = next((right[e] for e in right if e.startswith(FLOOR)), None)
        self.ratio = self.peer_sample.median / self.ours.median if self.peer and self.ours else None
        self.at_least = at_least

    @property
    def met(self):
        if self.goal is None or self.ratio is None:
            return self.goal is None and None
        # As the table shows it: two digits behind the point.
        ratio = round(self.ratio, 2)
        return ratio >= self.goal if self.at_least else ratio <= self.goal

    def cells(self):
        def number(value, form="{:.2f}"):
            return "-" if value is None else form.format(value)

        spread = max((s.spread for s in (self.ours, self.peer_sample) if s), default=None)
        return [self.name, show_time(self.ours), self.peer or "-", show_time(self.peer_sample), number(self.ratio),
                number(self.floor.median / self.ours.median if self.floor and self.ours else None),
                number(spread, "{:.0%}"), number(self.goal, "{:g}"), {None: "", True: "yes", False: "NO"}[self.met]
                + (f" (wrong: {', '.join(self.wrong)})" if self.wrong else "")]


class FlatLine(Line):
    """What a character costs in the largest text, over what it costs in a smaller one or what the memory takes."""

    def __init__(self, name, small, large, factor, goal):
        super().__init__(name, large, goal, at_least=False)
        flat = small["ours"].median * factor
        self.peer, own = max(("flat", flat), ("memory", self.floor.median), key=lambda pair: pair[1])
        self.peer_sample = Sample([own])
        self.ratio = self.ours.median / own


HEADER = ["job/text/size", "ours", "best peer", "", "ratio", "to floor", "spread", "goal", "met"]


def show_time(sample):
    if not sample:
        return "wrong" if sample is None else "-"
    for unit, size in reversed(NANOSECONDS.items()):
        if sample.median >= size or unit == "ns":
            return f"{sample.median / size:.3g} {unit}"


def lines_of(measured, goals):
    flat = {}
    for row, samples in measured.items():
        job, text, size = row.split("/")
        if FLAT_FROM not in size and f"{FLAT}/{job}/{size}" in goals:
            small = measured.get(f"{job}/{text}/{FLAT_FROM}")
            if small and samples.get("ours") and small.get("ours"):
                name = f"{FLAT}/{job}/{size}"
                flat[name] = FlatLine(name, small, samples, int(size) / int(FLAT_FROM), goals[name])
            continue
        yield Line(row, samples, goals.get(row))
    yield from flat.values()


def verdict(lines):
    with_goal = [line for line in lines if line.goal is not None]
    ahead = sum(1 for line in lines if line.at_least and line.ratio is not None and line.ratio >= 1)
    return (f"goals met {sum(1 for line in with_goal if line.met)} of {len(with_goal)}; ahead of or level with the best "
            f"peer on {ahead} of {sum(1 for line in lines if line.at_least and line.ratio is not None)} rows")


# ---- showing ----


def plain_table(lines):
    table = [HEADER] + [line.cells() for line in lines]
    widths = [max(len(row[column]) for row in table) for column in range(len(HEADER))]
    left = {0, 2, len(HEADER) - 1}
    for row in table:
        yield "  ".join(c.ljust(w) if i in left else c.rjust(w) for i, (c, w) in enumerate(zip(row, widths))).rstrip()


def markdown_table(lines):
    yield "| " + " | ".join(HEADER) + " |"
    yield "|---|---:|---|---:|---:|---:|---:|---:|---|"
    for line in lines:
        yield "| " + " | ".join(line.cells()) + " |"


def processor():
    """Its name and what it can do that the library uses."""
    fields = dict(re.findall(r"^(.+?)\s*: (.*)$", Path("/proc/cpuinfo").read_text().partition("\n\n")[0], re.M))
    known = ("avx2", "avx512bw", "avx512vbmi")
    flags = [flag for flag in known if flag in fields.get("flags", "").split()]
    return fields.get("model name", "unknown processor"), flags


def compiler_of(binary):
    cache = (Path(binary).resolve().parent / "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M)[1]
    return run([path, "--version"]).splitlines()[0]


def write_markdown(path, section, intro, lines, last):
    """Replaces what stands between the two markers of a section."""
    begin, end = (f"<!-- measured {section}: {edge} -->" for edge in ("begin", "end"))
    before, begin, rest = Path(path).read_text().partition(begin)
    _, end, after = rest.partition(end)
    if not end:
        raise SystemExit(f"{path} has no markers of the section {section}")
    table = "\n".join(markdown_table(lines))
    Path(path).write_text(f"{before}{begin}\n{intro}\n\n{table}\n\n{last}.\n{end}{after}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("filters", nargs="*", metavar="FILTER")
    parser.add_argument("--build", default="build/release", help="build folder (default: %(default)s)")
    parser.add_argument("--repetitions", type=int, default=3, help="of each entrant in a process (default: %(default)s)")
    parser.add_argument("--seconds", type=float, default=0.02, help="of each repetition, at least (default: %(default)s)")
    parser.add_argument("--runs", type=int, default=3, help="processes for each row, one in each pass over all (default: %(default)s)")
    parser.add_argument("--json", metavar="FILE", help="write the times that were measured")
    parser.add_argument("--from", dest="source", metavar="FILE", help="take the times from there instead of measuring")
    parser.add_argument("--markdown", metavar="PAGE", help="write the table into that page, between its markers")
    arguments = parser.parse_args()

    binary = f"{arguments.build}/kxstr_bench"
    corpus = f"{arguments.build}/bench/corpus"
    if arguments.source:
        state = json.loads(Path(arguments.source).read_text())
    else:
        name, flags = processor()
        state = {"processor": name, "flags": flags, "compiler": compiler_of(binary), "runs": arguments.runs,
                 "repetitions": arguments.repetitions, "relocations": relocations(arguments.build), "rows": {}}
        wanted = [(system, row) for system, row in rows_of(binary, corpus)
                  if not arguments.filters or any(re.search(f, row) for f in arguments.filters)]
        total = len(wanted) * arguments.runs
        for done, (system, row) in enumerate(wanted * arguments.runs, 1):
            if sys.stderr.isatty():
                print(f"\r\033[K{done}/{total} {row}", end="", file=sys.stderr, flush=True)
            samples = (measure_loading(arguments.build, row) if row in LOADING else
                       measure(binary, corpus, system, row, arguments.repetitions, arguments.seconds))
            entrants = state["rows"].setdefault(row, {})
            for entrant, sample in samples.items():
                so_far = entrants.setdefault(entrant, [])
                entrants[entrant] = None if sample is None or so_far is None else so_far + sample
        if sys.stderr.isatty():
            print("\r\033[K", end="", file=sys.stderr)
    if arguments.json:
        Path(arguments.json).write_text(json.dumps(state, indent=1))

    has_vbmi = "avx512vbmi" in state["flags"]
    measured = {row: {e: s if s is None else Sample(s) for e, s in entrants.items()}
                for row, entrants in state["rows"].items()}
    lines = list(lines_of(measured, read_goals(has_vbmi)))
    intro = (f"{state['processor']} ({', '.join(state['flags']) or 'no AVX2'}), {state['compiler']}, medians of "
             f"{state['runs']} x {state['repetitions']} repetitions.")
    if not has_vbmi:
        intro += " Goals of 4 and more of the four conversions of strings count half on this processor."
    last = f"{verdict(lines)}; {state['relocations']} relocations in the library"
    print(intro, *plain_table(lines), last, sep="\n")
    if arguments.markdown:
        write_markdown(arguments.markdown, "library", intro, lines, last)


if __name__ == "__main__":
    main()
