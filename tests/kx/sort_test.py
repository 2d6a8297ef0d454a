#!/usr/bin/env python3
"""sort_test.py KX: runs `kx sort` as a user does."""
import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile
import unittest

KX = ""

# Words in the order that a speaker expects, with the reason.
WORDS = {
    "ES": ("ch and ll are letters behind c and l, n with tilde behind n; an accent decides last",
           "caz czar chacal chico dama lava luz llama lluvia nube ñandú ozono solo sólo solos"),
    "CZ": ("c, r, s, z with caron are letters, ch stands behind h; long vowels are variants",
           "cyklus čas Čech dar hora hyena cháta chléb igelit luk rok řeka strom škola zima žena"),
    "SV": ("a with ring, a and o with diaeresis end the alphabet",
           "apa zon ål åska älg öl"),
    "DK": ("ae, o with stroke and a with ring end the alphabet",
           "abe zebra æble øl å"),
    "PL": ("letters with tail, stroke, acute and dot stand behind theirs, z with acute before z with dot",
           "atom ąkać bat cud ćma dom enzym ęsi lato łata noc ńa sok śnieg zoo źrebak żaba"),
    "DE": ("vowels with diaeresis are variants, sharp s is ss",
           "Apfel arm ärmer Arzt Masse Maße Mast Ofen offen öffnen Ohr"),
    "FR": ("accents decide last, from the left; the ligature is two letters",
           "cote coté côte côté coter œuf oeufs offre"),
    "US": ("without rules of a language letters with a diacritic are variants",
           "ch cote coté cz näve nz"),
    "JP": ("kana by sound, small and plain before voiced, hiragana first; then ideographs",
           "か カ ガ かあ カー かい さ 亜 漢"),
}


def kx(*arguments, data=b"", **options):
    environment = {name: value for name, value in os.environ.items() if not name.startswith(("KX_", "LC_", "LANG"))}
    return subprocess.run([KX, "sort", *arguments], input=data, capture_output=True, env=environment | {"LC_ALL": "C"},
                          check=False, timeout=60, **options)


def sort(language, data, *arguments):
    """The sorted bytes; a failure is an error of the test."""
    result = kx("-l", language, *arguments, data=data)
    if result.returncode != 0:
        raise AssertionError(result.stderr.decode())
    return result.stdout


def by_keys(language, data, *arguments):
    """Sorted by an external sorter that knows nothing but bytes."""
    keyed = sort(language, data, "--keys", *arguments).splitlines(keepends=True)
    return b"".join(line.split(b"\t", 1)[1] for line in sorted(keyed, key=lambda line: line.split(b"\t", 1)[0]))


