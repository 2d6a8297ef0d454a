"""The package against Python's codecs and the tool kx, which the environment names as KX."""
import codecs
import doctest
import io
import os
import pathlib
import random
import subprocess
import sys
import threading
import unittest

import kxstr

KX = os.environ["KX"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
TEXTS = ROOT / "examples" / "texts"


def kx(*arguments, data=b""):
    done = subprocess.run([KX, *arguments], input=data, capture_output=True, check=False)
    assert done.returncode == 0, (arguments, done.stderr)
    return done.stdout


class Pages(unittest.TestCase):
    def test_samples_and_codecs(self):
        names = ("kamenicky", "Mazovia", "windows1251", "cp-1251", "windows-31j", "iso8859-2", "mac_roman")
        self.assertEqual("".join(kxstr.decode(b"\xb1", name) for name in names), "▒▒±±ｱą±")
        for path in sorted(TEXTS.glob("*.txt")):
            page, data = path.stem.rsplit("-", 1)[1], path.read_bytes()
            text = (TEXTS / "utf-8" / path.name).read_bytes().decode()
            self.assertEqual((kxstr.decode(data, page), kxstr.encode(text, int(page))), (text, data), page)
            name = "kx_" + page
            self.assertEqual("".join(codecs.iterdecode((data[i : i + 1] for i in range(len(data))), name)), text, page)
            self.assertEqual(b"".join(codecs.iterencode(text, name)), data, page)
            self.assertEqual(codecs.getreader(name)(io.BytesIO(data)).read(), text, page)
            self.assertEqual(io.TextIOWrapper(io.BytesIO(data), name, newline="").read(), text, page)
            out, file = io.BytesIO(), io.BytesIO()
            codecs.getwriter(name)(out).write(text)
            wrapper = io.TextIOWrapper(file, name, newline="")
            wrapper.write(text)
            wrapper.flush()
            self.assertEqual([out.getvalue(), file.getvalue()], [data, data], page)
        self.assertEqual("e\u0301".encode("kx-kx"), b"\x29\x01")

    def test_every_byte_of_the_tools_pages(self):
        pages = [line.split()[0] for line in kx("convert", "-l").decode().split("Code pages")[1]
                 .split("\n\n")[0].splitlines()[1:]]
        self.assertGreater(len(pages), 45)
        every = bytes(range(256))
        for page in pages:
            if page in ("932", "936", "949", "950"):
                continue
            replaced = kx("convert", "-q", "-f", page, "-t", "utf-8", "--subst=\ufffd", data=every).decode()
            self.assertEqual(kxstr.decode(every, page, "replace"), replaced, page)
            text = replaced.replace("\ufffd", "")
            self.assertEqual(text.encode("kx-" + page), kx("convert", "-f", "utf-8", "-t", page, data=text.encode()), page)

    def test_errors_as_other_codecs_have_them(self):
        chance = random.Random(1)
        for handler in ("ignore", "replace", "xmlcharrefreplace", "backslashreplace", "namereplace", "strict"):
            for _ in range(300):
                text = "".join(chance.choice("aé\u0151€\U0001f600\ud800") for _ in range(chance.randrange(9)))
                ours, theirs = outcome(text.encode, "kx-852", handler), outcome(text.encode, "cp852", handler)
                self.assertEqual(ours, theirs, (text, handler))
        for handler in ("ignore", "replace", "backslashreplace", "surrogateescape", "strict"):
            for _ in range(300):
                data = bytes(chance.choice(b"a\x80\xc3\xa9\xe2\x82\xf0\xff") for _ in range(chance.randrange(9)))
                ours, theirs = outcome(kxstr.decode, data, "utf-8", handler), outcome(data.decode, "utf-8", handler)
                self.assertEqual(ours, theirs, (data, handler))
        codecs.register_error("back", lambda fault: ("?", -1))
        self.assertEqual(kxstr.encode("a€€€b", 437, "back"), b"a?b")
        for page in (0, 99999, 12345, "koi8-x", "kx-852", "", "é852"):
            self.assertRaises(LookupError, kxstr.decode, b"", page)
        self.assertRaises(LookupError, codecs.lookup, "kx-12345")
        self.assertRaises(UnicodeDecodeError, b"a\x82".decode, "kx-932")

    def test_large_texts_in_threads(self):
        text = (TEXTS / "utf-8" / "japanese-932.txt").read_bytes().decode() * 300
        results = []
        threads = [
            threading.Thread(target=lambda: results.append(text.encode("kx-932").decode("kx-932") == text)) for _ in range(8)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(results, [True] * 8)


def outcome(call, *arguments):
    try:
        return call(*arguments)
    except UnicodeError as fault:
        return (type(fault), fault.start, fault.end if isinstance(fault, UnicodeDecodeError) else None)


class Detection(unittest.TestCase):
    def test_samples(self):
        for path in sorted(TEXTS.glob("*.txt")):
            guess = kxstr.detect(path.read_bytes())
            said = kx("detect", str(path)).decode().split(": ")[1].split()
            self.assertEqual([guess.page, guess.language, f"{guess.share:.1%}"], said, path)
            self.assertEqual(path.read_bytes().decode(guess.codec), (TEXTS / "utf-8" / path.name).read_bytes().decode())
        self.assertIsNone(kxstr.detect(bytes(range(256)) * 9).codec)


# Letters of all languages, what KX lacks, codes and marks.
LETTERS = (
    "aAbBcChHlLIiİıjJäÄöÖüÜßåÅæÆøØñÑçÇéÉèêõőűůčČřšžěýďťňłŁąęćńśźżàáđÐþÞœŒĳĲğş"
    "αΑάωΏбБёЁґєіїьאבּبةـًあアかがカﾞｶーゞァぁ漢字一Ａａ１ -'\t"
    "\u2500☺😀\ud812e\u0301\x84"
)


class Order(unittest.TestCase):
    languages = [line.split() for line in kx("sort", "--list").decode().split("\n\n")[0].splitlines()[1:]]

    def test_names(self):
        for code, locale, *_ in self.languages:
            if not locale[0].islower():
                continue
            self.assertEqual(kxstr.sort_key("chäIa", locale), kxstr.sort_key("chäIa", code), code)
        for name in ("xx", "XX", "", "sl"):
            self.assertRaises(LookupError, kxstr.sort_key, "a", name)

    def test_keys_are_those_of_the_tool(self):
        chance = random.Random(2)
        # The library joins the widths of its system's country, the tool those of the language's.
        host = os.environ.get("KXSTR_TEST_COUNTRY")
        for code, *_ in self.languages:
            if code != host if host else code in ("JP", "KR", "CT", "CS"):
                continue
            lines = ["".join(chance.choices(LETTERS.replace("\ud812", ""), k=chance.randrange(12))) for _ in range(400)]
            options = [[], ["--ignore-case"], ["--kana"], ["--ignore-case", "--kana"]][chance.randrange(4)]
            keys = kx("sort", "-l", code, "--keys", *options, data="\n".join([*lines, ""]).encode()).split(b"\n")
            ours = [
                kxstr.sort_key(line, code, ignore_case="--ignore-case" in options, kana="--kana" in options)
                for line in lines
            ]
            for line, key, our in zip(lines, keys, ours):
                self.assertEqual(our, key.split(b"\t")[0], (code, options, line))

    def test_order_is_that_of_the_tool(self):
        chance = random.Random(3)
        for language in ("en", "cs", "es", "sv", "pl", "hu", "tr", "uk", "el", "de", "is"):
            letters = "".join(sorted(set("abcdehilmnoszáčéöüåñğşıšžąęłґіїьАбв ")))
            lines = ["".join(chance.choices(letters, k=chance.randrange(1, 9))) for _ in range(1500)]
            lines = [line for line in lines if "ll" not in line]
            ours = sorted(lines, key=lambda line: kxstr.sort_key(line, language))
            self.assertEqual(ours, kx("sort", "-l", language, data="\n".join(lines).encode()).decode().splitlines(), language)
            for a, b in zip(ours, ours[1:]):
                self.assertIn(kxstr.compare(a, b, language), (-1, 0), (language, a, b))
                self.assertEqual(kxstr.compare(b, a, language), -kxstr.compare(a, b, language))
        self.assertEqual([kxstr.compare(*pair, "en") for pair in (("a", "A"), ("A", "a"), ("a", "a"))], [-1, 1, 0])
        self.assertEqual(kxstr.compare("a", "A", "en", ignore_case=True), 0)


class Streams(unittest.TestCase):
    def test_strip_as_the_tool_does(self):
        every = b"".join(b"\xf0" + unit.to_bytes(2, "little") + b"\xf0" for unit in range(0x10000))
        page = ["--ansi=1252"]
        ignored = kx("strip", "-c", "-q", *page, data=every)
        self.assertEqual(kxstr.strip(every, errors="ignore"), ignored.decode())
        chance = random.Random(4)
        kinds = list(range(256)) + [0xF0, 0xF2, 0xF3, 0xCC, 0xCF, 0x84, 0x80] * 10
        group = b"\xd4\x01\x09\x00xy\x09\x00\xd4"
        for _ in range(60):
            data = b"".join([bytes(chance.choices(kinds, k=30)), b"\xf0\x09\xf9\xf0", group] * 4)
            self.assertEqual(b"".join(code.data for code in kxstr.walk(data)), data)
            for keep, options in (((), ()), (("hard", "soft", "tabs"), ("--keep=hard,soft,tabs", "--hyphens")),
                                  (("hard",), ("--soft-as-space", "--keep=hard"))):  # fmt: skip
                ours = kxstr.strip(data, keep=keep, errors="ignore", hyphens="--hyphens" in options,
                                   soft_as_space="--soft-as-space" in options)  # fmt: skip
                self.assertEqual(ours, kx("strip", "-c", "-q", *page, *options, data=data).decode(), (data, options))

    def test_what_a_code_is(self):
        codes = list(kxstr.walk(b"\xf2\x0c\xf2\xf0\x29\x01\xf0\xf3\x0c\xf3\xcc\xd4\x01\x04\x00x"))
        self.assertEqual([code.attribute for code in codes][:3], [(12, True), None, (12, False)])
        self.assertEqual([code.text() for code in codes][:4], ["", "é", "", "\n"])
        self.assertEqual((codes[4].kind, codes[4].fault, codes[4].data), (kxstr.Kind.GROUP, kxstr.Fault.NO_ROOM, b"\xd4"))
        with self.assertRaises(UnicodeDecodeError) as caught:
            kxstr.strip(b"ab\xd4c")
        self.assertEqual((caught.exception.start, caught.exception.end), (2, 3))
        self.assertRaises(ValueError, kxstr.strip, b"", keep=["bold"])


class Package(unittest.TestCase):
    def test_the_examples_of_the_documentation(self):
        modules = [module for name, module in sys.modules.items() if name.split(".")[0] == "kxstr"]
        results = [doctest.testmod(module) for module in modules]
        self.assertEqual((sum(result.failed for result in results), min(8, sum(result.attempted for result in results))), (0, 8))
        page = doctest.testfile(str(ROOT / "docs" / "python.md"), module_relative=False, encoding="utf-8")
        self.assertEqual((page.failed, page.attempted > 10), (0, True))

    def test_version_and_library(self):
        self.assertEqual(kxstr.__version__, os.environ["KXSTR_VERSION"])
        script = "import kxstr; kxstr.decode(b'', 852)"
        told = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, check=False,
                              env={**os.environ, "KXSTR_LIBRARY": "/nowhere/libkxstr.so.1"})  # fmt: skip
        self.assertIn("LibraryNotFound: the library kxstr cannot be loaded", told.stderr)


if __name__ == "__main__":
    unittest.main()
