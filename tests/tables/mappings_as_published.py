#!/usr/bin/env python3
"""Holds data/mappings/ against the mappings that come with Python, byte by byte."""
import pathlib
import sys

DEVIATIONS = {("mac_roman", 0xDB): "\u00a4"}  # the euro sign took this place later

folder = pathlib.Path(__file__).resolve().parent.parent.parent / "data" / "mappings"
paths = sorted(folder.glob("*.txt"))
faults = [] if paths else ["no mappings found"]
for path in paths:
    rows = (line.split("#")[0].split() for line in path.read_text(encoding="utf-8").splitlines())
    ours = {int(row[0], 16): chr(int(row[1], 16)) for row in rows if row}
    for byte in range(0x80, 0x100):
        published = bytes([byte]).decode(path.stem, errors="ignore") or None
        if ours.get(byte) != DEVIATIONS.get((path.stem, byte), published):
            faults.append(f"{path.name}: {byte:02X} is {ours.get(byte)!r}, published {published!r}")
print("\n".join(faults) if faults else f"{len(paths)} mappings as published")
sys.exit(1 if faults else 0)
