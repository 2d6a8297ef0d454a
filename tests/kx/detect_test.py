#!/usr/bin/env python3
"""detect_test.py KX: runs `kx detect` as a user does."""
import json
import pathlib
import re
import tempfile
import unittest

from kx_tool import KxTest

PAGES = pathlib.Path(__file__).resolve().parents[2] / "data" / "detect" / "pages.txt"
CZECH = "Příliš žluťoučký kůň úpěl ďábelské ódy, ale nikdo ho neslyšel."
RUSSIAN = "Съешь же ещё этих мягких французских булок, да выпей чаю."


class Detect(KxTest):
    def answer(self, data):
        return self.output("detect", data=data).decode().removeprefix("(standard input): ").strip().split(" ")

    def test_texts(self):
        for text, language, codecs in (
            (CZECH, "cs", {"1250": "cp1250", "852": "cp852", "iso-8859-2": "iso8859-2", "utf-8": "utf-8"}),
            ("Zażółć gęślą jaźń. Wszyscy ludzie rodzą się wolni i równi.", "pl", {"1250": "cp1250", "852": "cp852"}),
            ("Árvíztűrő tükörfúrógép, és minden ember szabadnak születik.", "hu", {"1250": "cp1250", "852": "cp852"}),
            (RUSSIAN, "ru", {"1251": "cp1251", "866": "cp866", "koi8-r": "koi8-r", "855": "cp855",
                             "iso-8859-5": "iso8859-5", "utf-16le": "utf-16le", "utf-16be": "utf-16be"}),
            (RUSSIAN.replace("Съ", "Съ Аз"), "ru", {"mac-cyrillic": "mac-cyrillic", "utf-32be": "utf-32-be"}),
            ("Єдиний їжак з'їв усі ґудзики, і ніхто його не бачив.", "uk", {
                "koi8-u": "koi8-u", "1251": "cp1251", "utf-7": "utf-7"}),
            (RUSSIAN.upper(), "ru", {"1251": "cp1251", "866": "cp866", "koi8-r": "koi8-r"}),
            ("Τα λεφτά δεν φέρνουν πάντα την ευτυχία στους ανθρώπους.", "el", {"1253": "cp1253", "737": "cp737"}),
            ("Voilà l’été où les élèves n’ont rien à faire.", "fr", {"1252": "cp1252", "10001": "mac-roman"}),
            ("Voilà l'été où les élèves français sont gâtés.", "fr", {"850": "cp850", "1252": "latin-1"}),
            ("Die Größe der Bücher änderte sich für die Schüler völlig.", "de", {"1252": "cp1252", "850": "cp850"}),
            ("כל בני האדם נולדו בני חורין ושווים בערכם.", "he", {"1255": "cp1255", "862": "cp862"}),
            ("يولد جميع الناس أحرارا متساوين في الكرامة والحقوق.", "ar", {"1256": "cp1256", "720": "cp720"}),
            ("Bütün insanlar hür, haysiyet ve haklar bakımından eşit doğarlar.", "tr", {"1254": "cp1254", "857": "cp857"}),
            ("มนุษย์ทั้งหลายเกิดมามีอิสระและเสมอภาคกัน", "th", {"874": "cp874"}),
            ("すべての人間は、生まれながらにして自由である。", "ja", {
                "932": "cp932", "utf-16le": "utf-16le", "euc-jp": "euc-jp", "iso-2022-jp": "iso2022-jp",
                "utf-32le": "utf-32"}),
            ("모든 인간은 태어날 때부터 자유로우며 동등하다.", "ko", {"949": "cp949"}),
            ("人人生而自由，在尊严和权利上一律平等。", "zh-CN", {"936": "gbk", "utf-8": "utf-8"}),
            ("人人生而自由，在尊嚴和權利上一律平等。", "zh-TW", {"950": "big5"}),
            ("All human beings are born free and equal.", "en", {"ascii": "ascii"}),
        ):
            for page, codec in codecs.items():
                with self.subTest(page=page, text=text):
                    self.assertEqual(self.answer(text.encode(codec))[:2], [page, language])

    def test_other_contents(self):
        broken = CZECH.encode() + b"\xe9\xff"
        frame = "╔══════════════╗\n║ Größe: 12    ║\n║ Fußgänger    ║\n╚══════════════╝\n"
        for why, data, wanted in (
            ("a program", b"\x7fELF\x02\x01\x01\0\0\0\x03\0\x3e\0", "binary"),
            ("packed data", bytes((number * number * 7 + number * 13) & 0xFF for number in range(1, 400)), "binary"),
            ("a few broken bytes", broken, r"utf-8 cs [\d.]+% \(2 bytes are not UTF-8\)"),
            ("cut off inside a character", CZECH[:9].encode()[:-1], r"utf-8 \S+ [\d.]+%"),
            ("a mark alone", b"\xff\xfe", r"utf-16le - 100.0%"),
            ("nothing", b"", r"ascii - 100.0%"),
            ("sums are no UTF-7", b"C++, 1+1, a+ABC- and +information-", r"ascii \S+ [\d.]+%"),
            ("a frame is of DOS", frame.encode("cp850"), r"850 de [\d.]+%"),
        ):
            with self.subTest(why):
                self.assertRegex(self.output("detect", data=data).decode(), rf"^\(standard input\): {wanted}\n$")

    def test_pages_that_nobody_knows(self):
        for text, codec in (("모든 인간은 태어날 때부터 자유로우며 동등하다.", "johab"), (CZECH, "mac-latin2"), (CZECH, "cp037"),
                            ("Τα λεφτά δεν φέρνουν πάντα την ευτυχία στους ανθρώπους.", "mac-greek")):
            with self.subTest(codec):
                self.assertLess(float(self.answer(text.encode(codec, "replace"))[2].rstrip("%")), 75)
                self.assert_fails("convert -f auto -t utf-8", data=text.encode(codec, "replace"), output=None,
                                  message="no answer stands alone")

    def test_files_and_forms(self):
        with tempfile.TemporaryDirectory() as folder:
            paths = [pathlib.Path(folder) / name for name in ('a "quoted"\tname', "missing", "b")]
            for path in (paths[0], paths[2]):
                path.write_bytes(CZECH.encode("cp852"))
            lines = self.output("detect", "-n", "2", paths[0]).decode().splitlines()
            self.assertEqual([line.split(": ")[1].split()[0] for line in lines][0], "852")
            self.assertEqual(len(lines), 2)
            answer = json.loads(self.output("detect", "--json", paths[0]))
            self.assertEqual((answer["file"], answer["answers"][0]["language"]), (str(paths[0]), "cs"))
            # A file that cannot be read does not keep the others from being told.
            self.assert_fails("detect", *paths, message="missing", output=None)
        self.assert_fails("detect --top 0", message="is no number from 1 up", status=2)

    def test_convert_from_auto(self):
        with tempfile.TemporaryDirectory() as folder:
            texts = {"cs": CZECH.encode("cp852"), "ru": RUSSIAN.encode("cp866"), "close": "ABC À DEF".encode("cp850"),
                     "program": b"\x7fELF\0\0"}
            path = {name: str(pathlib.Path(folder) / name) for name in texts}
            for name, data in texts.items():
                pathlib.Path(path[name]).write_bytes(data)
            convert = "convert", "-f", "auto", "-t", "utf-8"
            self.assertEqual(self.output(*convert, path["cs"], path["ru"]).decode(), CZECH + RUSSIAN)
            self.assert_fails(*convert, path["close"], message="take the first one by --yes")
            self.assertNotEqual(self.output(*convert, "--yes", path["close"]), b"")
            self.assert_fails(*convert, path["program"], message="does not convert from binary")
            self.assertEqual(self.output(*convert, data=RUSSIAN.encode("koi8-r")).decode(), RUSSIAN, "from a pipe")

    def test_pages_are_those_of_convert(self):
        # Each byte that is a letter in the detector's table is that letter in the converter's.
        for name, _, table in re.findall(r"^page (\S+) (\d+)\n((?:..: .*\n)+)", PAGES.read_text(), flags=re.M):
            codes = [field for line in table.splitlines() for field in line.split()[1:]]
            letters = {byte: chr(int(code, 16)) for byte, code in enumerate(codes, 0x80)
                       if code != "-" and chr(int(code, 16)).isalpha()}
            with self.subTest(name):
                done = self.output("convert", "-f", name, "-t", "utf-8", data=b" ".join(map(bytes, zip(letters))))
                self.assertEqual(done.decode().split(" "), list(letters.values()))


if __name__ == "__main__":
    unittest.main()
