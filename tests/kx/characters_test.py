#!/usr/bin/env python3
"""characters_test.py KX: the whole of ASCII in `kx dump` and in streams of the older generation; counts; help."""
import re
import unicodedata
import unittest

from kx_tool import KxTest, kx, units


class Characters(KxTest):
    def test_names_are_those_of_unicode(self):
        listed = self.output("dump", data=bytes(range(0x20, 0x7F))).decode().splitlines()
        names = [re.search(r"U\+(....)  .  (.*)", line).groups() for line in listed]
        self.assertEqual(names, [(f"{code:04X}", unicodedata.name(chr(code))) for code in range(0x20, 0x7F)])

    def test_ascii_in_streams_of_the_older_generation(self):
        text = bytes(range(0x20, 0x80))
        self.assertEqual(self.output("convert -f kx -t stream5", data=units(*text)), text)
        self.assert_fails("convert -f kx -t stream5", data=units(0x1F), message="does not convert")

    def test_characters_of_two_bytes_are_counted(self):
        result = kx("convert -v -f 932 -t 949", data="aあい\n".encode("cp932"))
        self.assertEqual((result.stdout, result.returncode), ("aあい\n".encode("cp949"), 0))
        self.assertRegex(result.stderr, rb"\b4 characters")

    def test_help_tells_only_what_there_is(self):
        shown = self.output("sort --help").decode()
        self.assertIn("--ignore-case", shown)
        self.assertNotRegex(shown, "null\\)|month-sort  ")


if __name__ == "__main__":
    unittest.main()
