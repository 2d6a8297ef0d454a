#!/usr/bin/env python3
"""tool.py [FILTER...]: times kx on large files beside iconv(1), uconv(1) and sort(1), and prints a table like table.py's.

The files are made of the corpus, lie in the memory of the system when they are read, and what is written goes to
/dev/null. Before a row is timed the outputs are compared. The entrants take turns; the times are those of the
processor, user and system together, of which one thread can have no more than passes.
"""

import argparse
import hashlib
import os
import random
import re
import subprocess
import sys
import tempfile
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import table

MEBIBYTE = 1 << 20
LINES = 1_000_000
WORDS_A_LINE = 3

# Language, its page's number, and the page's names for Python, iconv and uconv.
PAGES = [("en", "1252", "cp1252", "CP1252", "windows-1252"), ("fr", "850", "cp850", "CP850", "ibm-850"),
         ("ru", "1251", "cp1251", "CP1251", "windows-1251"), ("ru", "866", "cp866", "CP866", "ibm-866"),
         ("ja", "932", "cp932", "CP932", "windows-932")]
LOCALES = {"US": "en_US", "ES": "es_ES", "SV": "sv_SE"}


def spawn(command, environment, output):
    return subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=output)


def digest(stream):
    """In small pieces: the memory of this process would count as the most that a child had."""
    result = hashlib.sha256()
    while piece := stream.read(MEBIBYTE):
        result.update(piece)
    return result.hexdigest()


def digest_of_output(command, environment):
    process = spawn(command, environment, subprocess.PIPE)
    result = digest(process.stdout)
    return result if process.wait() == 0 else None


def digest_of_lines(command, environment):
    """Of the lines whatever their order: no two sorters have the same."""
    process = spawn(command, environment, subprocess.PIPE)
    sorter = subprocess.Popen(["sort"], env={**environment, "LC_ALL": "C"}, stdin=process.stdout,
                              stdout=subprocess.PIPE)
    result = digest(sorter.stdout)
    return result if process.wait() == 0 and sorter.wait() == 0 else None


