#!/usr/bin/env python3
"""streams_test.py KX: runs `kx convert`, `kx strip` and `kx dump` on document streams as a user does."""
import random
import re
import unittest

from kx_tool import CHUNK, TEXTS, KxTest, kx, units


def group(content, size=None):
    size = (len(content) + 7 if size is None else size).to_bytes(2, "little")
    return b"\xd4\x01" + size + content + size + b"\xef"


# Sound, and all that a stream can hold.
EVERYTHING = (b"A\x80\x84\x85\xcc\xcf\x90\xff" + b"\xf2\x0c\xf2" + b"\xf0\x29\x01\xf0" + b"\xf3\x0c\xf3" +
              b"\xf0\x09\xf9\xf0" + group(b"text\0\xcc") + b"\xf1\0\0\0\xf9" + b"\xfd\0\0\0\0\0\0\xfe" + b"z")


class Streams(KxTest):
    def convert(self, source, target, data, *options):
        return self.output("convert", "-f", source, "-t", target, *options, data=data)

    def test_what_becomes_of_each_code(self):
        for why, source, target, data, wanted in (
            ("line ends have codes", "1252", "stream", b"A\xe9\r\n", b"A\xf0\x29\x01\xf0\xcf\xcc"),
            ("tab and form feed are extended", "1252", "stream", b"\t\f", b"\xf0\x09\xf9\xf0\xf0\x0c\xf9\xf0"),
            ("only text comes out", "stream", "utf-8", EVERYTHING + b"\0", "A --\n\ré\tz".encode()),
            ("KX text takes the codes, too", "stream", "kx", EVERYTHING,
             units(0x41, 0x20, 0x84, 0x85, 0xF90A, 0xF90D, 0xFE18, 0x129, 0xFE19, 0xF909, 0x7A)),
            ("and gives them back", "kx", "stream", units(0x84, 0xFE00, 0xFE1F), b"\x84\xf2\x00\xf2\xf3\x0f\xf3"),
            ("an attribute that KX text lacks", "stream", "kx", b"\xf2\x10\xf2", b""),
            ("KX 5 has numbers of its own", "kx", "stream5", units(0x41, 0x118), b"A\xc0\x08\x02\xc0"),
            ("and two units in one", "stream5", "kx", b"\xc0\x08\x02\xc0\xc0\x09\x0b\xc0\0",
             units(0x118, 0xB08, 0xB3D)),
            ("attributes of KX 5", "stream5", "kx", b"\xc3\x05\xc3\xc4\x05\xc4", units(0xFE0A, 0xFE0B)),
            ("are no text", "stream5", "utf-8", b"\xc3\x05\xc3a\xd1\0\x02\0\x55\x66b\x0a", b"ab\n"),
            ("a space of KX 5 is no pair", "932", "stream5", b"a !", b"\x21a \x21!"),
            ("sio", "kx", "sio", units(0x100, 0xF909, 0xF90D, 0xF90A, 0xFE04, 0xFE05, 0xFE18, 0xFE1D),
             b"\xfd\x00\x01\x09\x0d\x0d\x0e\x03\x0f\x03\x1d\x15"),
            ("East Asian characters in sio", "932", "sio", b"\x82\xa0", b"\xfd\x5f\x25"),
        ):
            with self.subTest(why):
                self.assertEqual(self.convert(source, target, data), wanted)

    def test_pairs_of_kx5(self):
        for page, data, wanted in (
            ("932", b"\x21A \x26\x22\x22\x31\x7f!\n", units(0x41, 0x20, 0x255F, 0xB10, 0xF90A)),
            ("936", b"\x21A \x22\x21\x23\x21", units(0x41, 0x20, 0x8200, 0x825E)),
            ("950", b"\x22\x21", units(0xA500)),
            ("1252", b"\x21A \x26", units(0x21, 0x41, 0x20, 0x26)),
        ):
            self.assertEqual(self.convert("stream5", "kx", data, "--ansi=" + page), wanted, page)

    def test_samples_come_back(self):
        for path in sorted(TEXTS.glob("*.txt")):
            page, text = path.stem.rsplit("-", 1)[1], path.read_bytes()
            for form in ("stream", "stream5"):
                self.assertEqual(self.convert(form, page, self.convert(page, form, text)), text, (path.name, form))

    def test_what_does_not_convert(self):
        for source, target, data, place in (
            ("kx", "stream", units(0x41, 0), "byte 2: 00 00"),
            ("kx", "stream", units(0x41, 0xFB05), "byte 2: 05 FB"),
            ("kx", "stream5", units(0x41, 0x1EA), "byte 2: EA 01"),
            ("kx", "stream5", units(0x41, 0x1F), "byte 2: 1F 00"),
            ("kx", "sio", units(0x41, 0xF90C), "byte 2: 0C F9"),
            ("stream", "437", b"\x90\xf0\x48\x04\xf0\x90", "byte 1: F0 48 04 F0"),
            ("stream", "utf-8", b"a\0b", "byte 1: 00"),
            ("stream5", "utf-8", b"a\xc0\x41\x04a", "byte 1: C0"),
            ("stream5", "utf-8", b"a\xd0\x00\x02\x00a", "byte 1: D0"),
            ("stream5", "932", b"\x21A\x21", "byte 2: 21"),
            ("stream5", "932", b"\x21A\x21\0b", "byte 2: 21"),
        ):
            with self.subTest(source=source, data=data):
                self.assert_fails(f"convert -f {source} -t {target}", data=data, output=None,
                                  message=re.compile(place.replace(": ", r": (U\+[0-9A-F]+ \()?") + r"\)? does not convert"))
        self.assert_fails("convert -f sio -t kx", message="sio text is only written", status=2)

    def test_what_strip_keeps(self):
        for options, wanted in (
            ("", "A éz"),
            ("--keep=hard", "A \néz"),
            ("--keep=soft --soft-as-space", "A \réz"),
            ("--soft-as-space -t 1252", b"A  \xe9z"),
            ("--hyphens --keep=attributes", "A --éz"),
            ("--keep=hard --hyphens", "A --\néz"),
            ("--keep=attributes,hard,soft,tabs -t stream",
             b"A \xcc\xcf\xf2\x0c\xf2\xf0\x29\x01\xf0\xf3\x0c\xf3\xf0\x09\xf9\xf0z"),
        ):
            with self.subTest(options):
                wanted = wanted.encode() if isinstance(wanted, str) else wanted
                self.assertEqual(self.output("strip " + options, data=EVERYTHING), wanted)
        self.assertEqual(self.output("strip", data=b"\xf0\x5f\x25\xf0").decode(), "あ")
        for kept in ("bold", "hard,"):
            self.assert_fails("strip --keep=" + kept, message="cannot keep", status=2)
        self.assert_fails("strip", data=b"ab" + group(b"x", size=0xFFFF) + b"c", output=b"ab",
                          message="byte 2: D4 does not convert")
        self.assertEqual(self.output("strip -c", data=b"a\xd4b\0\0c"), b"abc")


