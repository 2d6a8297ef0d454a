#!/usr/bin/env python3
"""Holds the double-byte pages of data/windows/ against the mappings that come with Python, code by code."""
import pathlib
import sys

root = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(root / "tools"))
from families.windows import read_double_byte_page  # noqa: E402


def decode(number, code):
    try:
        text = (bytes([code]) if code < 0x100 else code.to_bytes(2, "big")).decode(f"cp{number}")
    except UnicodeDecodeError:
        return None
    return ord(text) if len(text) == 1 else None


def is_ours_to_choose(page, code, published):
    """What the published mappings leave open, and the user-defined rows of 950 that Python fills with an extension."""
    return published is None or (page == 950 and 0xC6A1 <= code <= 0xC8FE)


faults, compared = [], 0
for number in (932, 936, 949, 950):
    page = read_double_byte_page(root / "data" / "windows" / f"{number}.txt")
    for code in range(0x10000):
        published, ours = decode(number, code), page.units.get(code)
        if is_ours_to_choose(number, code, published):
            if ours is not None and not 0xE000 <= ours <= 0xF8FF and code != 0x80:
                faults.append(f"{number}: {code:X} is {ours:X}, neither published nor private")
        elif ours != published:
            faults.append(f"{number}: {code:X} is {ours}, published {published}")
        else:
            compared += 1
print("\n".join(faults) if faults else f"{compared} codes as published")
sys.exit(1 if faults or compared < 50000 else 0)
