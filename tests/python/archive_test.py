"""examples/archive_dask.py on two worker processes, one of which is killed on the way, and after a stop of all."""
import collections
import importlib.util
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FILES = 1000


class Archive(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.source, self.out = self.folder / "in", self.folder / "out"
        texts = [path for path in sorted((ROOT / "examples" / "texts").glob("*.txt")) if path.stem[-3:] not in ("437", "850")]
        for number in range(FILES):
            text = texts[number % len(texts)]
            target = self.source / str(number % 40) / f"{number}.txt"
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(text.read_bytes() * (1 + number % 5))
        (self.source / "mark.txt").write_bytes("\ufeffě".encode())
        (self.source / "program").write_bytes(bytes(range(256)) * 10)
        (self.source / "unsure").write_bytes(b"a\x82")
        (self.source / "broken.txt").write_bytes(("ě" * 600000).encode() + b"\xff")
        self.report = self.out / "report.jsonl"

    def start(self):
        command = [sys.executable, ROOT / "examples" / "archive_dask.py", "-O", self.out, "--workers", "2", "--batch", "10",
                   self.source]  # fmt: skip
        process = subprocess.Popen(command, stderr=subprocess.PIPE, text=True, start_new_session=True)
        self.addCleanup(lambda: process.poll() is None and os.killpg(process.pid, signal.SIGKILL))
        said = next(line for line in process.stderr if line.startswith("workers: "))
        workers = [int(worker) for worker in said.split()[1:]]
        self.assertEqual(len(workers), 2)
        return process, workers

    def wait_for_lines(self, process, count):
        """When some of the work is done; and that not all of it is."""
        while (done := self.report.read_bytes().count(b"\n")) < count:
            self.assertIsNone(process.poll())
            time.sleep(0.002)
        self.assertLess(done, FILES)

    def check(self):
        records = [json.loads(line) for line in self.report.read_text("utf-8").splitlines()]
        self.assertEqual(sorted(record["file"] for record in records),
                         sorted(str(path) for path in self.source.rglob("*") if path.is_file()))  # fmt: skip
        kinds = collections.Counter(record["status"].split(":")[0] for record in records)
        self.assertEqual(kinds, {"done": FILES + 1, "binary": 1, "unsure": 1, "failed": 1})
        self.report.unlink()
        # kx takes the same decisions and tells them by status 1.
        expected = self.folder / "expected"
        kx = subprocess.run([os.environ["KX"], "convert", "-f", "auto", "-t", "utf-8", "-r", "-O", expected, self.source],
                            capture_output=True, check=False)  # fmt: skip
        self.assertEqual(kx.returncode, 1)
        ours, theirs = ({path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}
                        for folder in (self.out, expected))  # fmt: skip
        self.assertEqual(ours, theirs)
        for record in records:
            if record["status"] == "done":
                text = ours[pathlib.Path(record["output"]).relative_to(self.out)].decode()
                self.assertEqual(record["characters"], len(text))

    def test_a_worker_is_killed(self):
        process, workers = self.start()
        self.wait_for_lines(process, FILES // 8)
        os.kill(workers[0], signal.SIGKILL)
        process.communicate(timeout=400)
        self.assertEqual(process.returncode, 1)  # some files are no texts
        self.check()

    def test_all_are_killed_and_it_goes_on(self):
        process, _ = self.start()
        self.wait_for_lines(process, FILES // 4)
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        for left in self.out.rglob(".kx-*"):
            left.unlink()
        done = [json.loads(line) for line in self.report.read_text("utf-8").splitlines()[:-1]]
        before = {record["output"]: os.stat(record["output"]).st_ino for record in done if record["status"] == "done"}
        process, _ = self.start()
        self.assertIn(" kept, ", process.communicate(timeout=400)[1])
        self.assertEqual(before, {path: os.stat(path).st_ino for path in before})
        self.check()


if __name__ == "__main__":
    for module in ("dask", "distributed"):
        if importlib.util.find_spec(module) is None:
            print(f"skipped: Debian's python3-{module} is not installed (tools/deps.sh python)")
            sys.exit(77)
    unittest.main()
