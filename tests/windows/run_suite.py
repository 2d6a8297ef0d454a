"""Runs the tests of a Windows build under Wine, once on each system that they know.

Fails when a test fails, and when a test found none of the systems that it wants on any of the runs."""
import json

LOCALES = ["en_US", "ja_JP", "ko_KR", "zh_TW", "zh_CN", "ar_SA", "he_IL", "ru_RU"]


def run_suite(wine, locale):
    """Runs all tests; gives (tests that ran, tests that found no system of theirs, messages by test that failed)."""
    report = wine.build / f"tests_{locale}.json"
    report.unlink(missing_ok=True)
    wine.forget_settings(locale)
    result = wine.run(locale, "./kxstr_tests.exe", f"--gtest_output=json:{report.name}", timeout=1800)
    if not report.exists():
        return set(), set(), {"the program": [f"exit status {result.returncode} before its end",
                                              result.stdout.decode(errors="replace")]}
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


def check(wine, _portable):
    ran_somewhere, known, faults = set(), set(), False
    for locale in LOCALES:
        ran, elsewhere, failed = run_suite(wine, locale)
        print(f"{locale}: {len(ran)} tests ran, {len(elsewhere)} want other systems, {len(failed)} failed", flush=True)
        for name, messages in failed.items():
            print("\n".join([f"{locale}: {name} failed", *messages[:3]]))
        ran_somewhere |= ran
        known |= ran | elsewhere
        faults |= bool(failed)
    for name in sorted(known - ran_somewhere):
        print(f"ran nowhere: {name}")
    print(f"{len(ran_somewhere)} of {len(known)} tests ran on at least one system")
    return bool(known) and known == ran_somewhere and not faults
