#!/usr/bin/python3
"""Converts an archive of texts in old code pages to UTF-8, on several processes or machines, by Dask.

The code page of each file is detected; its text goes to the file of the same name below OUT. The report is one JSON
object a line: file, output, page, language, share, bytes, characters, status. The status is "done", "unsure" (no page
has the share that --least-share asks for), "binary", or "failed: " and why; only "done" has an output.

Nothing is lost and nothing is written twice: an output gets its name when it is complete, so a worker that dies leaves
no half file and another does its work again; and only this process writes the report, a line for each file. After a
stop the same command goes on where it was: files that the report has as done, and that have not changed, are kept.
"""
from __future__ import annotations

import argparse
import codecs
import json
import os
import sys
import tempfile
import uuid
from collections.abc import Iterator
from pathlib import Path
from typing import Any

from distributed import Client, LocalCluster, as_completed
from distributed.scheduler import KilledWorker

Record = dict[str, Any]
Job = tuple[str, str]  # input, output

PIECE = 1 << 20  # bytes that are looked at to find the page, and read at once
BATCH_BYTES = 8 << 20


# ---- On the workers ----


def convert_text(source: str, target: str, mark: str, least_share: float) -> Record:
    """One file; its output appears whole or not at all."""
    import kxstr

    record: Record = {"file": source, "status": "done"}
    with open(source, "rb") as data:
        status = os.fstat(data.fileno())
        record.update(bytes=status.st_size, time=status.st_mtime_ns)
        start = data.read(PIECE)
        guess = kxstr.detect(start)
        record.update(page=guess.page, language=guess.language, share=guess.share)
        if guess.codec is None:
            return {**record, "status": "binary"}
        if guess.share < least_share:
            return {**record, "status": "unsure"}
        decoder = codecs.getincrementaldecoder(guess.codec)()
        os.makedirs(os.path.dirname(target), exist_ok=True)
        unfinished = os.path.join(os.path.dirname(target), f".{mark}-{uuid.uuid4().hex}")
        characters = 0
        try:
            with open(unfinished, "xb") as out:
                piece = start
                while True:
                    text = decoder.decode(piece, not piece)
                    if characters == 0 and guess.page.startswith("utf-"):
                        text = text.removeprefix("\ufeff")  # a byte order mark
                    characters += len(text)
                    out.write(text.encode())
                    if not piece:
                        break
                    piece = data.read(PIECE)
                out.flush()
                os.fsync(out.fileno())
            os.replace(unfinished, target)
        finally:
            if os.path.exists(unfinished):
                os.unlink(unfinished)
    return {**record, "output": target, "characters": characters}


def convert_batch(jobs: list[Job], mark: str, least_share: float) -> list[Record]:
    """Some files. One that cannot be converted does not keep the others from it."""
    records = []
    for source, target in jobs:
        try:
            records.append(convert_text(source, target, mark, least_share))
        except OSError as fault:
            # Perhaps only now, or only here.
            records.append({"file": source, "status": f"failed: {fault.strerror or fault}", "again": True})
        except UnicodeError as fault:
            records.append({"file": source, "status": f"failed: {fault}"})
    return records


# ---- In this process ----


def files_below(folder: Path, skipped: Path) -> Iterator[Path]:
    for path, folders, names in os.walk(folder):
        folders[:] = sorted(name for name in folders if (Path(path) / name).resolve() != skipped)
        for name in sorted(names):
            file = Path(path) / name
            if file.is_file() and not file.is_symlink():
                yield file


def jobs_of(operands: list[str], out: Path) -> list[Job]:
    """Each file and its output. ValueError for two with one output, or for an output that is an input."""
    inputs: dict[str, str] = {}
    for operand in operands:
        path = Path(operand)
        files = [(file, file.relative_to(path)) for file in files_below(path, out)] if path.is_dir() else [
            (path, Path(path.name))
        ]  # fmt: skip
        for file, name in files:
            target = str(out / name)
            source = str(file.absolute())
            if inputs.setdefault(target, source) != source:
                raise ValueError(f"{target} would be the output of {inputs[target]} and of {file}")
    for target, source in inputs.items():
        if os.path.exists(target) and os.path.samefile(source, target):
            raise ValueError(f"{target} is an input and an output")
    return [(source, target) for target, source in inputs.items()]


def batches_of(jobs: list[Job], most: int) -> Iterator[list[Job]]:
    batch: list[Job] = []
    size = 0
    for job in jobs:
        try:
            size += os.path.getsize(job[0])
        except OSError:
            pass  # the worker tells
        batch.append(job)
        if len(batch) >= most or size >= BATCH_BYTES:
            yield batch
            batch, size = [], 0
    if batch:
        yield batch


def still_holds(record: Record) -> bool:
    try:
        status = os.stat(record["file"])
        same = (status.st_size, status.st_mtime_ns) == (record["bytes"], record["time"])
        return same and record["status"] == "done" and os.path.exists(record["output"])
    except (OSError, KeyError):
        return False