def listed(data, *options):
    """The codes of a listing as (offset, bytes, meaning), and the result."""
    result = kx("dump", *options, data=data)
    codes = []
    for line in result.stdout.decode().splitlines():
        begin = re.match(r"([0-9A-F]{8,}) +(\d+)  ([0-9A-F ]+?) {2,}(\S.*)", line)
        if begin:
            codes.append((int(begin[1], 16), bytes.fromhex(begin[3]), re.sub(" {2,}", " ", begin[4])))
        else:
            offset, some, meaning = codes.pop()
            codes.append((offset, some + bytes.fromhex(line), meaning))
    return codes, result


class Dump(KxTest):
    def test_every_kind_of_code(self):
        codes, result = listed(EVERYTHING + b"\0", "-")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(b"".join(code[1] for code in codes), EVERYTHING + b"\0")
        self.assertEqual([(code[0], code[2]) for code in codes], [
            (0, "character 0041 U+0041 A LATIN CAPITAL LETTER A"), (1, "space"), (2, "hyphen"), (3, "hyphen"),
            (4, "hard line end"), (5, "soft line end"), (6, "function code"), (7, "function code"),
            (8, "attribute 12 on"), (11, "extended 0129 U+00E9 é LATIN SMALL LETTER E WITH ACUTE"),
            (15, "attribute 12 off"), (18, "extended F909 U+0009"), (22, "group"), (35, "fixed-length code"),
            (40, "fixed-length code"), (48, "character 007A U+007A z LATIN SMALL LETTER Z"), (49, "end of stream")])
        for stream, option, wanted in ((b"\xf0\x64\x82\xf0", "-", "U+2176 ⅶ"),
                                       (b"\xf0\xd8\xa6\xf0", "-", "一 CJK UNIFIED IDEOGRAPH-4E00"),
                                       (b"\xf0\xff\xff\xf0", "-", "no Unicode value"),
                                       (b"\xf0\xbc\x2b\xf0", "--ansi=950", "2BBC U+EEB8")):
            self.assertIn(wanted, listed(stream, option)[0][0][2])

    def test_codes_that_lie(self):
        for stream, fault in (
            (group(b"")[:-1], "group runs past the end"),
            (group(b"x", size=0) + b"b", "group has no room for its ends"),
            (group(b"x", size=6) + b"b", "group has no room for its ends"),
            (group(b"x")[:-1] + b"\xf0b", "group is not closed"),
            (b"\xd4\1\x08\0x\x09\0\xd4b", "group ends with another size"),
            (b"\xf0\x41\x01", "fixed-length code runs past the end"),
            (b"\xf0\x41\x01\x41", "fixed-length code is not closed"),
            (b"\xf0\x41\x01\xf1", "fixed-length code ends with another size"),
        ):
            with self.subTest(stream):
                codes, result = listed(b"a" + stream)
                self.assertEqual(codes[1], (1, stream[:1], "LIES: " + fault))
                self.assertEqual(result.returncode, 1)
                self.assertRegex(result.stderr.decode(), r"kx dump: \(standard input\): .* at byte 1\n")

    def test_any_bytes(self):
        chance = random.Random(4)
        kinds = list(range(256)) + [0xD0, 0xD4, 0xEF, 0xF0, 0xF0, 0xF0, 0xF2, 0xF3, 0, 0, 4, 7] * 8
        for size in [0, 1, 5, 30, 300, 3000] * 4:
            data = bytes(chance.choices(kinds, k=size))
            codes, result = listed(data)
            self.assertEqual(b"".join(code[1] for code in codes), data)
            lies = any(code[2].startswith("LIES") for code in codes)
            self.assertEqual(result.returncode, 1 if lies else 0)
            for command in ("strip -c", "convert -c -f stream -t utf-8", "convert -c -f stream5 -t utf-8"):
                self.output(command, data=data)

    def test_no_code_is_cut_at_the_edge_of_a_chunk(self):
        for code in (b"\xf0\x29\x01\xf0", group(b"z" * 65528)):
            for shift in (0, 1, 2, 3, len(code) - 1, len(code)):
                before = b"a" + group(b"g" * (CHUNK - shift - 8)) if shift < CHUNK - 8 else b""
                codes, result = listed(before + code + b"b")
                self.assertEqual(result.returncode, 0)
                self.assertEqual([c[:2] for c in codes[-2:]], [(len(before), code), (len(before + code), b"b")])


if __name__ == "__main__":
    unittest.main()
