#!/usr/bin/env python3
"""run_all.py WINDOWS_BUILD PORTABLE_BUILD [CHECK]...: what `make test-windows` runs, in one Wine. A check is a module of
this folder: run_suite, run_tool, compare_conversions, exchange_registry; without one it is all of them."""
import importlib
import pathlib
import sys
import time

from wine import Wine

CHECKS = ("run_suite", "run_tool", "compare_conversions", "exchange_registry")


def main():
    windows, portable = (pathlib.Path(build).resolve() for build in sys.argv[1:3])
    failed = []
    with Wine(windows) as wine:
        for name in sys.argv[3:] or CHECKS:
            start = time.monotonic()
            print(f"== {name}", flush=True)
            if not importlib.import_module(name).check(wine, portable):
                failed.append(name)
            print(f"== {name}: {'FAILED' if name in failed else 'passed'}, {time.monotonic() - start:.0f} s", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
