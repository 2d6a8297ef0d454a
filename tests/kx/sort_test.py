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

from kx_tool import CHUNK, KX, KxTest, environment, kx

# Words by locale, in the order that a speaker expects as far as the rules go, with the reason.
WORDS = {
    "es_ES.UTF-8": ("ch and ll are letters behind c and l, n with tilde behind n; an accent decides last",
                    "caz czar chacal chico dama lava luz llama lluvia nube ñandú ozono solo sólo solos"),
    "cs_CZ.UTF-8": ("c, r, s, z with caron are letters, ch stands behind h; long vowels are variants",
                    "cyklus čas Čech dar hora hyena cháta chléb igelit luk rok řeka strom škola zima žena"),
    "sk_SK": ("as Czech; a with diaeresis is a letter, which only coltbl knows", "hnev chata mak maľ mať mäkký mäso med"),
    "pl_PL.UTF-8": ("letters with tail, stroke, acute and dot stand behind theirs, z with acute before z with dot",
                    "atom ąkać bat cud ćma dom enzym ęsi lato łata noc ńa sok śnieg zoo źrebak żaba"),
    "hr_HR": ("c with caron before c with acute, both behind c; d with stroke, s and z with caron are letters",
              "cvijet čaj ćup dvor đak lav sveti šuma zub žaba"),
    "hu_HU": ("long vowels stand behind the short ones; o with diaeresis is a letter", "az ágy egy ég iz ír oz ó ön"),
    "is_IS.UTF-8": ("letters with acute, and eth, are letters behind theirs; thorn, ae and o with diaeresis come last",
                    "az á dz ð ez é iz í oz ó uz ú yz ý z þ æ ö"),
    "tr_TR": ("g with breve, o and u with diaeresis, s with cedilla are letters; dotless i, of which I is the capital, "
              "comes before i, of which İ is",
              "gül ğ hal ısı Isır izmir İzmit ok öz saz şal ulu ün vur"),
    "sv_SE": ("a with ring, a and o with diaeresis end the alphabet", "apa zon ål åska älg öl"),
    "fi_FI": ("as Swedish", "apu zoo Åbo äiti öljy"),
    "da_DK": ("ae, o with stroke and a with ring end the alphabet", "abe zebra æble øl å"),
    "nb_NO": ("as Danish", "and zoo ærlig ørret ål"),
    "de_DE": ("vowels with diaeresis are variants, sharp s is ss",
              "Apfel arm ärmer Arzt Masse Maße Mast Ofen offen öffnen Ohr"),
    "fr_FR": ("accents decide last, from the left; the ligature is two letters",
              "cote coté côte côté coter œuf oeufs offre"),
    "el_GR": ("a tonos is a variant, and capitals come first", "Άλφα άλφα βήτα γη Ώρα ώρα"),
    "ru_RU.UTF-8": ("io is a letter behind ie; Cyrillic stands behind Latin", "zoo дом ель ёлка жук яма"),
    "uk_UA": ("letters of its own stand behind those they come from", "вода гора ґанок день ельф єнот жук ім'я їжак"),
    "he_IL": ("letters as they follow each other; points are variants", "אב בית ים שלום תורה"),
    "en_US": ("without rules of a language letters with a diacritic are variants", "ch cote coté cz näve nz"),
    "ja_JP": ("kana by sound, small and plain before voiced, hiragana first; then ideographs",
              "か カ ガ かあ カー かい さ 亜 漢"),
}


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
        for locale, (why, words) in WORDS.items():
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
            ("keys, each with its flags", "-l cs -t ; -k2,2nr -k1,1f", "b;2\nCh;10\nh;10\na;2\n", "h;10\nCh;10\na;2\nb;2\n"),
            ("fields by blanks, a character in them", "-l US -k2.2b,2.2b", "x  az\ny bc\nz  ca\n", "z  ca\ny bc\nx  az\n"),
            ("whole lines decide at last", "-l US -k2", "b x\na x\n", "a x\nb x\n"),
            ("but not when stable", "-l US -s -k2", "b x\na x\n", "b x\na x\n"),
            ("a separator beyond ASCII", "-l US -t § -k2,2n", "a§10\nb§9\n", "b§9\na§10\n"),
            ("numbers", "-l US -n", "10\n9.5\n-1\n-2.5\n\n0\n9.25\n", "-2.5\n-1\n\n0\n9.25\n9.5\n10\n"),
        ):
            with self.subTest(why):
                form = re.search("-f (.*)|$", arguments)[1] or "utf-8"
                self.assertEqual(self.output("sort " + arguments, data=data.encode(form)), wanted.encode(form))
        data = b"\0\x0a\xf9\x05\x0a\xf9a\0\x0a\xf9"
        self.assertEqual(self.output("sort -l US -f kx", data=data), b"a\0\x0a\xf9\0\x0a\xf9\x05\x0a\xf9",
                         "what looks like a line end lies between units")

    def test_faults_are_told(self):
        for why, arguments, data, status, message in (
            ("no language", "", b"", 2, "no language: LC_ALL: 'C' is a locale of no language; give one with -l"),
            ("unknown language", "-l xx", b"", 2, "no language 'xx' (`kx sort --list`"),
            ("what is near is told", "-l chzech", b"", 2, "nearest: cs (Czech)"),
            ("rules that are not there", "-l sl_SI", b"", 2,
             "no rules for Slovene ('sl_SI'); nearest: hr (Croatian); Slovak is SL or sk"),
            ("an option of sort(1)", "-l US -V", b"", 2, "-V, --version-sort is an option of sort(1)"),
            ("a flag of sort(1)", "-l US -k1M", b"", 2, "-k '1M': flag 'M' of sort(1)"),
            ("no field", "-l US -k0", b"", 2, "fields are counted from 1"),
            ("a long separator", "-l US -t ab -k2", b"", 2, "-t takes one character"),
            ("-f is the form", "-l US -f x", b"", 2, "what it is to sort(1) is --ignore-case"),
            ("no threads", "-l US -jx", b"", 2, "--jobs: 'x' is no number"),
            ("one work at a time", "-l US -c -m", b"", 2, "only one of"),
            ("a disorder", "-l CZ -c", b"h\nch\nha\n", 1, "(standard input):3: disorder: ha"),
            ("equal lines", "-l US -cu", b"a\na\n", 1, "(standard input):2: disorder: a"),
            ("a disorder without a word", "-l US --check=quiet", b"b\na\n", 1, ""),
            ("documents", "-l US -f stream", b"a\xcc", 2, "'stream' has no lines"),
            ("keys are not sorted", "-l US --keys -r", b"", 2, "--keys does not sort"),
            ("nor made unique", "-l US --keys -u", b"", 2, "--keys does not sort"),
            ("keys are bytes", "-l US --keys -f kx", b"", 2, "--keys writes bytes"),
            ("a character that KX lacks", "-l US --strict", "\ufeffab\né😀😀\n".encode(), 1,
             "(standard input): line 2, column 2: U+1F600 does not convert from utf-8"),
            ("the same with keys", "-l US --strict --keys", "\ufeff😀\n".encode(), 1, "line 1, column 1: U+1F600"),
            ("a byte that is no text", "-l US --strict", b"ab\nc\xff\n", 1, "line 2, column 2: byte FF does not convert"),
            ("half a unit", "-l US -f utf-16le", b"a\0\n", 1, "ends within a character"),
            ("half a unit with keys", "-l US -f utf-16le -m", b"a\0\n", 1, "ends within a character"),
            ("no such file", "-l US /nonexistent", b"", 1, "/nonexistent: "),
            ("full disk", "-l US -o /dev/full", b"a\n", 1, "cannot write to /dev/full"),
        ):
            with self.subTest(why):
                self.assert_fails("sort " + arguments, data=data, status=status, message=message, output=None)

    def test_no_line_is_refused(self):
        data = "a😀\nz\na\ud7a4\n─\nab\n".encode() + b"a\xff\n"
        result = kx("sort", "-l", "is", data=data)
        self.assertEqual(result.stdout, "ab\nz\n─\n".encode().replace("z\n─\n".encode(), "a\ud7a4\na😀\na".encode())
                         + b"\xff\n" + "z\n─\n".encode())
        self.assertEqual(result.stderr.decode(), "kx sort: characters that KX lacks, behind all others: 3, "
                                                 "the first one U+1F600 in (standard input), line 1, column 2\n")
        self.assertEqual(result.returncode, 0)

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
        common = ["a", "A", "b", "é", "É", "z", " ", "-", "cha", "Che", "ce", "hi", "lla", "la", "a😀"]
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
        self.assertEqual(self.sort("ES", lines, "-j4"), self.sort("ES", lines), "an order that is none")
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
