#!/usr/bin/env python3
"""sort_test.py KX: runs `kx sort` as a user does."""
import os
import pathlib
import random
import re
import resource
import subprocess
import tempfile
import unittest

from kx_tool import CHUNK, KX, KxTest, environment, kx, rows_of

PROGRAM = 1 << 24  # what kx takes without an input, and more


class Sorts(KxTest):
    def sort(self, language, data, *arguments):
        return self.output("sort", "-l", language, *arguments, data=data)

    def by_keys(self, language, data, *arguments):
        """Sorted by an external sorter that knows nothing but bytes."""
        keyed = [line.split(b"\t", 1) for line in kx("sort", "-l", language, "--keys", *arguments, data=data)
                 .stdout.splitlines(True)]
        return b"".join(line for _, line in sorted(keyed, key=lambda line: line[0]))

    def test_words_of_the_languages(self):
        shuffler = random.Random(1)
        for locale, words, why in ([field.decode() for field in row] for row in rows_of("words.txt")):
            given = words.split()
            shuffler.shuffle(given)
            data = "".join(word + "\n" for word in given).encode()
            with self.subTest(why, locale=locale):
                self.assertEqual(self.output("sort", data=data, LC_ALL=locale).decode().split(), words.split())
                self.assertEqual(self.by_keys(locale, data).decode().split(), words.split())

    def test_names_of_languages(self):
        """By what only this language does with these lines."""
        data = "ch\nh\ni\nl\nll\nlz\nc\nå\nz\n".encode()
        czech, spanish, danish, plain = ("c h ch i l ll lz z", "c ch h i l lz ll z", "c ch h i l ll lz z", "c ch h i l ll lz z")
        for names, wanted in (("CZ cs cs_CZ.UTF-8 cs_XX ces cze czech Czech cz SL sk slk sk_SK@euro Slovak", czech),
                              ("ES es es_MX es-419 spa Castilian CA ca catalan", spanish),
                              ("DK da dk da_DK danish no nb_NO nn Bokmål", danish),
                              ("EN US us en_GB.UTF-8 CS SU uk pt_BR zh_TW zh-Hant-HK", plain)):
            for name in names.split():
                with self.subTest(name):
                    result = self.sort(name, data).decode().split()
                    self.assertEqual([word for word in result if word != "å"], wanted.split())
        self.assertEqual(self.output("sort", data=b"ch\nh\n", LC_ALL="", LC_COLLATE="cs_CZ", LANG="es"), b"h\nch\n")
        listed = self.output("sort --list").decode()
        for row in ("CZ    cs       Czech ", "CS    zh       Simplified Chinese ", "BR    pt_BR    Brazilian Portuguese "):
            self.assertIn("\n" + row, listed)

    def test_habits_of_sorters(self):
        for arguments, data, wanted, why in ([field.decode() for field in row] for row in rows_of("sort_habits.txt")):
            with self.subTest(why):
                form = re.search("-f (.*)|$", arguments)[1] or "utf-8"
                self.assertEqual(self.output("sort " + arguments, data=data.encode(form)), wanted.encode(form))
        data = b"\0\x0a\xf9\x05\x0a\xf9a\0\x0a\xf9"
        self.assertEqual(self.output("sort -l US -f kx", data=data), b"a\0\x0a\xf9\0\x0a\xf9\x05\x0a\xf9",
                         "what looks like a line end lies between units")

    def test_faults_are_told(self):
        for arguments, data, status, message, why in rows_of("sort_faults.txt"):
            with self.subTest(why.decode()):
                self.assert_fails("sort " + arguments.decode(), data=data, status=int(status), message=message.decode(),
                                  output=None)

    def test_no_line_is_refused(self):
        data = "a😀\nz\na\ud7a4\n─\nab\n".encode() + b"a\xff\n"
        result = kx("sort", "-l", "is", data=data)
        self.assertEqual(result.stdout, "ab\nz\n─\n".encode().replace("z\n─\n".encode(), "a\ud7a4\na😀\na".encode())
                         + b"\xff\n" + "z\n─\n".encode())
        self.assertEqual(result.stderr.decode(), "kx sort: characters that KX lacks, behind all others: 3, "
                                                 "the first one U+1F600 in (standard input):1:2\n")
        self.assertEqual(result.returncode, 0)
        far = kx("sort -l is", data="😀\n".encode() + b"a\n" * CHUNK + "😀\n".encode())
        self.assertIn(b"behind all others: 2,", far.stderr)
        for options, told in (("-c", b"KX lacks, behind all others: 1,"), ("-C", b"")):
            checked = kx("sort -l is " + options, data="a\n😀\n".encode())
            self.assertEqual((told in checked.stderr, checked.stderr != b"", checked.returncode), (True, told != b"", 0))

    def test_fields_are_those_of_sort(self):
        """Of characters that bytes and English order alike."""
        pick = random.Random(4)
        for _ in range(150):
            def position():
                return f"{pick.randrange(1, 4)}" + pick.choice(["", f".{pick.randrange(1, 4)}"])

            def flags():
                return "".join(pick.sample("bnr", pick.choice([0, 0, 1, 2])))

            options = pick.choice([[], ["-t", ","], ["-t", " "], ["-t", "a"]])
            for _ in range(pick.randrange(3)):
                options = [*options, "-k", position() + flags() + pick.choice(["", "," + position() + flags()])]
            options = [*options, *(f"-{flag}" for flag in "bnrsucz" if pick.random() < 0.2)]
            end = "\0" if "-z" in options else "\n"
            lines = ("".join(pick.choices("ab ,12 ", k=pick.randrange(9))) + end for _ in range(pick.randrange(15)))
            data = "".join(lines).encode()
            ours, theirs = (subprocess.run([*command, *options], input=data, capture_output=True, env=environment(),
                                           check=False) for command in ([KX, "sort", "-l", "en"], ["sort"]))
            with self.subTest(options=options, data=data):
                self.assertEqual((ours.stdout, ours.returncode), (theirs.stdout, theirs.returncode))

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

    def test_all_ways_come_to_the_same(self):
        """Keys, threads, merging and checking, in every language."""
        shuffler = random.Random(3)
        letters = {"ES": "ñ", "CA": "ñ", "CZ": "äčřüźđ", "SL": "äöćž", "FR": "æœ", "CF": "æœ", "GR": "αβΑάΒ", "PL": "ąĄżź.\t",
                   "HR": "čćđ", "MA": "áöőü", "IS": "áðýþæö", "TK": "ıIİşğöçü", "HE": "אבש", "AR": "ابت", "FA": "پچا",
                   "UR": "ٹبا", "RU": "аёеж", "YK": "ьіїя", "JP": "かがカｶﾞー亜", "KR": "가나", "CT": "漢中", "CS": "汉中",
                   "DK": "åæøä", "NL": "ĳ", "DE": "ßäö"}
        common = ["a", "A", "b", "é", "É", "z", " ", "-", "cha", "Che", "ce", "hi", "lla", "la", "a😀", "😁"]
        codes = [line.split()[0] for line in self.output("sort --list").decode().split("\n\n")[0].splitlines()[1:]]
        self.assertEqual(len(codes), 40)
        for code in codes:
            tokens = common + 3 * list(letters.get(code, ""))
            lines = {"".join(shuffler.choices(tokens, k=shuffler.randrange(5))) + "\n" for _ in range(300)}
            data = "".join(sorted(lines)).encode()
            for options in (["--ignore-case", *(["--kana"] if code in "JP LA" else [])], []):
                with self.subTest(code=code, options=options):
                    result = kx("sort", "-l", code, "-j3", *options, data=data).stdout
                    self.assertEqual(self.by_keys(code, data, *options), result)
            with self.subTest(code=code):
                self.assertEqual(kx("sort", "-l", code, data=data).stdout, result)
                self.assertEqual(kx("sort", "-l", code, "-C", data=result).returncode, 0)
            with tempfile.TemporaryDirectory() as folder:
                parts = [pathlib.Path(folder, str(number)) for number in range(3)]
                for number, part in enumerate(parts):
                    part.write_bytes(b"".join(result.splitlines(True)[number::3]))
                self.assertEqual(kx("sort", "-l", code, "-m", *parts).stdout, kx("sort", "-l", code, *parts).stdout)

        lines = "".join("".join(shuffler.choices("lLaz", k=9)) + "\n" for _ in range(5000)).encode()
        self.assertEqual(self.sort("ES", lines, "--parallel=4"), self.sort("ES", lines), "an order that is none")
        long = b"a" * 1200
        for code, letters in (("US", "ba"), ("CZ", "äčřüźđcaruzd"), ("IS", "áðýþæöadyto"), ("PL", "ąĄżź.az")):
            one, many = (self.sort(code, b"".join(start + letter.encode() + b"\n" for letter in letters)) for start in (b"", long))
            self.assertEqual(many.replace(long, b""), one, "beyond the keys")
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
            long = 20 << 20
            with open(file.name + ".long", "wb") as line:
                line.write(b"b" * long)
            self.addCleanup(os.remove, line.name)
            too_large = b"not enough memory: the input is sorted as a whole"
            for why, options, name, limit, fault in (
                    ("six times the input is enough for keys", [], file.name, 6 * len(lines) + PROGRAM, b""),
                    ("without keys twice is", [], file.name, 2 * len(lines) + PROGRAM, b""),
                    ("once is not", [], file.name, len(lines) + PROGRAM, too_large),
                    ("keys are written with four times the longest line", ["--keys"], line.name, 4 * long + PROGRAM, b""),
                    ("but not with twice", ["--keys"], line.name, 2 * long, b"not enough memory for the longest line")):
                result = kx("sort", "-l", "CZ", *options, name,
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
                self.assertEqual((result.returncode, fault in result.stderr), (1 if fault else 0, True), why)
                results.append(result.stdout)
            self.assertEqual(results[0], results[1], "keys order as the comparison does")


if __name__ == "__main__":
    unittest.main()
