#!/usr/bin/env python3
"""exact_test.py KX: every byte and pair of bytes of every page with a published mapping, and every character up to
U+FFFF to each of them, beside Python's own codecs: the same, or one of the differences that are stated here."""
import unittest

from kx_tool import KxTest

SINGLE = {number: f"cp{number}" for number in """437 737 775 850 852 855 857 860 861 862 863 864 865 866 869
          1250 1251 1252 1253 1254 1255 1256 1257 1258""".split()}
SINGLE |= {f"iso-8859-{part}": f"iso8859_{part}" for part in (1, 2, 6, 7, 8)} | {"10001": "mac_roman"}
DOUBLE = {"932": "cp932", "936": "gbk", "949": "cp949", "950": "cp950"}
# Code: character of ours, where the codec has another.
OTHERS = {"864": {b"\x25": "%"}, "10001": {b"\xdb": "\u00a4"}}
# Codes that the codec refuses, apart from those for control characters above 7F and for private use, which Windows has.
MORE = {"1255": {b"\xca": "\u05ba"}, "936": {b"\x80": "€"}}
BMP = [chr(unit) for unit in range(0x10000) if not 0xD800 <= unit <= 0xDFFF and unit != ord("\n")]
# To 1258, as letter and tone.
TONES = "\u0300\u0309\u0303\u0301\u0323"


def is_for_windows_alone(character):
    return "\x80" <= character <= "\x9f" or "\ue000" <= character <= "\uf8ff"


def read(code, codec):
    """The character of a code; nothing where it is none, or two."""
    # Python has another maker's characters there; in the published mapping they are for private use.
    if codec == "cp950" and b"\xc6\xa1" <= code <= b"\xc7\xfc":
        return ""
    try:
        text = code.decode(codec)
    except UnicodeError:
        return ""
    return text if len(text) == 1 else ""


class Exact(KxTest):
    def lines(self, source, target, items):
        return self.output("convert", "-c", "-f", source, "-t", target, data=b"".join(i + b"\n" for i in items)).split(b"\n")

    def decoded(self, page, codec):
        """Code: character, ours and the codec's."""
        codes = [bytes([byte]) for byte in range(256) if byte != 10]
        if page in DOUBLE:
            leads = [lead for lead in range(0x81, 0xFF) if page != "932" or not 0xA0 <= lead <= 0xDF and lead < 0xFD]
            codes += [bytes((lead, trail)) for lead in leads for trail in range(0x40, 0xFF)]
        ours = dict(zip(codes, map(bytes.decode, self.lines(page, "utf-8", codes))))
        return ({code: text for code, text in ours.items() if len(text) == 1},
                {code: read(code, codec) for code in codes if read(code, codec)})

    def test_every_code_and_every_character(self):
        for page, codec in (SINGLE | DOUBLE).items():
            with self.subTest(page):
                ours, theirs = self.decoded(page, codec)
                wanted = theirs | OTHERS.get(page, {}) | MORE.get(page, {})
                more = {code: text for code, text in ours.items() if code not in wanted}
                self.assertEqual([item for item in wanted.items() if ours.get(item[0]) != item[1]], [])
                self.assertEqual([text for text in more.values() if not is_for_windows_alone(text)], [])

                back = dict(zip(BMP, self.lines("utf-8", page, map(str.encode, BMP))))
                codes = dict(zip(BMP, "\n".join(BMP).encode(codec, "ignore").split(b"\n")))
                codes = {text: code if read(code, codec) or len(code) != 2 else b"" for text, code in codes.items()}
                for code, text in OTHERS.get(page, {}).items():
                    codes[theirs[code]], codes[text] = b"", code
                differ = {text: code for text, code in back.items() if code != codes[text]}
                for text, code in differ.items():
                    if page == "1258" and len(code) == 2:
                        self.assertIn(code.decode(codec)[1], TONES)
                    elif not code:  # refused where the codec's own code leads to another character
                        self.assertNotEqual(read(codes[text], codec), text)
                    elif read(code, codec) != text:  # else it has two codes, and Windows takes the other one
                        self.assertEqual(ours.get(code), text)
                        self.assertTrue(is_for_windows_alone(text) or text in MORE.get(page, {}).values(), text)
                if page == "1258":
                    self.assertEqual(sum(len(code) == 2 for code in back.values()), 104)

    def test_encodings_without_a_table(self):
        for name, codec in {"720": "cp720", "858": "cp858", "koi8-r": "koi8_r", "874": "cp874", "euc-jp": "euc_jp",
                            **{f"iso-8859-{part}": f"iso8859_{part}" for part in (5, 9, 15)}}.items():
            with self.subTest(name):
                texts = [text for text in BMP if len(text.encode(codec, "ignore")) > 0 and text not in "¥‾\\~"]
                codes = [text.encode(codec) for text in texts]
                pairs = [(text, code) for text, code in zip(texts, codes) if code.decode(codec) == text]
                ours = self.lines(name, "utf-8", [code for _, code in pairs])
                back = self.lines("utf-8", name, [text.encode() for text, _ in pairs])
                self.assertEqual([pair for pair, text in zip(pairs, ours) if text != pair[0].encode()], [])
                self.assertEqual([pair for pair, code in zip(pairs, back) if code != pair[1]], [])

    def test_unicode_to_unicode(self):
        text = "".join(BMP) + "\n" + "".join(map(chr, range(0x10000, 0x110000, 0x3FB)))
        forms = ("utf-8", "utf-16le", "utf-16be")
        for source in forms:
            for target in forms:
                with self.subTest(source, target=target):
                    result = self.output("convert", "-f", source, "-t", target, data=text.encode(source))
                    self.assertEqual(result.decode(target), text)


if __name__ == "__main__":
    unittest.main(argv=["exact_test.py"])