class Report:
    """A line for each file, each written when it is known."""

    def __init__(self, path: Path) -> None:
        old: dict[str, Record] = {}
        if path.exists():
            for line in path.read_text("utf-8").splitlines():
                try:
                    record = json.loads(line)
                except ValueError:
                    continue  # the last line of a run that was stopped
                old[record["file"]] = record
        self.kept = {file for file, record in old.items() if still_holds(record)}
        self.counts: dict[str, int] = {}
        part = f"{path}.part"
        with open(part, "w", encoding="utf-8") as lines:
            for file in self.kept:
                lines.write(json.dumps(old[file], ensure_ascii=False) + "\n")
        os.replace(part, path)
        self.lines = open(path, "a", encoding="utf-8")  # noqa: SIM115 - for the life of the process

    def add(self, record: Record) -> None:
        record.pop("again", None)
        self.lines.write(json.dumps(record, ensure_ascii=False) + "\n")
        self.lines.flush()
        kind = record["status"].split(":")[0]
        self.counts[kind] = self.counts.get(kind, 0) + 1


def convert(client: Client, jobs: list[Job], report: Report, arguments: argparse.Namespace, mark: str) -> None:
    """Has the workers do the jobs; no more than a few batches for each are under way."""
    tries: dict[str, int] = {}
    waiting = batches_of(jobs, arguments.batch)
    under_way: dict[Any, list[Job]] = {}
    results = as_completed()

    def submit(batch: list[Job]) -> None:
        future = client.submit(convert_batch, batch, mark, arguments.least_share, pure=False)
        under_way[future] = batch
        results.add(future)

    def submit_more() -> None:
        while len(under_way) < 4 * max(1, len(client.scheduler_info()["workers"])):
            batch = next(waiting, None)
            if batch is None:
                return
            submit(batch)

    submit_more()
    for future in results:
        batch = under_way.pop(future)
        outputs = dict(batch)
        try:
            records = future.result()
        except KilledWorker as fault:
            # A file that takes workers with it must not take the others of its batch.
            records = [{"file": source, "status": f"failed: {fault}", "again": len(batch) > 1} for source, _ in batch]
        for record in records:
            file = record["file"]
            tries[file] = tries.get(file, 0) + 1
            if record.get("again") and tries[file] <= arguments.retries:
                submit([(file, outputs[file])])
            else:
                tries.pop(file)
                report.add(record)
        submit_more()


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("path", nargs="*", help="files, and folders of files")
    parser.add_argument("-O", "--out", type=Path, required=True, help="the folder for the texts")
    parser.add_argument("--files-from", help="a file with more names, one a line (-: standard input)")
    parser.add_argument("--report", type=Path, help="default: OUT/report.jsonl")
    parser.add_argument("--scheduler", help="the address of a running scheduler; else workers are started here")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), help="how many are started here")
    parser.add_argument("--least-share", type=float, default=0.75, help="what a page needs to be believed (0.75)")
    parser.add_argument("--retries", type=int, default=2, help="how often a file is tried again (2)")
    parser.add_argument("--batch", type=int, default=100, help="files that a worker gets at once, at most (100)")
    arguments = parser.parse_args()

    names = list(arguments.path)
    if arguments.files_from:
        with open(0 if arguments.files_from == "-" else arguments.files_from, encoding="utf-8") as lines:
            names += [line.rstrip("\n") for line in lines]
    out = arguments.out.resolve()
    out.mkdir(parents=True, exist_ok=True)
    path_of_report = (arguments.report or out / "report.jsonl").absolute()
    try:
        jobs = jobs_of(names, out)
        if str(path_of_report) in {path for job in jobs for path in job}:
            raise ValueError(f"{path_of_report} is the report, and an input or an output")
    except ValueError as fault:
        parser.error(str(fault))
    report = Report(path_of_report)
    jobs = [job for job in jobs if job[0] not in report.kept]

    mark = f"kx-{uuid.uuid4().hex[:8]}"  # of the unfinished files of this run
    with tempfile.TemporaryDirectory() as scratch:
        cluster = None
        if arguments.scheduler is None:
            cluster = LocalCluster(n_workers=arguments.workers, threads_per_worker=1, processes=True,
                                   dashboard_address="127.0.0.1:0", local_directory=scratch, silence_logs=50)  # fmt: skip
        with Client(cluster or arguments.scheduler) as client:
            workers = client.run(os.getpid)
            print(f"workers: {' '.join(str(process) for process in workers.values())}", file=sys.stderr, flush=True)
            convert(client, jobs, report, arguments, mark)
        if cluster is not None:
            cluster.close()
    for unfinished in out.rglob(f".{mark}-*"):  # of workers that were killed
        unfinished.unlink(missing_ok=True)

    counts = {"kept": len(report.kept), **report.counts}
    print(", ".join(f"{count} {kind}" for kind, count in counts.items() if count), file=sys.stderr)
    return 0 if set(report.counts) <= {"done"} else 1


if __name__ == "__main__":
    sys.exit(main())
