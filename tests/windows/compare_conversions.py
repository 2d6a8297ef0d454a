"""Holds the portable code page tables against the answers of the real conversions, code by code: every byte, every pair
of bytes and every unit of each page, lead bytes, character sets and, on two systems, languages. The differences must be
those that docs/platform.md gives reasons for, each of them and no others."""
import os
import subprocess

PAGES = """437 708 737 775 850 852 855 857 860 861 862 863 864 865 866 869 874 1250 1251 1252 1253 1254 1255 1256 1257
1258 10001 28591 28592 28596 28597 28598 932 936 949 950""".split()
LANGUAGES = {"language 081A", "language 0C1A"}
# On a second system those languages that stand for the system's own tell something.
SYSTEMS = (("en_US", PAGES, {"lead 10001", "wide 10001", "native 10001"} | LANGUAGES),
           ("ja_JP", [], LANGUAGES))


def subject(line):
    kind, number = line.split()[:2]
    return f"{kind} {number}"


def answers(output):
    return set(output.decode("ascii").splitlines())


def check(wine, portable):
    as_expected = True
    for locale, pages, expected in SYSTEMS:
        real = wine.run(locale, "./dump_conversions.exe", *pages)
        if real.returncode != 0 or real.stderr:
            print(f"dump_conversions: exit status {real.returncode}\n{real.stderr.decode(errors='replace')}")
            return False
        ours = subprocess.run([portable / "dump_portable", *pages], check=True, capture_output=True,
                              env=os.environ | {"LC_ALL": f"{locale}.UTF-8"})
        theirs_lines, ours_lines = answers(real.stdout), answers(ours.stdout)
        different = theirs_lines ^ ours_lines
        found = {subject(line) for line in different}
        for line in sorted(line for line in different if subject(line) not in expected):
            print(f"only {'ours' if line in ours_lines else 'Windows'}: {line}")
        for missing in sorted(expected - found):
            print(f"no difference any more: {missing}")
        print(f"{locale}: {len(theirs_lines & ours_lines)} answers alike, {len(different)} apart in "
              f"{', '.join(sorted(found))}")
        as_expected &= found == expected and len(theirs_lines) > (100_000 if pages else 100)
    return as_expected
