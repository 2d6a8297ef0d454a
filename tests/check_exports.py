#!/usr/bin/env python3
"""check_exports.py LIST LIBRARY: fails unless the library exports exactly the names of the list."""
import subprocess
import sys


def main():
    list_path, library = sys.argv[1:]
    with open(list_path, encoding="utf-8") as lines:
        wanted = {line.split()[0] for line in lines if line.strip() and not line.startswith("#")}
    listing = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    symbols = (line.split() for line in listing.splitlines())
    # Kind A is the version node itself.
    exported = {fields[2].split("@")[0] for fields in symbols if len(fields) == 3 and fields[1] != "A"}
    for name in sorted(wanted - exported):
        print(f"not exported: {name}")
    for name in sorted(exported - wanted):
        print(f"exported, but not in the list: {name}")
    if not exported:
        print("the library exports nothing")
    return 0 if exported and exported == wanted else 1


if __name__ == "__main__":
    sys.exit(main())
