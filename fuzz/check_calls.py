#!/usr/bin/env python3
"""check_calls.py: fails when an exported function or table is used by no fuzz target."""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).parent
names = [
    line.split()[0]
    for line in (HERE.parent / "docs/exports.txt").read_text().splitlines()
    if line and not line.startswith("#")
]
code = "".join(re.sub(r"//.*", "", path.read_text()) for path in sorted(HERE.glob("*.cpp")))
code = re.sub(r'"(?:\\.|[^"\\])*"', '""', code)
unused = [name for name in names if not re.search(rf"\b{name}\b", code)]
for name in unused:
    print(f"{name} is used by no fuzz target")
print(f"{len(names)} names, {len(unused)} without a fuzz target")
sys.exit(1 if unused else 0)
