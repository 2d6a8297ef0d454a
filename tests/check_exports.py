#!/usr/bin/env python3
"""check_exports.py LIST LIBRARY: fails unless the library, an ELF library or a DLL, exports exactly the names of the
list. A DLL lacks the names that the list marks as portable."""
import re
import subprocess
import sys


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def exports_of_elf(library):
    symbols = (line.split() for line in output_of("nm", "-D", "--defined-only", library).splitlines())
    # Kind A is the version node itself.
    return {fields[2].split("@")[0] for fields in symbols if len(fields) == 3 and fields[1] != "A"}


def exports_of_dll(library):
    table = output_of("objdump", "-p", library).partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    return set(re.findall(r"^\s*\[ *\d+\] (?:\+base\[ *\d+\] +[0-9a-f]+ )?(\S+)$", table, re.MULTILINE))


def main():
    list_path, library = sys.argv[1:]
    is_dll = library.endswith(".dll")
    with open(list_path, encoding="utf-8") as lines:
        entries = [line.split() for line in lines if line.strip() and not line.startswith("#")]
    wanted = {entry[0] for entry in entries if not (is_dll and "portable" in entry[1:])}
    exported = exports_of_dll(library) if is_dll else exports_of_elf(library)
    for name in sorted(wanted - exported):
        print(f"not exported: {name}")
    for name in sorted(exported - wanted):
        print(f"exported, but not in the list: {name}")
    if not exported:
        print("the library exports nothing")
    return 0 if exported and exported == wanted else 1


if __name__ == "__main__":
    sys.exit(main())
