#!/usr/bin/env python3
"""Holds the order of the subsystems: a folder of src/ may include only itself and the folders below it, as src/layers.txt
lists them.

    check_layers.py [--root FOLDER]    prints every include that goes the wrong way, and exits with 1 if there is one
    check_layers.py --picture          prints the list as docs/architecture.md shows it, which is checked as well
"""
import argparse
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# From the bottom up, each a name and what it holds.
LAYER_LINES = [line for line in (ROOT / "src/layers.txt").read_text(encoding="utf-8").splitlines() if line[0] != "#"]
LAYERS = [line.split()[0] for line in LAYER_LINES]
PICTURE = "\n".join("   " + line for line in reversed(LAYER_LINES))
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
            yield f"{path.relative_to(root)}: '{layer}' is not in src/layers.txt"
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
    parser.add_argument("--root", type=pathlib.Path, default=ROOT)
    parser.add_argument("--picture", action="store_true")
    arguments = parser.parse_args()
    if arguments.picture:
        print(PICTURE)
        return 0
    found = list(faults(arguments.root))
    if PICTURE not in (ROOT / "docs/architecture.md").read_text(encoding="utf-8"):
        found.append("docs/architecture.md: the picture differs from src/layers.txt (see --picture)")
    print("\n".join(found) if found else "every include goes downwards")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
