"""The demo with kx.exe tells what it tells with the portable tool, and the tool sorts a file of any name alike."""
import os
import pathlib
import shutil
import subprocess

from wine import WINE

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
# In no Western code page.
NAME = "hodin\u00e1\u0159.txt"


def run(*command, environment=None):
    result = subprocess.run(command, capture_output=True, env=environment, check=False, timeout=600)
    return result.returncode, result.stdout, result.stderr


def check(wine, portable):
    # The demo starts the tool by one name.
    starter = wine.build / "kx-under-wine"
    starter.write_text(f'#!/bin/sh\nexec {WINE} "{wine.build}/kx.exe" "$@"\n', encoding="utf-8")
    starter.chmod(0o755)
    ours = portable / "kx"
    alike = True
    text = shutil.copy(EXAMPLES / "texts" / "czech-852.txt", wine.build / NAME)
    for command in ((EXAMPLES / "demo.sh", "KX"), ("KX", "sort", "-l", "CS", "-f", "852", text)):
        on_windows, here = (
            run(*(tool if word == "KX" else word for word in command), environment=environment)
            for tool, environment in ((starter, wine.environment("en_US")), (ours, os.environ | {"LC_ALL": "C"})))
        told = on_windows[1].replace(bytes(starter), bytes(ours))  # the demo names the tool at its end
        same = (on_windows[0], told) == (0, here[1]) and here[0] == 0
        print(f"{command[0] if command[0] != 'KX' else 'kx sort'}: {len(told.splitlines())} lines "
              f"{'alike' if same else 'that differ'}")
        if not same:
            print((on_windows[1] + on_windows[2]).decode(errors="replace"))
        alike &= same
    return alike
