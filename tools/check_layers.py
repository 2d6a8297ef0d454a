#!/usr/bin/env python3
"""Holds the order of the subsystems: a folder of src/ may include only itself and the folders below it.

    check_layers.py [--root FOLDER]    prints every include that goes the wrong way, and exits with 1 if there is one
"""
import argparse
import pathlib
import re
import sys

# From the bottom up; docs/architecture.md shows the picture.
LAYERS = ["tables", "platform", "frame", "registry", "codepage", "unicode", "forms", "strops", "collate", "prim"]
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
# Only src/platform may know the system.
SYSTEM_HEADERS = re.compile(r"^(windows\.h|unistd\.h|fcntl\.h|errno\.h|locale\.h|clocale|dirent\.h|sys/.*|pthread\.h)$")


def faults(root):
    src = root / "src"
    for path in sorted(src.rglob("*")):
        if path.suffix not in (".h", ".cpp", ".inc"):
            continue
        layer = path.relative_to(src).parts[0]
        if layer not in LAYERS:
            yield f"{path.relative_to(root)}: '{layer}' is no known subsystem"
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            style, name = match.groups()
            where = f"{path.relative_to(root)}:{number}"
            if style == "<" and layer != "platform" and SYSTEM_HEADERS.match(name):
                yield f"{where}: system header <{name}> outside src/platform"
            if style == '"':
                target = name.split("/")[0]
                if "/" not in name or target not in LAYERS:
                    yield f'{where}: "{name}" does not name a subsystem'
                elif LAYERS.index(target) > LAYERS.index(layer):
                    yield f"{where}: {layer} includes {target}, which lies above it"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    found = list(faults(parser.parse_args().root))
    print("\n".join(found) if found else "every include goes downwards")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