class Sorts(unittest.TestCase):
    def test_words_of_the_languages(self):
        shuffler = random.Random(1)
        for language, (why, words) in WORDS.items():
            wanted = words.split()
            given = wanted[:]
            for _ in range(5):
                shuffler.shuffle(given)
                data = "".join(word + "\n" for word in given).encode()
                with self.subTest(why, language=language):
                    self.assertEqual(sort(language, data).decode().split(), wanted)
                    self.assertEqual(by_keys(language, data).decode().split(), wanted)

    def test_habits_of_sorters(self):
        cases = (
            # why, arguments, input, output
            ("lowercase first, equal lines in their order", ["-l", "us"], b"B\nb\na\nA\nb\n", b"a\nA\nb\nb\nB\n"),
            ("case ignored, stable", ["-l", "US", "--ignore-case"], b"B\nb\na\nA\n", b"a\nA\nB\nb\n"),
            ("reversed, still stable", ["-l", "US", "--ignore-case", "-r"], b"a\nA\nB\nb\n", b"B\nb\na\nA\n"),
            ("the first of equal lines", ["-l", "US", "--ignore-case", "-u"], b"B\nb\na\nA\n", b"a\nB\n"),
            ("EN is the plain order", ["-l", "EN"], b"b\na\n", b"a\nb\n"),
            ("a last line without end gets one", ["-l", "US"], b"b\na", b"a\nb\n"),
            ("empty lines come first", ["-l", "US"], b"a\n\n", b"\na\n"),
            ("nothing", ["-l", "US"], b"", b""),
            ("a carriage return does not count", ["-l", "US"], b"ab\r\na\r\n", b"a\r\nab\r\n"),
            ("nor what follows a zero", ["-l", "US"], b"a\0z\na\0b\n", b"a\0z\na\0b\n"),
            ("a byte order mark goes", ["-l", "US"], b"\xef\xbb\xbfb\na\n", b"a\nb\n"),
            ("a code page", ["-l", "SV", "-f", "1252"], b"\xe5\nz\n", b"z\n\xe5\n"),
            ("UTF-16", ["-l", "US", "-f", "utf-16be"], "Ċ\na\n".encode("utf-16be"), "a\nĊ\n".encode("utf-16be")),
            ("a line end lies between units", ["-l", "US", "-f", "kx"],
             b"\0\x0a\xf9\x05\x0a\xf9a\0\x0a\xf9", b"a\0\x0a\xf9\0\x0a\xf9\x05\x0a\xf9"),
            ("a double-byte code page", ["-l", "JP", "-f", "932"], "さ\nか".encode("cp932"), "か\nさ\n".encode("cp932")),
            ("hiragana first", ["-l", "JP", "--ignore-case", "--kana"], "カ\nか\n".encode(), "か\nカ\n".encode()),
            ("kana alike", ["-l", "JP", "--ignore-case"], "カ\nか\n".encode(), "カ\nか\n".encode()),
        )
        for why, arguments, data, wanted in cases:
            with self.subTest(why):
                result = kx(*arguments, data=data)
                self.assertEqual((result.stdout, result.returncode, result.stderr), (wanted, 0, b""))

    def test_faults_are_told(self):
        for why, arguments, data, status, message in (
            ("no language", [], b"", 2, b"-l CODE is needed"),
            ("unknown language", ["-l", "XX"], b"", 2, b"no language 'XX'; there are EN US AF"),
            ("unknown form", ["-l", "US", "-f", "x"], b"", 2, b"no form"),
            ("documents", ["-l", "US", "-f", "stream"], b"a\xcc", 2, b"'stream' has no lines"),
            ("older documents", ["-l", "US", "-f", "stream5"], b"a\n", 2, b"'stream5' has no lines"),
            ("text that is written only", ["-l", "US", "-f", "sio"], b"a\r", 2, b"'sio' has no lines"),
            ("keys are not sorted", ["-l", "US", "--keys", "-r"], b"", 2, b"--keys does not sort"),
            ("keys are bytes", ["-l", "US", "--keys", "-f", "kx"], b"", 2, b"--keys writes bytes"),
            ("a byte that is no text", ["-l", "US"], b"\xef\xbb\xbfab\nc\xff\n", 1, b"byte 7 does not convert from utf-8"),
            ("the same with keys", ["-l", "US", "--keys"], b"\xef\xbb\xbfab\nc\xff\n", 1, b"byte 7 does not convert"),
            ("half a unit", ["-l", "US", "-f", "utf-16le"], b"a\0\n", 1, b"byte 2 does not convert"),
            ("no such file", ["-l", "US", "/nonexistent"], b"", 1, b"/nonexistent: "),
            ("full disk", ["-l", "US", "-o", "/dev/full"], b"a\n", 1, b"cannot write to /dev/full"),
        ):
            with self.subTest(why):
                result = kx(*arguments, data=data)
                self.assertEqual(result.returncode, status)
                self.assertIn(message, result.stderr)

    def test_files_and_the_output_on_an_input(self):
        with tempfile.TemporaryDirectory() as folder:
            first, second = pathlib.Path(folder, "first"), pathlib.Path(folder, "second")
            first.write_bytes(b"c\nb")
            second.write_bytes(b"\xef\xbb\xbfa\n")
            self.assertEqual(sort("US", b"d", str(first), str(second), "-", "-o", str(first)), b"")
            self.assertEqual(first.read_bytes(), b"a\nb\nc\nd\n")
            self.assertEqual(kx("-l", "US", "--keys", "-o", str(first), str(first)).returncode, 1)
            self.assertEqual(first.read_bytes(), b"a\nb\nc\nd\n")

    def test_orders_that_are_none_lose_nothing(self):
        shuffler = random.Random(2)
        lines = ["".join(shuffler.choices("lLaz", k=shuffler.randrange(9))) + "\n" for _ in range(20000)]
        result = sort("ES", "".join(lines).encode()).decode().splitlines(keepends=True)
        self.assertEqual(sorted(result), sorted(lines))

    def test_keys_order_as_the_comparison_does(self):
        shuffler = random.Random(3)
        letters = {"US": "aAbéÉèz -", "CZ": "cChHčiz", "FR": "aeæoœ", "GR": "aAαβ", "PL": "aąAĄzżź.\t", "JP": "aAかがカｶﾞー亜",
                   "HE": "אבשa", "SV": "aäåöz"}
        for language, alphabet in letters.items():
            lines = {"".join(shuffler.choices(alphabet, k=shuffler.randrange(6))) + "\n" for _ in range(500)}
            data = "".join(sorted(lines)).encode()
            for options in ([], ["--ignore-case"], ["--kana"]):
                with self.subTest(language=language, options=options):
                    self.assertEqual(by_keys(language, data, *options), sort(language, data, *options))

    @unittest.skipIf("KXSTR_SANITIZED" in os.environ, "a sanitizer's own address space is far beyond the limits")
    def test_memory(self):
        lines = b"".join(b"%d word\n" % (n * 7919 % 1000003) for n in range(400000)) * 4
        with tempfile.NamedTemporaryFile() as file:
            file.write(lines)
            file.flush()
            for why, limit, status in (("three times the input is enough", 3 * len(lines), 0),
                                       ("the input alone is not", len(lines), 1)):
                with self.subTest(why):
                    result = kx("-l", "US", file.name, "-o", "/dev/null",
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
                    self.assertEqual(result.returncode, status)
                    self.assertIn(b"not enough memory" if status else b"", result.stderr)


if __name__ == "__main__":
    KX = sys.argv.pop(1)
    unittest.main()
