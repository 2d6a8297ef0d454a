#!/usr/bin/env python3
"""sort_test.py KX: runs `kx sort` as a user does."""
import os
import pathlib
import random
import re
import resource
import tempfile
import unittest

from kx_tool import CHUNK, KxTest, kx

# Words in the order that a speaker expects, with the reason.
WORDS = {
    "ES": ("ch and ll are letters behind c and l, n with tilde behind n; an accent decides last",
           "caz czar chacal chico dama lava luz llama lluvia nube ñandú ozono solo sólo solos"),
    "CZ": ("c, r, s, z with caron are letters, ch stands behind h; long vowels are variants",
           "cyklus čas Čech dar hora hyena cháta chléb igelit luk rok řeka strom škola zima žena"),
    "SV": ("a with ring, a and o with diaeresis end the alphabet", "apa zon ål åska älg öl"),
    "DK": ("ae, o with stroke and a with ring end the alphabet", "abe zebra æble øl å"),
    "PL": ("letters with tail, stroke, acute and dot stand behind theirs, z with acute before z with dot",
           "atom ąkać bat cud ćma dom enzym ęsi lato łata noc ńa sok śnieg zoo źrebak żaba"),
    "DE": ("vowels with diaeresis are variants, sharp s is ss",
           "Apfel arm ärmer Arzt Masse Maße Mast Ofen offen öffnen Ohr"),
    "FR": ("accents decide last, from the left; the ligature is two letters",
           "cote coté côte côté coter œuf oeufs offre"),
    "US": ("without rules of a language letters with a diacritic are variants", "ch cote coté cz näve nz"),
    "JP": ("kana by sound, small and plain before voiced, hiragana first; then ideographs",
           "か カ ガ かあ カー かい さ 亜 漢"),
}


PROGRAM = 1 << 24  # what kx takes without an input, and more


