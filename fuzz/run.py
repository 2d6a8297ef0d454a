#!/usr/bin/env python3
"""run.py [--seconds N | --valgrind] BUILD [TARGET...]: runs the fuzz targets in turn.

With libFuzzer, half of the time with the kernels that the processor has and half with the plain ones. New inputs are
kept in BUILD/fuzz/found, so that the next run goes on from there. What makes a target fail lies in BUILD/fuzz/failed;
it belongs, under a name that says what was wrong, into fuzz/regressions once it is mended.
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
TARGETS = ("conversions", "text", "streams", "strings", "collation", "settings", "links", "tool", "detect")
# detect asks for 600 KiB at each input; a run under the sanitizers keeps freed memory for a while.
LIMITS = ["-max_len=4096", "-timeout=60", "-rss_limit_mb=4096", "-print_final_stats=1"]


def fuzz(build, target, seconds, corpus):
    """True when nothing was found."""
    found, failed = (build / "fuzz" / name / target for name in ("found", "failed"))
    for folder in (found, failed):
        folder.mkdir(parents=True, exist_ok=True)
    good = True
    for kernels in ("best", "plain"):
        command = [build / f"fuzz_{target}", *LIMITS, f"-max_total_time={max(1, seconds // 2)}",
                   f"-artifact_prefix={failed}/"]
        dictionary = HERE / "dictionaries" / f"{target}.dict"
        if dictionary.exists():
            command.append(f"-dict={dictionary}")
        if target == "tool":  # whose own messages say nothing here
            command.append("-close_fd_mask=3")
        regressions = [folder for folder in [HERE / "regressions" / target] if folder.is_dir()]
        environment = {key: value for key, value in os.environ.items() if key != "KXSTR_KERNELS"}
        if kernels == "plain":
            environment["KXSTR_KERNELS"] = "plain"
        run = subprocess.run([*command, found, corpus / target, *regressions], env=environment, text=True,
                             errors="replace", stderr=subprocess.PIPE, check=False)
        runs = re.search(r"number_of_executed_units: (\d+)", run.stderr)
        progress = re.findall(r"cov: (\d+) ft: (\d+)", run.stderr)
        print(f"{target:12} {kernels:6} {int(runs[1]) if runs else 0:10} runs, edges and features "
              f"{'/'.join(progress[-1]) if progress else '-'}{'' if run.returncode == 0 else ', FAILED'}", flush=True)
        if run.returncode != 0:
            print(run.stderr[-4000:])
            good = False
    return good


def valgrind(build, target, corpus):
    """The vector kernels read whole blocks, and valgrind takes what lies behind the text in the last one for a fault."""
    regressions = [folder for folder in [HERE / "regressions" / target] if folder.is_dir()]
    command = ["valgrind", "--quiet", "--error-exitcode=9", f"--suppressions={HERE}/valgrind.supp",
               build / "fuzz_replay", target, corpus / target, *regressions]
    run = subprocess.run(command, env={**os.environ, "KXSTR_KERNELS": "plain"}, text=True, errors="replace",
                         stderr=subprocess.PIPE, check=False)
    print(f"{target:12} {'clean' if run.returncode == 0 else 'FAILED'}", flush=True)
    if run.returncode != 0:
        print("\n".join(line for line in run.stderr.splitlines() if "==" in line or "hold" in line))
    return run.returncode == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--valgrind", action="store_true")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("targets", nargs="*", metavar="TARGET")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    corpus = build / "fuzz" / "corpus"
    subprocess.run([sys.executable, HERE / "make_corpus.py", corpus], check=True)
    good = True
    for target in arguments.targets or TARGETS:
        if arguments.valgrind:
            good = valgrind(build, target, corpus) and good
        else:
            good = fuzz(build, target, arguments.seconds, corpus) and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
