#!/usr/bin/env python3
"""Turns the tables of data/ into the C++ of src/tables/ (a few: of another folder).

    gen_tables.py            writes the C++ files that have changed
    gen_tables.py --check    writes nothing; says where committed C++ and data differ, and exits with 1

Each module in tools/families/ is one family of tables. It has a function generate(data), which gets the path of the
data folder and returns a dictionary: path below src/tables/ (or below its FOLDER, if it names one) -> text of the file.
"""
import argparse
import importlib
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent


def families():
    sys.path.insert(0, str(HERE))
    for path in sorted((HERE / "families").glob("*.py")):
        if not path.stem.startswith("_"):
            yield importlib.import_module(f"families.{path.stem}")


def first_difference(old, new):
    old_lines, new_lines = old.splitlines(), new.splitlines()
    for number, (have, want) in enumerate(zip(old_lines, new_lines), 1):
        if have != want:
            return f"differs at line {number}: has '{have.strip()}', data gives '{want.strip()}'"
    return f"has {len(old_lines)} lines, data gives {len(new_lines)}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, default=HERE.parent, help="the project's folder")
    parser.add_argument("--data", type=pathlib.Path, help="read this data folder instead of ROOT/data")
    parser.add_argument("--check", action="store_true", help="compare only")
    options = parser.parse_args()
    differences = 0
    for family in families():
        for name, text in family.generate(options.data or options.root / "data").items():
            path = options.root / getattr(family, "FOLDER", "src/tables") / name
            old = path.read_text(encoding="utf-8") if path.exists() else ""
            if old == text:
                continue
            differences += 1
            if options.check:
                print(f"{name}: {first_difference(old, text)}")
            else:
                path.write_text(text, encoding="utf-8")
                print(f"wrote {name}")
    return 1 if options.check and differences else 0


if __name__ == "__main__":
    sys.exit(main())