class Sorts(KxTest):
    def sort(self, language, data, *arguments):
        return self.output("sort", "-l", language, *arguments, data=data)

    def by_keys(self, language, data, *arguments):
        """Sorted by an external sorter that knows nothing but bytes."""
        keyed = [line.split(b"\t", 1) for line in self.sort(language, data, "--keys", *arguments).splitlines(True)]
        return b"".join(line for _, line in sorted(keyed, key=lambda line: line[0]))

    def test_words_of_the_languages(self):
        shuffler = random.Random(1)
        for language, (why, words) in WORDS.items():
            given = words.split()
            shuffler.shuffle(given)
            data = "".join(word + "\n" for word in given).encode()
            with self.subTest(why, language=language):
                self.assertEqual(self.sort(language, data).decode().split(), words.split())
                self.assertEqual(self.by_keys(language, data).decode().split(), words.split())

    def test_habits_of_sorters(self):
        for why, arguments, data, wanted in (
            ("lowercase first, equal lines in their order", "-l us", "B\nb\na\nA\nb\n", "a\nA\nb\nb\nB\n"),
            ("case ignored, stable", "-l US --ignore-case", "B\nb\na\nA\n", "a\nA\nB\nb\n"),
            ("reversed, still stable", "-l US --ignore-case -r", "a\nA\nB\nb\n", "B\nb\na\nA\n"),
            ("the first of equal lines", "-l US --ignore-case -u", "B\nb\na\nA\n", "a\nB\n"),
            ("EN is the plain order", "-l EN", "b\na\n", "a\nb\n"),
            ("a last line without end gets one", "-l US", "b\na", "a\nb\n"),
            ("empty lines come first", "-l US", "a\n\n", "\na\n"),
            ("nothing", "-l US", "", ""),
            ("a carriage return does not count", "-l US", "ab\r\na\r\n", "a\r\nab\r\n"),
            ("nor what follows a zero", "-l US", "a\0z\na\0b\n", "a\0z\na\0b\n"),
            ("a byte order mark goes", "-l US", "\ufeffb\na\n", "a\nb\n"),
            ("a code page", "-l SV -f 1252", "å\nz\n", "z\nå\n"),
            ("UTF-16", "-l US -f utf-16be", "Ċ\na\n", "a\nĊ\n"),
            ("a double-byte code page", "-l JP -f 932", "さ\nか\n", "か\nさ\n"),
            ("hiragana first", "-l JP --ignore-case --kana", "カ\nか\n", "か\nカ\n"),
            ("kana alike", "-l JP --ignore-case", "カ\nか\n", "カ\nか\n"),
        ):
            with self.subTest(why):
                form = re.search("-f (.*)|$", arguments)[1] or "utf-8"
                self.assertEqual(self.output("sort " + arguments, data=data.encode(form)), wanted.encode(form))
        data = b"\0\x0a\xf9\x05\x0a\xf9a\0\x0a\xf9"
        self.assertEqual(self.output("sort -l US -f kx", data=data), b"a\0\x0a\xf9\0\x0a\xf9\x05\x0a\xf9",
                         "what looks like a line end lies between units")

    def test_faults_are_told(self):
        for why, arguments, data, status, message in (
            ("no language", "", b"", 2, "-l CODE is needed"),
            ("unknown language", "-l XX", b"", 2, "no language 'XX'; there are EN US AF"),
            ("no code of two letters", "-l USA", b"", 2, "no language 'USA'"),
            ("documents", "-l US -f stream", b"a\xcc", 2, "'stream' has no lines"),
            ("keys are not sorted", "-l US --keys -r", b"", 2, "--keys does not sort"),
            ("nor made unique", "-l US --keys -u", b"", 2, "--keys does not sort"),
            ("keys are bytes", "-l US --keys -f kx", b"", 2, "--keys writes bytes"),
            ("a byte that is no text", "-l US", b"\xef\xbb\xbfab\nc\xff\n", 1, "byte 7 does not convert from utf-8"),
            ("the same with keys", "-l US --keys", b"\xef\xbb\xbfab\nc\xff\n", 1, "byte 7 does not convert"),
            ("and in the first line", "-l US --keys", b"\xef\xbb\xbf\xff\n", 1, "byte 3 does not convert"),
            ("half a unit", "-l US -f utf-16le", b"a\0\n", 1, "byte 2 does not convert"),
            ("no such file", "-l US /nonexistent", b"", 1, "/nonexistent: "),
            ("full disk", "-l US -o /dev/full", b"a\n", 1, "cannot write to /dev/full"),
        ):
            with self.subTest(why):
                self.assert_fails("sort " + arguments, data=data, status=status, message=message, output=None)

    def test_files_and_the_output_on_an_input(self):
        with tempfile.TemporaryDirectory() as folder:
            first, second = pathlib.Path(folder, "first"), pathlib.Path(folder, "second")
            first.write_bytes(b"c\nb")
            second.write_bytes(b"\xef\xbb\xbfa\n")
            self.assertEqual(self.sort("US", b"d", first, second, "-", "-o", first), b"")
            self.assertEqual(first.read_bytes(), b"a\nb\nc\nd\n")
            self.assert_fails("sort", "-l", "US", "--keys", "-o", first, first, message="the output is also an input")
            self.assertEqual(first.read_bytes(), b"a\nb\nc\nd\n")

    def test_orders_that_are_none_lose_nothing(self):
        shuffler = random.Random(2)
        lines = ["".join(shuffler.choices("lLaz", k=shuffler.randrange(9))) + "\n" for _ in range(20000)]
        result = self.sort("ES", "".join(lines).encode()).decode().splitlines(keepends=True)
        self.assertEqual(sorted(result), sorted(lines))

    def test_keys_order_as_the_comparison_does(self):
        shuffler = random.Random(3)
        letters = {"US": "aAbéÉèz -", "CZ": "cChHčiz", "FR": "aeæoœ", "GR": "aAαβ", "PL": "ąAĄzżź.\t", "HE": "אבשa",
                   "JP": "aAかがカｶﾞー亜", "DK": "aAåz"}
        for language, alphabet in letters.items():
            lines = {"".join(shuffler.choices(alphabet, k=shuffler.randrange(6))) + "\n" for _ in range(500)}
            data = "".join(sorted(lines)).encode()
            for options in ([], ["--ignore-case"], ["--kana"], ["--ignore-case", "--kana"]):
                with self.subTest(language=language, options=options):
                    self.assertEqual(self.by_keys(language, data, *options), self.sort(language, data, *options))

        data = b"cb\n" * CHUNK + b"a" * 2 * CHUNK
        self.assertEqual(self.by_keys("US", data), self.sort("US", data), "across chunks, and without the last end")

    @unittest.skipIf("KXSTR_SANITIZED" in os.environ, "a sanitizer's own address space is far beyond the limits")
    def test_memory(self):
        words = "cena chata Chata čáp ċ cesta".encode().split()
        lines = b"".join(b"%s %d\n" % (words[n % 7 % 6], n * 7919 % 1000003) for n in range(200000)) * 4
        with tempfile.NamedTemporaryFile() as file:
            file.write(lines)
            file.flush()
            results = []
            for why, limit, status in (("six times the input is enough for keys", 6 * len(lines) + PROGRAM, 0),
                                       ("without keys three times is", 3 * len(lines), 0),
                                       ("twice, with the program in it, is not", 2 * len(lines), 1)):
                result = kx("sort", "-l", "CZ", file.name,
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
                self.assertEqual(result.returncode, status, why)
                self.assertIn(b"not enough memory" if status else b"", result.stderr)
                results.append(result.stdout)
            self.assertEqual(results[0], results[1], "keys order as the comparison does")


if __name__ == "__main__":
    unittest.main()
