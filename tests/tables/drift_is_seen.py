#!/usr/bin/env python3
"""Changes one byte of one code page and one count of a model in a copy of the data and runs the drift check against it, which must fail."""
import pathlib
import shutil
import subprocess
import sys
import tempfile

root = pathlib.Path(__file__).resolve().parent.parent.parent
with tempfile.TemporaryDirectory() as folder:
    data = pathlib.Path(folder) / "data"
    shutil.copytree(root / "data", data)
    page = data / "codepages" / "18857.txt"
    page.write_text(page.read_text(encoding="utf-8").replace("0xA2 0x010B", "0xA2 0x010C"), encoding="utf-8")
    model = data / "detect" / "cs.txt"
    model.write_text(model.read_text(encoding="utf-8").replace("\nq: u ", "\nq: u 9"), encoding="utf-8")
    check = [sys.executable, root / "tools" / "gen_tables.py", "--check", "--data", data]
    done = subprocess.run(check, capture_output=True, text=True, check=False)
print(done.stdout + done.stderr)
print(f"exit status {done.returncode}")
