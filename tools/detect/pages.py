#!/usr/bin/env python3
"""pages.py KX: writes data/detect/pages.txt, the characters of the upper bytes of every page that can be detected.

KX is the tool, which knows most of the pages; a page with a published mapping in data/mappings/ is taken from there, and
those that the tool does not have from Python's codecs.
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# In the order of preference among pages that decode a text alike, by family; with the cost of a guess that nobody
# would make without evidence, in eighths of a nat (see detect/src/score.cpp).
PAGES = """1252:0 850:4 437:4 iso-8859-1:4 1250:2 852:4 iso-8859-2:6 1251:0 866:2 koi8-r:4 1253:2 737:4 1254:4 857:6
    1255:4 862:6 1256:4 720:8 1257:4 775:6 1258:4 874:4 10001:8 iso-8859-5:12 855:10 iso-8859-7:6 869:8 851:14 333:20
    8510:22 iso-8859-8:6 iso-8859-6:10 864:8 708:16 710:20 895:8 897:16 896:8 860:12 863:12 865:10 861:10 853:16
    8600:24 8601:26 8660:14 1004:24 19000:16 19001:16 koi8-u:6 mac-cyrillic:12"""
CODECS = {"koi8-r": "koi8-r", "iso-8859-5": "iso8859-5", "720": "cp720", "874": "cp874", "koi8-u": "koi8-u",
          "mac-cyrillic": "mac-cyrillic"}
MAPPINGS = {"iso-8859-1": "iso8859_1", "iso-8859-2": "iso8859_2", "iso-8859-6": "iso8859_6", "iso-8859-7": "iso8859_7",
            "iso-8859-8": "iso8859_8", "10001": "mac_roman"}
UPPER = range(0x80, 0x100)


def from_codec(codec):
    characters = [bytes([byte]).decode(codec, "replace") for byte in UPPER]
    return [None if character == "\ufffd" else ord(character) for character in characters]


def from_mapping(path):
    rows = dict(re.findall(r"^0x(\w\w) 0x(\w+)", path.read_text(encoding="utf-8"), flags=re.M))
    return [int(rows[f"{byte:02X}"], 16) if f"{byte:02X}" in rows else None for byte in UPPER]


def from_tool(tool, name):
    characters = []
    for byte in UPPER:
        done = subprocess.run([tool, "convert", "-f", name, "-t", "utf-16le"], input=bytes([byte]), capture_output=True,
                              check=False)
        text = done.stdout.decode("utf-16le")
        characters.append(ord(text) if done.returncode == 0 and len(text) == 1 else None)
    # The upper half has no second hyphen and no second bar: they are what KX text unites with these.
    return [{0x2D: 0xAD, 0x7C: 0xA6}.get(character, character) for character in characters]


def main():
    lines = ["# The pages of one byte a character that can be detected, in the order of preference among those that decode a",
             "# text alike: the name as `kx convert -l` has it, and what it costs to guess the page, in eighths of a nat.",
             "# Then the characters of the bytes 80 to FF, sixteen a line; - for a byte that is undefined.",
             "# Written by tools/detect/pages.py from data/mappings/ and kx; koi8-r, koi8-u, iso-8859-5, 720, 874 and",
             "# mac-cyrillic from Python's codecs."]
    for entry in PAGES.split():
        name, cost = entry.split(":")
        mapping = ROOT / "data" / "mappings" / (MAPPINGS.get(name, "cp" + name) + ".txt")
        if name in CODECS:
            characters = from_codec(CODECS[name])
        else:
            characters = from_mapping(mapping) if mapping.exists() else from_tool(sys.argv[1], name)
        lines += ["", f"page {name} {cost}"]
        for first in range(0, 128, 16):
            row = characters[first:first + 16]
            lines.append(f"{0x80 + first:02X}: " + " ".join("-" if one is None else f"{one:04X}" for one in row))
    (ROOT / "data" / "detect" / "pages.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
