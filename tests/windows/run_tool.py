#!/usr/bin/env python3
"""run_tool.py WINDOWS_BUILD PORTABLE_BUILD: the demo with kx.exe tells what it tells with the portable tool."""
import pathlib
import subprocess
import sys

import wine

DEMO = pathlib.Path(__file__).resolve().parents[2] / "examples" / "demo.sh"


def demo(tool, environment=None):
    return subprocess.run([DEMO, tool], capture_output=True, env=environment, check=False, timeout=600)


def main():
    windows, portable = (pathlib.Path(build).resolve() for build in sys.argv[1:])
    starter = windows / "kx-under-wine"
    starter.write_text(f'#!/bin/sh\nexec {wine.WINE} "{windows}/kx.exe" "$@"\n', encoding="utf-8")
    starter.chmod(0o755)
    real, ours = demo(starter, wine.environment(windows, "en_US")), demo(portable / "kx")
    told = real.stdout.replace(bytes(starter), bytes(portable / "kx"))  # the demo names the tool at its end
    if (real.returncode, told) != (0, ours.stdout) or ours.returncode != 0:
        sys.exit(f"the demos differ:\n{(real.stdout + real.stderr).decode(errors='replace')}")
    print(f"the demo with kx.exe: {len(told.splitlines())} lines alike")
    return 0


if __name__ == "__main__":
    sys.exit(main())
