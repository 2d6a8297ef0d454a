#!/usr/bin/env python3
"""letters_test.py KX: runs `kx case`, `kx width` and `kx han` as a user does."""
import unittest

from kx_tool import CHUNK, KxTest, kx


class Letters(KxTest):
    def test_cases(self):
        for why, arguments, text, wanted in (
            ("every script with case", "case upper --country=japanese", "abc é жя αω ａｚ", "ABC É ЖЯ ΑΩ ＡＺ"),
            ("small letters", "case lower --country=japanese", "ABC É ЖЯ ΑΩ ＡＺ", "abc é жя αω ａｚ"),
            ("no country, no double-width case", "case upper --ansi=932 --country=none", "a ａ", "A ａ"),
            ("a country by its language", "width single --country=ko_KR", "Ａ", "A"),
            ("narrow", "width single --country=korean", "Ａｂ１！", "Ab1!"),
            ("widen, marks combine", "width double --country=japanese", "Aｶﾞﾊﾟｱﾞﾞｱ", "Ａガパア゛゛ア"),
            ("a lone mark", "width double --country=japanese", "ﾞａ", "゛ａ"),
            ("marks split", "width single --country=japanese", "ガパア", "ｶﾞﾊﾟｱ"),
            ("hiragana", "width hiragana --country=japanese", "カガパ ｶﾞｱ a", "かがぱ があ a"),
            ("katakana", "width katakana --country=japanese", "かがぱ ｶﾞ", "カガパ ｶﾞ"),
            ("the Chinese have kana the other way round", "width hiragana --country=simplified-chinese", "カナ", "かな"),
            ("likewise", "width katakana --country=simplified-chinese", "かな", "カナ"),
            ("NUL is no kana", "width double --country=japanese", "a\0b", "ａ\0ｂ"),
            ("nor is it one here", "width katakana --country=japanese", "\0", "\0"),
            ("line ends and tabs stay", "width double --country=japanese", "a\tb\r\n", "ａ\tｂ\r\n"),
            ("simplified", "han gb", "會走路的鐘樓", "会走路的钟楼"),
            ("what has no counterpart stays", "han big5", "abc é Ж 会", "abc é Ж 會"),
            ("nothing gives nothing", "width double --country=japanese", "", ""),
        ):
            with self.subTest(why):
                self.assertEqual(self.output(arguments, data=text.encode()).decode(), wanted)

    def test_code_pages_name_country_and_output(self):
        for arguments, data, wanted in (
            ("width double -f 932", "ｶﾞA".encode("cp932"), "ガＡ".encode("cp932")),
            ("width double -f utf-8 -t 932", "ｶﾞA".encode(), "ガＡ".encode("cp932")),
            ("width single -f kx -t utf-8 --ansi=932", b"\x20\x25", b"A"),
            ("han big5 -f 936", "会".encode("gbk"), "會".encode("big5")),
            ("han gb -f big5", "會".encode("big5"), "会".encode("gbk")),
            ("han big5 -f 936 -t utf-8", "会".encode("gbk"), "會".encode()),
            ("han gb -f utf-8 -t 936", "會".encode(), "会".encode("gbk")),
            ("han gb -f kx -t kx", b"\x01\xa5", b"\xc7\x82"),
        ):
            with self.subTest(arguments):
                self.assertEqual(self.output(arguments, data=data), wanted)

    def test_marks_across_chunks(self):
        # From Shift-JIS one byte a character: the pair lies before, across and behind the end of the first chunk.
        for before in range(CHUNK - 3, CHUNK + 1):
            data = b"a" * before + "ｶﾞ".encode("cp932")
            self.assertEqual(self.output("width double -f 932", data=data).decode("cp932"), "ａ" * before + "ガ")
        alternating = b"a" + "ﾊﾟ".encode("cp932") * CHUNK
        self.assertEqual(self.output("width double -f 932", data=alternating).decode("cp932"), "ａ" + "パ" * CHUNK)

    def test_all_characters_as_in_kx_text(self):
        for page, country, actions in (
            ("932", "JP", ("width double", "width single", "width hiragana", "width katakana", "case upper")),
            ("949", "KR", ("width double", "width single")), ("936", "CS", ("han big5", "case lower")), ("950", "CT", ("han gb",)),
            ("1253", "none", ("case upper",)),
        ):
            mark = b"\xde" if page == "932" else b"!"
            codec = "cp" + page
            codes = {chr(unit).encode(codec, "ignore") for unit in range(0x20, 0xFFFF)} - {b""}
            lines = [code + behind for code in sorted(codes) for behind in (b"", mark)]
            as_kx = self.output(f"convert -q -c -f {page} -t kx", data=b"\n".join(lines))
            back = self.output(f"convert -f kx -t {page}", data=as_kx).split(b"\n")
            lines = [line for line, again in zip(lines, back, strict=True) if line == again]
            self.assertGreater(len(lines), 400)
            data = b"\n".join(lines)
            as_kx = self.output(f"convert -f {page} -t kx", data=data)
            for action in actions:
                options = "" if action.startswith("han") else f" --country={country}"
                directly = self.output(f"{action} -q -c -f {page} -t utf-8{options}", data=data).split(b"\n")
                changed = self.output(f"{action} -f kx -t kx --ansi={page}{options}", data=as_kx)
                by_kx = self.output(f"convert -q -c -f kx --ansi={page} -t utf-8", data=changed).split(b"\n")
                for line, ours, other in zip(lines, directly, by_kx, strict=True):
                    # What KX text lacks stays what it is.
                    same = line.decode(codec).encode()
                    self.assertIn(ours, (other, same) if len(other) < len(same) else (other,), (page, action, line))

    def test_faults(self):
        for arguments, message in (
            ("case", "nothing to do is named"),
            ("case sideways", "does not know 'sideways'"),
            ("width double", "of which country?"),
            ("width double --country=atlantis", "no country 'atlantis'"),
            ("han latin", "does not know 'latin'"),
        ):
            with self.subTest(arguments):
                self.assert_fails(arguments, data=b"a", message=message, status=2)
        self.assert_fails("width single -f 932 -t 1252", data="aガb".encode("cp932"), output=b"a",
                          message="83 4B) does not convert from 932 to 1252")

    def test_what_no_rule_knows_stays(self):
        for why, arguments, data, wanted in (
            ("a character that KX lacks", "case upper", "e🚢".encode(), "E🚢".encode()),
            ("one that KX unites", "case upper -f 1250", b"a\xadb", b"A\xadB"),
            ("a counterpart in KX text only", "case upper", "ŉ".encode(), "ŉ".encode()),
            ("a mark", "case upper", "e\u0301".encode(), "E\u0301".encode()),
            ("a letter whose counterpart the page lacks", "case upper -f 437", b"na\x8b", b"NA\x8b"),
            ("also in two units", "width single -f 932 -t 936", "aガb".encode("cp932"), "aガb".encode("gbk")),
            ("all of GBK", "case upper -f gbk", b"a\x81\x40", b"A\x81\x40"),
            ("an encoding of the system", "case upper -f koi8-r", "жЖ\u00a0x".encode("koi8-r"), "ЖЖ\u00a0X".encode("koi8-r")),
        ):
            with self.subTest(why):
                self.assertEqual(self.output(arguments, data=data), wanted)
        for arguments in ("case upper -t kx", "case upper -t 437"):
            result = kx(arguments, data="a\u00adb".encode())
            self.assertEqual((result.returncode, "U+00AD (1)" in result.stderr.decode()), (0, True), arguments)
            self.assert_fails(arguments + " --strict", data="a\u00adb".encode(), message="becomes another character", output=None)


if __name__ == "__main__":
    unittest.main()
