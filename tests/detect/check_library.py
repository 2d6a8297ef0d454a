#!/usr/bin/env python3
"""check_library.py LIBRARY HEADER: libkxdetect is below 400 KiB, exports what its header has, and does not need kxstr."""
import re
import subprocess
import sys
from pathlib import Path

library, header = map(Path, sys.argv[1:])
wanted = set(re.findall(r"^KXDETECT_API .*?(\w+)\(", header.read_text(encoding="utf-8"), flags=re.M))
listed = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
symbols = (line.split() for line in listed.splitlines())
exported = {name.split("@")[0] for _, kind, name in symbols if kind != "A"}  # which is the version itself
needed = subprocess.run(["readelf", "-d", library], capture_output=True, text=True, check=True).stdout
size = library.resolve().stat().st_size
faults = [f"missing: {name}" for name in sorted(wanted - exported)] + [f"too many: {name}" for name in
                                                                      sorted(exported - wanted)]
if size >= 400 * 1024:
    faults.append(f"{size} bytes")
if "libkxstr" in needed or not wanted:
    faults.append("needs libkxstr, or the header has no function")
print("\n".join(faults))
sys.exit(bool(faults))
