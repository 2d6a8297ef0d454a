#!/usr/bin/env python3
"""Compares `kx convert -f PAGE -t utf-8` with iconv(3), code by code, for every code page with a published mapping.

    compare_iconv.py KX                  prints every difference
    compare_iconv.py KX --check DOC      fails unless DOC holds exactly this list
    compare_iconv.py KX --update DOC     puts the list into DOC

The list names the C library, because what iconv knows differs between libraries. With another C library --check has
nothing to compare and exits with 77.
"""
import argparse
import ctypes
import itertools
import pathlib
import re
import subprocess
import sys

SINGLE = {page: f"CP{page}" for page in """437 737 775 850 852 855 857 860 861 862 863 864 865 866 869
          1250 1251 1252 1253 1254 1255 1256 1257 1258""".split()}
SINGLE |= {f"iso-8859-{part}": f"ISO-8859-{part}" for part in (1, 2, 6, 7, 8)} | {"10001": "MACINTOSH"}
DOUBLE = {"932": "CP932", "936": "CP936", "949": "CP949", "950": "CP950"}
LEAD_BYTES = {page: range(0x81, 0xFF) for page in DOUBLE} | {"932": [*range(0x81, 0xA0), *range(0xE0, 0xFD)]}
TRAIL_BYTES = range(0x40, 0xFF)

BEGIN, END = "<!-- list: begin -->\n", "<!-- list: end -->\n"

LIBC = ctypes.CDLL(None, use_errno=True)


def c_library():
    try:
        LIBC.gnu_get_libc_version.restype = ctypes.c_char_p
        return f"GNU C library {LIBC.gnu_get_libc_version().decode()}"
    except AttributeError:
        return "another C library"


class Iconv:
    """iconv(3) from one code page to UTF-8, one code at a time."""

    def __init__(self, name):
        LIBC.iconv_open.restype = ctypes.c_void_p
        LIBC.iconv.restype = ctypes.c_size_t
        LIBC.iconv.argtypes = [ctypes.c_void_p] + [ctypes.c_void_p] * 4
        self.handle = LIBC.iconv_open(b"UTF-8", name.encode())
        if self.handle == ctypes.c_void_p(-1).value:
            sys.exit(f"iconv does not know {name}")

    def convert(self, code):
        source = ctypes.create_string_buffer(code, len(code))
        target = ctypes.create_string_buffer(16)
        at, left = ctypes.c_void_p(ctypes.addressof(source)), ctypes.c_size_t(len(code))
        out, room = ctypes.c_void_p(ctypes.addressof(target)), ctypes.c_size_t(16)
        LIBC.iconv(self.handle, None, None, None, None)
        result = LIBC.iconv(self.handle, ctypes.byref(at), ctypes.byref(left), ctypes.byref(out), ctypes.byref(room))
        if result == ctypes.c_size_t(-1).value or left.value:
            return ""
        # Some conversions hold back a letter that an accent may follow.
        LIBC.iconv(self.handle, None, None, ctypes.byref(out), ctypes.byref(room))
        return target.raw[:16 - room.value].decode()


def kx_convert(kx, page, codes):
    """The text of each code; empty where there is none. A line each, so that one run does them all."""
    result = subprocess.run([kx, "convert", "-c", "-f", page, "-t", "utf-8"], input=b"".join(c + b"\n" for c in codes),
                            capture_output=True, check=True)
    return result.stdout.decode().split("\n")[:-1]


def differences(kx, page, name):
    codes = [bytes([byte]) for byte in range(0x100) if byte != ord("\n")]
    codes += [bytes(pair) for pair in itertools.product(LEAD_BYTES.get(page, []), TRAIL_BYTES)]
    iconv = Iconv(name)
    for code, ours in zip(codes, kx_convert(kx, page, codes), strict=True):
        theirs = iconv.convert(code)
        if ours != theirs:
            yield int.from_bytes(code, "big"), ours, theirs


def shown(text):
    return " ".join(f"U+{ord(character):04X}" for character in text) or "none"


def is_private(text):
    return len(text) == 1 and "\ue000" <= text <= "\uf8ff"


def summary(difference):
    """How double-byte codes are told that only one side has: by their number. Nothing for other differences."""
    code, ours, theirs = difference
    if code > 0xFF and theirs and not ours:
        return "kx none            iconv has {} of them"
    if code > 0xFF and is_private(ours) and not theirs:
        return "kx has {} of them, for private use; iconv none"
    return None


def follows(one, other):
    """Whether the two differences make one line: they count up, or are told by their number."""
    def counts_up(a, b):
        return a == b == "" or (len(a) == len(b) == 1 and ord(b) - ord(a) == other[0] - one[0])
    if summary(one):
        return summary(one) == summary(other)
    return other[0] - one[0] == 1 and counts_up(one[1], other[1]) and counts_up(one[2], other[2])


def runs(found):
    """Lists of differences that make one line."""
    run = []
    for difference in found:
        if run and not follows(run[-1], difference):
            yield run
            run = []
        run.append(difference)
    if run:
        yield run


def line(run):
    def side(index):
        first, last = shown(run[0][index]), shown(run[-1][index])
        return first if first == last else f"{first}..{last[2:]}"
    digits = 2 if run[0][0] < 0x100 else 4
    codes = f"{run[0][0]:0{digits}X}" + (f"..{run[-1][0]:0{digits}X}" if len(run) > 1 else "")
    told = summary(run[0]) if len(run) > 1 else None
    return f"{codes:11} " + (told.format(len(run)) if told else f"kx {side(1):15} iconv {side(2)}")


def listing(kx):
    """A line for each difference, under the code pages that have it."""
    pages_of = {}
    for page, name in (SINGLE | DOUBLE).items():
        for run in runs(differences(kx, page, name)):
            pages_of.setdefault(line(run), []).append(page)
    blocks = {}
    for entry, pages in pages_of.items():
        blocks.setdefault(" ".join(pages), []).append(entry)
    yield c_library()
    for pages, entries in sorted(blocks.items(), key=lambda block: -block[0].count(" ")):
        yield ""
        yield f"{pages}:"
        yield from (f"    {entry}" for entry in entries)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kx")
    parser.add_argument("--check", type=pathlib.Path)
    parser.add_argument("--update", type=pathlib.Path)
    arguments = parser.parse_args()

    text = "".join(entry + "\n" for entry in listing(arguments.kx))
    if not arguments.check and not arguments.update:
        print(text, end="")
        return 0

    path = arguments.check or arguments.update
    document = path.read_text(encoding="utf-8")
    before, rest = document.split(BEGIN)
    listed, after = rest.split(END)
    if arguments.update:
        path.write_text(f"{before}{BEGIN}```\n{text}```\n{END}{after}", encoding="utf-8")
        return 0
    listed = re.sub(r"^```\n", "", listed, flags=re.MULTILINE)
    if listed.split("\n")[0] != c_library():
        print(f"the list is for the {listed.splitlines()[0]}; this is the {c_library()}")
        return 77
    for entry in sorted(set(text.splitlines()) ^ set(listed.splitlines())):
        print(("not in the list: " if entry in text else "only in the list: ") + entry)
    return 0 if text == listed else 1


if __name__ == "__main__":
    sys.exit(main())