def time_of(command, environment):
    """Seconds of the processor and the most memory in bytes that a command took."""
    process = spawn(command, environment, subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"tool.py: {' '.join(command)} gave status {process.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


@dataclass
class Row:
    name: str
    entrants: Callable  # makes the files; gives the commands by name, "ours" first
    same: Callable = digest_of_output  # what all entrants must agree about; None where each does something else
    locale: str = "C"


def measure(row, commands, environment, repetitions):
    """Samples of times by entrant, None for one whose output is wrong, and of the memory of ours."""
    times = {entrant: table.Sample() for entrant in commands}
    if row.same:
        outputs = {entrant: row.same(command, environment) for entrant, command in commands.items()}
        times.update({entrant: None for entrant, output in outputs.items() if output is None or output != outputs["ours"]})
    memory = table.Sample()
    for _ in range(repetitions):
        for entrant, command in commands.items():
            if times[entrant] is None:
                continue
            seconds, most = time_of(command, environment)
            times[entrant].append(seconds * 1e9)
            if entrant == "ours":
                memory.append(most)
    return times, memory


# ---- files ----


def repeat(path, content, size):
    """Whole copies of a text, at least so many bytes."""
    with open(path, "wb") as file:
        for _ in range(-(-size // len(content))):
            file.write(content)
    return str(path)


def characters_of(corpus, language, page):
    """The text without the characters that this page lacks; the corpus is made for the language's Windows page."""
    return (corpus / f"text-{language}.txt").read_text("utf-8").encode(page, "ignore").decode(page)


def conversion_rows(kx, corpus, size):
    for language, number, page, iconv_name, uconv_name in PAGES:
        def files(folder, language=language, number=number, page=page):
            text = characters_of(corpus, language, page)
            native = repeat(folder / f"{language}-{number}", text.encode(page), size)
            copies = os.path.getsize(native) // len(text.encode(page))
            utf_8 = repeat(folder / f"{language}-{number}-utf-8", text.encode(), copies * len(text.encode()))
            return native, utf_8

        def to_utf_8(folder, files=files, number=number, iconv_name=iconv_name, uconv_name=uconv_name):
            native, _ = files(folder)
            return {"ours": [kx, "convert", "-f", number, "-t", "utf-8", native],
                    "iconv": ["iconv", "-f", iconv_name, "-t", "UTF-8", native],
                    "uconv": ["uconv", "-b", "65536", "-f", uconv_name, "-t", "UTF-8", native]}

        def from_utf_8(folder, files=files, number=number, iconv_name=iconv_name, uconv_name=uconv_name):
            _, utf_8 = files(folder)
            return {"ours": [kx, "convert", "-f", "utf-8", "-t", number, utf_8],
                    "iconv": ["iconv", "-f", "UTF-8", "-t", iconv_name, utf_8],
                    "uconv": ["uconv", "-b", "65536", "-f", "UTF-8", "-t", uconv_name, utf_8]}

        yield Row(f"kx-convert-to-utf-8/{language}-{number}/file", to_utf_8)
        yield Row(f"kx-convert-from-utf-8/{language}-{number}/file", from_utf_8)


def letter_rows(kx, corpus, size):
    """The other commands beside kx convert, from and to the same forms."""
    for job, command, language, page, form in (
            ("kx-case", ["case", "upper"], "fr", "cp1252", "1252"),
            ("kx-width", ["width", "double"], "ja", "cp932", "932"),
            ("kx-han", ["han", "gb"], "zh", "cp950", "950")):
        def entrants(folder, command=command, language=language, page=page, form=form):
            text = characters_of(corpus, language, page)
            native = repeat(folder / f"{language}-{form}", text.encode(page), size)
            forms = ["-c", "-f", form, "-t", "utf-8", native]
            return {"ours": [kx, *command, *forms], "kx-convert": [kx, "convert", *forms]}

        yield Row(f"{job}/{language}-{form}/file", entrants, same=None)

    def strip(folder):
        text = characters_of(corpus, "fr", "cp1252")
        stream = subprocess.run([kx, "convert", "-f", "utf-8", "-t", "stream"], input=text.encode(), check=True,
                                stdout=subprocess.PIPE).stdout
        path = repeat(folder / "fr-stream", stream, size)
        return {"ours": [kx, "strip", "--keep=hard", "-t", "utf-8", path],
                "kx-convert": [kx, "convert", "-f", "stream", "-t", "utf-8", path]}

    yield Row("kx-strip/fr-stream/file", strip, same=None)


def environment_of(locale, folder):
    """With a locale of the C library that is made for this run; its sources are Debian's."""
    if locale == "C":
        return {**os.environ, "LC_ALL": "C.UTF-8"}
    name = f"{locale}.UTF-8"
    subprocess.run(["localedef", "--no-archive", "-i", locale, "-f", "UTF-8", folder / name], check=True)
    return {**os.environ, "LOCPATH": str(folder), "LC_ALL": name}


def lines_of_words(path, words):
    choose = random.Random(1).choices
    with open(path, "w", encoding="utf-8") as file:
        for _ in range(LINES):
            file.write(" ".join(choose(words, k=WORDS_A_LINE)) + "\n")
    return str(path)


def sort_rows(kx, corpus):
    for code, locale in LOCALES.items():
        def entrants(folder, code=code):
            path = lines_of_words(folder / f"lines-{code}",
                                  (corpus / f"words-{code}.txt").read_text("utf-8").split())
            return {"ours": [kx, "sort", "-l", code, path], "sort": ["sort", "--parallel=1", "-S", "4G", path]}

        yield Row(f"kx-sort/{code}/lines", entrants, digest_of_lines, locale)


class MemoryLine(table.Line):
    """The most memory that ours took, in sizes of the input."""

    def __init__(self, name, memory, input_size, goal):
        super().__init__(name, {}, goal, at_least=False)
        self.memory = memory.median / MEBIBYTE
        self.ratio = memory.median / input_size

    def cells(self):
        cells = super().cells()
        cells[1:4] = [f"{self.memory:.0f} MiB", "input", ""]
        return cells


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("filters", nargs="*", metavar="FILTER", help="rows to run, as for table.py")
    parser.add_argument("--build", default="build/release", help="build folder (default: %(default)s)")
    parser.add_argument("--size", type=int, default=256, help="of the files, in MiB (default: %(default)s)")
    parser.add_argument("--repetitions", type=int, default=3, help="of each entrant (default: %(default)s)")
    parser.add_argument("--markdown", metavar="PAGE", help="write the table into that page, between its markers")
    arguments = parser.parse_args()

    kx = str(Path(arguments.build).resolve() / "kx")
    corpus = Path(arguments.build) / "bench" / "corpus"
    goals = table.read_goals(has_vbmi=True)  # none of these is halved
    lines = []
    size = arguments.size * MEBIBYTE
    for row in (*conversion_rows(kx, corpus, size), *letter_rows(kx, corpus, size), *sort_rows(kx, corpus)):
        if arguments.filters and not any(re.search(f, row.name) for f in arguments.filters):
            continue
        if sys.stderr.isatty():
            print(f"\r\033[K{row.name}", end="", file=sys.stderr, flush=True)
        with tempfile.TemporaryDirectory(dir=Path(arguments.build).resolve() / "bench") as name:
            folder = Path(name)
            commands = row.entrants(folder)
            times, memory = measure(row, commands, environment_of(row.locale, folder), arguments.repetitions)
            lines.append(table.Line(row.name, times, goals.get(row.name)))
            name = row.name.replace("kx-sort/", "kx-sort-memory/")
            if name in goals and name != row.name:
                lines.append(MemoryLine(name, memory, os.path.getsize(commands["ours"][-1]), goals[name]))
    if sys.stderr.isatty():
        print("\r\033[K", end="", file=sys.stderr)
    intro = f"{table.processor()[0]}, files of {arguments.size} MiB or of a million lines, medians of {arguments.repetitions}."
    last = table.verdict(lines)
    print(intro, *table.plain_table(lines), last, sep="\n")
    if arguments.markdown:
        table.write_markdown(arguments.markdown, "tool", intro, lines, last)


if __name__ == "__main__":
    main()
