#!/usr/bin/env python3
"""compare_conversions.py WINDOWS_BUILD PORTABLE_BUILD: holds the portable code page tables against the answers of the
real conversions, code by code: every byte, every pair of bytes and every unit of each page, lead bytes, character sets
and languages. The differences must be those that docs/platform.md gives reasons for, each of them and no others."""
import pathlib
import subprocess
import sys

import wine

PAGES = """437 708 737 775 850 852 855 857 860 861 862 863 864 865 866 869 874 1250 1251 1252 1253 1254 1255 1256 1257
1258 10001 28591 28592 28596 28597 28598 932 936 949 950""".split()
EXPECTED = {"page 10001", "language 081A", "language 0C1A"}


def subject(line):
    kind, number = line.split()[:2]
    return f"language {number}" if kind == "language" else f"page {number}"


def main():
    windows, portable = (pathlib.Path(build).resolve() for build in sys.argv[1:])
    real = wine.run(windows, "en_US", "./dump_conversions.exe", *PAGES)
    if real.returncode != 0 or real.stderr:
        sys.exit(f"dump_conversions: exit status {real.returncode}\n{real.stderr.decode(errors='replace')}")
    ours = subprocess.run([portable / "dump_portable", *PAGES], check=True, capture_output=True)
    theirs_lines = set(real.stdout.decode("ascii").split("\n")) - {""}
    theirs_lines = {line.rstrip("\r") for line in theirs_lines}
    ours_lines = set(ours.stdout.decode("ascii").splitlines())
    different = theirs_lines ^ ours_lines
    found = {subject(line) for line in different}
    for line in sorted(line for line in different if subject(line) not in EXPECTED):
        print(f"only {'ours' if line in ours_lines else 'Windows'}: {line}")
    for missing in sorted(EXPECTED - found):
        print(f"no difference any more: {missing}")
    print(f"{len(theirs_lines & ours_lines)} answers alike, {len(different)} apart in {', '.join(sorted(found))}")
    return 0 if found == EXPECTED and len(theirs_lines) > 100_000 else 1


if __name__ == "__main__":
    sys.exit(main())
