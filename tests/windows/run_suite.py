#!/usr/bin/env python3
"""run_suite.py BUILD: runs the tests of a Windows build under Wine, once on each system that they know.

Fails when a test fails, and when a test found none of the systems that it wants on any of the runs."""
import json
import pathlib
import sys

import wine

LOCALES = ["en_US", "ja_JP", "ko_KR", "zh_TW", "zh_CN", "ar_SA", "he_IL", "ru_RU"]


def run_suite(build, locale):
    """Runs all tests; gives (tests that ran, tests that found no system of theirs, tests that failed)."""
    report = build / f"tests_{locale}.json"
    report.unlink(missing_ok=True)
    wine.forget_settings(build, locale)
    result = wine.run(build, locale, "./kxstr_tests.exe", f"--gtest_output=json:{report.name}", timeout=1800)
    if not report.exists():
        sys.exit(f"{locale}: the tests did not come to their end, exit status {result.returncode}\n"
                 f"{result.stdout.decode(errors='replace')}")
    ran, elsewhere, failed = set(), set(), {}
    for suite in json.loads(report.read_text(encoding="utf-8", errors="replace"))["testsuites"]:
        for test in suite["testsuite"]:
            name = f"{suite['name']}.{test['name']}"
            if "failures" in test:
                failed[name] = [failure["failure"] for failure in test["failures"]]
            skipped = test["result"] == "SKIPPED" or ("elsewhere" in test and "here" not in test)
            (elsewhere if skipped else ran).add(name)
    if result.returncode != 0 and not failed:
        failed["the program"] = [f"exit status {result.returncode}"]
    return ran, elsewhere, failed


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    ran_somewhere, known, faults = set(), set(), False
    for locale in LOCALES:
        ran, elsewhere, failed = run_suite(build, locale)
        print(f"{locale}: {len(ran)} tests ran, {len(elsewhere)} want other systems, {len(failed)} failed", flush=True)
        for name, messages in failed.items():
            print("\n".join([f"{locale}: {name} failed", *messages[:3]]))
        ran_somewhere |= ran
        known |= ran | elsewhere
        faults |= bool(failed)
    for name in sorted(known - ran_somewhere):
        print(f"ran nowhere: {name}")
    print(f"{len(ran_somewhere)} of {len(known)} tests ran on at least one system")
    return 1 if faults or known != ran_somewhere or not known else 0


if __name__ == "__main__":
    sys.exit(main())
