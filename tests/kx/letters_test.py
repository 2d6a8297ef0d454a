#!/usr/bin/env python3
"""letters_test.py KX: runs `kx case`, `kx width` and `kx han` as a user does."""
import os
import subprocess
import sys
import unittest

KX = ""
CHUNK = 64 * 1024  # bytes that the tool reads at once


def run(arguments, data, **settings):
    kept = {name: value for name, value in os.environ.items() if not name.startswith(("KX_", "LC_", "LANG"))}
    return subprocess.run([KX, *arguments.split()], input=data, capture_output=True,
                          env=kept | {"LC_ALL": "C"} | settings, check=False, timeout=60)


class Letters(unittest.TestCase):
    CASES = (
        # why, arguments, input, output
        ("every script with case", "case upper --country=japanese", "abc é жя αω ａｚ", "ABC É ЖЯ ΑΩ ＡＺ"),
        ("small letters", "case lower --country=japanese", "ABC É ЖЯ ΑΩ ＡＺ", "abc é жя αω ａｚ"),
        ("no country, no double-width case", "case upper --ansi=932 --country=none", "a ａ", "A ａ"),
        ("widen", "width double --country=japanese", "Ab1!", "Ａｂ１！"),
        ("narrow", "width single --country=korean", "Ａｂ１！", "Ab1!"),
        ("marks combine", "width double --country=japanese", "ｶﾞﾊﾟｱﾞﾞ", "ガパア゛゛"),
        ("a lone mark", "width double --country=japanese", "ﾞａ", "゛ａ"),
        ("marks split", "width single --country=japanese", "ガパア", "ｶﾞﾊﾟｱ"),
        ("hiragana", "width hiragana --country=japanese", "カガパ ｶﾞｱ a", "かがぱ があ a"),
        ("katakana", "width katakana --country=japanese", "かがぱ ｶﾞ", "カガパ ｶﾞ"),
        ("the tables of the Chinese hold the kana the other way round", "width hiragana --country=simplified-chinese",
         "カナ", "かな"),
        ("likewise", "width katakana --country=simplified-chinese", "かな", "カナ"),
        ("NUL is no kana", "width double --country=japanese", "a\0b", "ａ\0ｂ"),
        ("line ends and tabs stay", "width double --country=japanese", "a\tb\r\n", "ａ\tｂ\r\n"),
        ("simplified", "han gb", "會走路的鐘樓", "会走路的钟楼"),
        ("traditional", "han big5", "会走路的", "會走路的"),
        ("what has no counterpart stays", "han big5", "abc é Ж", "abc é Ж"),
        ("nothing gives nothing", "width double --country=japanese", "", ""),
    )

    def test_cases(self):
        for why, arguments, text, wanted in self.CASES:
            with self.subTest(why):
                result = run(arguments, text.encode())
                self.assertEqual((result.stdout.decode(), result.stderr, result.returncode), (wanted, b"", 0))

    def test_code_pages_name_country_and_output(self):
        cases = (
            ("width double -f 932", "ｶﾞA".encode("cp932"), "ガＡ".encode("cp932")),
            ("width double -f utf-8 -t 932", "ｶﾞA".encode(), "ガＡ".encode("cp932")),
            ("width single -f kx -t utf-8 --ansi=932", b"\x20\x25", b"A"),
            ("han big5 -f 936", "会".encode("gbk"), "會".encode("big5")),
            ("han gb -f big5", "會".encode("big5"), "会".encode("gbk")),
            ("han big5 -f 936 -t utf-8", "会".encode("gbk"), "會".encode()),
            ("han gb -f utf-8 -t 936", "會".encode(), "会".encode("gbk")),
            ("han gb -f kx -t kx", b"\x01\xa5", b"\xc7\x82"),
        )
        for arguments, data, wanted in cases:
            with self.subTest(arguments):
                result = run(arguments, data)
                self.assertEqual((result.stdout, result.stderr, result.returncode), (wanted, b"", 0))

    def test_marks_across_chunks(self):
        # From Shift-JIS one byte a character: the pair lies before, across and behind the end of the first chunk.
        for shift in range(4):
            data = b"a" * (CHUNK - 2 + shift - 1) + "ｶﾞ".encode("cp932")
            wanted = ("ａ" * (CHUNK - 2 + shift - 1) + "ガ").encode("cp932")
            with self.subTest(shift=shift):
                self.assertEqual(run("width double -f 932", data).stdout, wanted)
        alternating = "ﾊﾟ".encode("cp932") * CHUNK
        self.assertEqual(run("width double -f 932", alternating).stdout, "パ".encode("cp932") * CHUNK)
        self.assertEqual(run("width double -f 932", b"a" + alternating).stdout, "ａ".encode("cp932") +
                         "パ".encode("cp932") * CHUNK)

    def test_faults(self):
        cases = (
            ("case", "nothing to do is named"),
            ("case sideways", "does not know 'sideways'"),
            ("width double", "of which country?"),
            ("width double --country=atlantis", "no country 'atlantis'"),
            ("han latin", "does not know 'latin'"),
            ("case upper -f 99999", "no form or code page '99999'"),
        )
        for arguments, message in cases:
            with self.subTest(arguments):
                result = run(arguments, b"a")
                self.assertIn(message, result.stderr.decode())
                self.assertEqual((result.stdout, result.returncode), (b"", 2))

    def test_a_character_without_a_place_in_the_output(self):
        result = run("width single -f 932 -t 936", "aガ".encode("cp932"))
        self.assertEqual((result.stdout, result.returncode), (b"a", 1))
        self.assertIn("byte 1: 83 4B does not convert from 932 to 936", result.stderr.decode())
        self.assertEqual(run("width single -f 932 -t 936 --subst=?", "aガb".encode("cp932")).stdout, b"a??b")


if __name__ == "__main__":
    KX = sys.argv.pop(1)
    unittest.main()
