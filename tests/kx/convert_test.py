#!/usr/bin/env python3
"""convert_test.py KX: runs `kx convert` as a user does. Python's own codecs say what the texts should be."""
import contextlib
import os
import pathlib
import pty
import re
import select
import subprocess
import tempfile
import time
import unittest

from kx_tool import CHUNK, KX, TEXTS, KxTest, environment, kx, units

DOUBLE_BYTE = {"932": "cp932", "936": "gb2312", "949": "euc_kr", "950": "big5"}


class Converts(KxTest):
    def convert(self, source, target, data, *options, **settings):
        return self.output("convert", "-f", source, "-t", target, *options, data=data, **settings)

    def test_cases(self):
        for why, source, target, data, wanted in (
            ("names do not heed case", "CP1252", "UTF-8", b"\xe9", "é".encode()),
            ("aliases", "ISO_8859-1", "Latin1", b"\xe9", b"\xe9"),
            ("both numbers of a page", "28591", "18851", b"\xe9", b"\xe9"),
            ("the other number of 949", "934", "utf-8", b"\xb0\xa1", "가".encode()),
            ("the other number of 950", "utf-8", "938", "中".encode(), b"\xa4\xa4"),
            ("KX text is little-endian", "1252", "kx", b"A\xe9", units(0x41, 0x129)),
            ("NUL is a character", "437", "kx", b"a\0b", units(0x61, 0, 0x62)),
            ("NUL is a character", "utf-16le", "932", b"a\0\0\0b\0", b"a\0b"),
            ("line ends and tabs are codes of KX", "437", "kx", b"\t\n\f\r", units(0xF909, 0xF90A, 0xF90C, 0xF90D)),
            ("and from Unicode", "utf-8", "kx", b"\t\n\f\r", units(0xF909, 0xF90A, 0xF90C, 0xF90D)),
            ("and controls elsewhere", "kx", "utf-16le", units(0xF909, 0xF90A, 0xF90C, 0xF90D), b"\t\0\n\0\f\0\r\0"),
            ("controls are controls, in a DOS page, too", "437", "utf-8", b"\x01\x1b\x7f", b"\x01\x1b\x7f"),
            ("and back", "utf-8", "437", b"\x01\x1b\x7f", b"\x01\x1b\x7f"),
            ("they are glyphs in KX text", "437", "kx", b"\x01\x15\x7f", units(0x507, 0x406, 0x50C)),
            ("glyphs go back to them", "kx", "437", units(0x507, 0x406, 0x50C), b"\x01\x15\x7f"),
            ("and to Unicode", "kx", "utf-8", units(0x507, 0x406, 0x50C), "☺§⌂".encode()),
            ("a byte that is only a glyph is better", "kx", "850", units(0x405, 0x406), b"\xf4\xf5"),
            ("and with a page of other letters", "1252", "850", b"\xb6\xa7", b"\xf4\xf5"),
            ("letters and marks are one in KX text", "utf-8", "kx", "e\u0301x".encode(), units(0x129, 0x78)),
            ("and from 1258", "1258", "kx", b"a\xde\xea\xf2e\xecx", units(0x14D, 0x12B, 0x221, 0x129, 0x78)),
            ("which get their tones back", "kx", "1258", units(0x14D, 0x12B, 0x221), b"a\xde\xea\xf2"),
            ("and two elsewhere", "utf-8", "utf-16le", "e\u0301".encode(), "e\u0301".encode("utf-16le")),
            ("Vietnamese letters that 1258 lacks", "utf-8", "1258", "ệẾỳÃã".encode(), b"\xea\xf2\xca\xecy\xccA\xdea\xde"),
            ("come out as letter and mark", "1258", "utf-8", b"\xea\xf2", "ê\u0323".encode()),
            ("beyond U+FFFF", "utf-8", "utf-16be", "a🚢\uffff\ufeff".encode(), "a🚢\uffff\ufeff".encode("utf-16be")),
            ("beyond U+FFFF", "utf-16le", "utf-8", "a🚢\uffff".encode("utf-16le"), "a🚢\uffff".encode()),
            ("all of GBK", "936", "utf-8", b"\x81\x40\xfe\x4f", b"\x81\x40\xfe\x4f".decode("gbk").encode()),
            ("all of UHC", "utf-8", "949", "갂".encode(), "갂".encode("cp949")),
            ("an undefined byte keeps its place", "1252", "kx", b"\x81", units(0xC81)),
            ("and comes back", "kx", "1252", units(0xC81), b"\x81"),
            ("the no-break space moves with its page", "1252", "437", b"\xa0", b"\xff"),
            ("the no-break space moves with its page", "utf-8", "10001", "\u00a0".encode(), b"\xca"),
            ("Arabic letters are letters", "1256", "utf-8", b"\xc8", "\u0628".encode()),
            ("but forms in a page of forms", "864", "utf-8", b"\xc7", "\ufe8d".encode()),
            ("Greek in a Japanese page", "1253", "932", "αΩ".encode("cp1253"), "αΩ".encode("cp932")),
            ("between double-byte pages", "950", "932", "中文".encode("big5"), "中文".encode("cp932")),
            ("the euro byte", "936", "utf-8", b"\x80", "€".encode()),
            ("names with and without dashes", "cp-1251", "windows866", b"\xe6", "ж".encode("cp866")),
            ("names of pages", "kamenicky", "windows_31j", b"a", b"a"),
            ("UTF-16 by its mark", "utf-16", "utf-8", b"\xfe\xff\0a", b"a"),
            ("low byte first without one", "ucs2", "utf-16", b"a\0", b"a\0"),
            ("UTF-32 by its mark", "utf-32", "utf-8", b"\0\0\xfe\xff\0\1\xf6\xa2", "🚢".encode()),
            ("to an encoding of the system", "utf-8", "koi8-r", "жё".encode(), "жё".encode("koi8-r")),
            ("from one to another", "euc-jp", "gb18030", "漢あ".encode("euc-jp"), "漢あ".encode("gb18030")),
            ("one that shifts", "iso-2022-jp", "932", "あa".encode("iso-2022-jp"), "あa".encode("cp932")),
            ("and back", "932", "iso-2022-jp", "あa".encode("cp932"), "あa".encode("iso-2022-jp")),
            ("one that is not ASCII", "utf-8", "ibm037", b"ab", b"\x81\x82"),
            ("letters and marks from an encoding of the system", "gb18030", "kx", "e\u0301".encode("gb18030"), units(0x129)),
            ("the euro byte", "utf-8", "936", "€".encode(), b"\x80"),
            ("a byte order mark begins the file", "utf-8", "437", b"\xef\xbb\xbfa", b"a"),
            ("a byte order mark begins the file", "utf-16be", "437", b"\xfe\xff\0a", b"a"),
        ):
            with self.subTest(why, source=source, target=target):
                self.assertEqual(self.convert(source, target, data), wanted)

    def test_kx_text_and_the_code_page_it_was_written_with(self):
        extension = units(0x2BBC)
        for why, option, ansi, data, wanted in (
            ("the set tells the page", "-c", "1252", units(0x255F, 0x5A5E, 0x8787, 0xA6D8), "あ가啊一"),
            ("the host's page decides for the extension", "-c", "936", extension, b"\x81\xa1".decode("gbk")),
            ("the option decides", "--ansi=950", "936", extension, "\ueeb8"),
            ("without a page it is the first that has it", "-c", "1252", extension, "\ue000"),
            ("native bytes too", "--ansi=1250", "1252", units(0xCA0 - 0x17), b"\x89".decode("cp1250")),
        ):
            with self.subTest(why):
                self.assertEqual(self.convert("kx", "utf-8", data, option, KX_ANSI_CODEPAGE=ansi).decode(), wanted)
        self.assertEqual(self.convert("utf-8", "kx", "가α".encode(), "--ansi=949"), units(0x5A5E, 0x801))
        self.assertEqual(self.convert("950", "kx", "一".encode("big5"), "--ansi=936"),
                         self.convert("936", "kx", "一".encode("gb2312")), "moved into the sets of another page")
        data = units(*range(0, 0x10000, 7), 0xFFFF)
        self.assertEqual(self.convert("kx", "kx", data), data, "units that are no characters are kept")

    def test_samples_by_every_way(self):
        for path in sorted(TEXTS.glob("*.txt")):
            page, native = path.stem.rsplit("-", 1)[1], path.read_bytes()
            text = native.decode(DOUBLE_BYTE.get(page, "cp" + page))
            for form in ("utf-8", "utf-16le", "utf-16be"):
                with self.subTest(path.name, form=form):
                    self.assertEqual(self.convert(page, form, native), text.encode(form))
                    self.assertEqual(self.convert(form, page, text.encode(form)), native)

    def test_every_code_of_every_page_comes_back(self):
        index = (TEXTS.parents[1] / "data" / "codepages" / "index.txt").read_text(encoding="utf-8")
        listed = [line.split() for line in self.output("convert -l").decode().split("Code pages")[1]
                  .split("\n\n")[0].splitlines()[1:]]
        numbers = set(re.findall(r"^\d+\s+(\d+)", index, re.M)) | {"936", "949", "950"}
        self.assertEqual({number for line in listed for number in line} & numbers, numbers)
        self.assertEqual(len(listed), len(numbers))
        self.assertEqual(len(numbers), 46 + 3)
        for page in [line[0] for line in listed if line[0] not in DOUBLE_BYTE]:
            with self.subTest(page):
                text = self.convert(page, "kx", bytes(range(256)), "-q")  # some are united
                chars = [text[at:at + 2] for at in range(0, 512, 2)]
                # Where two bytes are one KX character the ASCII one stands for both, else the higher one.
                wanted = bytes(char[0] if char[1] == 0 else 255 - chars[::-1].index(char) for char in chars)
                self.assertEqual(self.convert("kx", page, text), wanted)
                self.assertLessEqual(256 - len(set(chars)), 4)
        pairs = [bytes((lead, trail)) for lead in range(0x81, 0xFF) for trail in range(0x40, 0xFF)]
        for page, count in (("932", 11280), ("936", 11844), ("949", 8836), ("950", 19782)):
            with self.subTest(page):
                text = self.convert(page, "kx", b"".join(pair + b"\n" for pair in pairs), "-c")
                codes = {line for line in self.convert("kx", page, text).split(b"\n") if len(line) == 2}
                # The bytes that are no lead bytes in 932 come as two characters.
                lone = page == "932" and {code for code in codes if 0xA0 <= code[0] <= 0xDF or code[0] > 0xFC}
                codes -= lone or set()
                self.assertEqual(len(codes), count)
                self.assertLessEqual(codes, set(pairs))

    def test_what_does_not_convert(self):
        for why, source, target, data, place, before, dropped, replaced in (
            ("no such character in the page", "utf-8", "437", "ab€c", "2: E2 82 AC", b"ab", b"abc", b"ab?c"),
            ("first of two", "utf-8", "437", "€x€", "0: E2 82 AC", b"", b"x", b"?x?"),
            ("invalid UTF-8", "utf-8", "437", b"ab\xffc", "2: FF", b"ab", b"abc", b"ab?c"),
            ("written too long", "utf-8", "437", b"\xc0\xafc", "0: C0", b"", b"c", b"??c"),
            ("three bytes too long", "utf-8", "437", b"\xf0\x80\x80c", "0: F0", b"", b"c", b"???c"),
            ("a piece of a character", "utf-8", "437", b"a\xe2\x82c", "1: E2 82", b"a", b"ac", b"a?c"),
            ("cut off at the end", "utf-8", "437", b"a\xe2\x82", "1: E2 82", b"a", b"a", b"a?"),
            ("a surrogate in UTF-8", "utf-8", "437", b"a\xed\xa0\x80", "1: ED", b"a", b"a", b"a???"),
            ("above the last character", "utf-8", "437", b"\xf4\x90\x80\x80", "0: F4", b"", b"", b"????"),
            ("beyond U+FFFF", "utf-8", "437", "a🚢b", "1: F0 9F 9A A2", b"a", b"ab", b"a?b"),
            ("beyond U+FFFF", "utf-16le", "437", "a🚢b".encode("utf-16le"), "2: 3D D8 A2 DE", b"a", b"ab", b"a?b"),
            ("low surrogates are no pair", "utf-16be", "437", b"\0a\xde\0\xde\0", "2: DE 00", b"a", b"a", b"a??"),
            ("lone high surrogate", "utf-16be", "437", b"\xd8\0\0b", "0: D8 00", b"", b"b", b"?b"),
            ("high surrogate at the end", "utf-16be", "437", b"\0a\xd8\0", "2: D8 00", b"a", b"a", b"a?"),
            ("odd byte at the end", "utf-16le", "437", b"a\0b", "2: 62", b"a", b"a", b"a?"),
            ("odd byte at the end", "kx", "437", b"a\0b", "2: 62", b"a", b"a", b"a?"),
            ("a byte order mark in the text", "utf-8", "437", "a\ufeff", "1: EF BB BF", b"a", b"a", b"a?"),
            ("a glyph must not become a line end", "utf-8", "437", "○", "0: E2 97 8B", b"", b"", b"?"),
            ("the page has no no-break space", "utf-8", "932", "\u00a0", "0: C2 A0", b"", b"", b"?"),
            ("an undefined byte is not one of another page", "1253", "1252", b"\xaa\n", "0: AA", b"", b"\n", b"?\n"),
            ("East Asian text without a page", "utf-8", "kx", "가", "0: EA B0 80", b"", b"", b"?\0"),
            ("an encoding of the system", "euc-jp", "koi8-r", "aあb".encode("euc-jp"), "1: A4 A2", b"a", b"ab", b"a?b"),
            ("to such a one", "utf-8", "euc-jp", "a🚢b", "1: F0 9F 9A A2", b"a", b"ab", b"a?b"),
            ("one that shifts, with the code behind", "iso-2022-jp", "437", "aあb".encode("iso-2022-jp"), "4: 24 22 1B 28 42", b"a", b"ab", b"a?b"),
            ("to one", "utf-8", "koi8-r", "ж€x", "2: E2 82 AC", b"\xd6", b"\xd6x", b"\xd6?x"),
            ("no ASCII", "ascii", "437", b"a\xe9b", "1: E9", b"a", b"ab", b"a?b"),
            ("a code of KX text", "kx", "437", units(0x61, 0xFE00, 0x62), "2: 00 FE", b"a", b"ab", b"a?b"),
            ("no KX character", "kx", "utf-8", units(0x61, 0xFFFF), "2: FF FF", b"a", b"a", b"a?"),
            ("a unit that no code gives", "kx", "932", units(0x2BFC), "0: FC 2B", b"", b"", b"?"),
            ("lead byte at the end", "932", "utf-8", b"a\x82", "1: 82", b"a", b"a", b"a?"),
            ("a line end is no trail byte", "932", "utf-8", b"\x82\nb", "0: 82", b"", b"\nb", b"?\nb"),
            ("a trail byte goes with its lead byte", "949", "utf-8", b"\xa1\x40b", "0: A1 40", b"", b"b", b"?b"),
            ("Windows has only a mark for it", "932", "utf-8", b"a\x81\xadb", "1: 81 AD", b"a", b"ab", b"a?b"),
            ("undefined byte without a Unicode value", "8660", "utf-8", b"a\xffb", "1: FF", b"a", b"ab", b"a?b"),
        ):
            with self.subTest(why, source=source):
                data = data.encode() if isinstance(data, str) else data
                self.assert_fails(f"convert -f {source} -t {target}", data=data, output=before,
                                  message=self.pattern(source, target, place))
                self.assertEqual(self.convert(source, target, data, "-c"), dropped)
                self.assertEqual(self.convert(source, target, data, "--subst=?"), replaced)

    @staticmethod
    def pattern(source, target, place):
        """The message for "OFFSET: BYTES", with the code point where Python reads the bytes as one."""
        offset, shown = place.split(": ")
        try:
            if source.startswith("utf"):
                shown = f"U\\+{ord(bytes.fromhex(shown).decode(source)):04X} \\({shown}\\)"
        except UnicodeDecodeError:
            pass
        native = "" if source.startswith("utf") else f"|U\\+[0-9A-F]+ \\({shown}\\)"
        return re.compile(rf"^kx convert: \(standard input\):1:\d+: byte {offset}: ({shown}{native}) does not convert "
                          rf"from {source} to {target}(; --ansi=949 may help)?\n$")

    def test_lines_and_columns(self):
        # More than a chunk in lines, and one long line, so that chunks end inside of characters.
        lines, line = "é あ\n" * 30_000, "a" + "あ" * 50_000
        for form, codec, mark, bad in (("utf-8", "utf-8", b"\xef\xbb\xbf", b"\xff"), ("932", "cp932", b"", b"\x81\xad"),
                                       ("utf-16le", "utf-16le", b"\xff\xfe", b"\0\xdc"),
                                       ("utf-16be", "utf-16be", b"\xfe\xff", b"\xdc\0"), ("866", "cp866", b"", None)):
            for row, column, text in ((1, 1, ""), (30_001, 1, lines), (1, 50_002, line), (30_001, 50_002, lines + line)):
                head = mark + text.replace("é", "-").encode(codec, "replace")
                with self.subTest(form, row=row, column=column), tempfile.NamedTemporaryFile() as file:
                    file.write(head + (bad or b"\xf0") + b"\n")
                    file.flush()
                    place = f"{row}:{column}: byte {len(head)}: "
                    target = "850" if bad is None else "utf-8"
                    for name, data in ((file.name, b""), ("-", head + (bad or b"\xf0") + b"\n")):
                        self.assert_fails("convert", "-f", form, "-t", target, "--ansi=932", name, data=data, output=None,
                                          message=f"{name.replace('-', '(standard input)')}:{place}")

    def test_substitutes(self):
        for target, substitute, wanted in (("932", "〓", "〓".encode("cp932")), ("utf-16be", "é", b"\0\xe9"),
                                           ("kx", "é", units(0x129))):
            self.assertEqual(self.convert("utf-8", target, b"\xff", "--subst", substitute), wanted)
        for substitute in ("○", "??", "", "\udcff", "𝕏", "\ufeff?"):
            self.assert_fails("convert", "-f", "utf-8", "-t", "437", "--subst", substitute, status=2, data=b"a",
                              message="is not one character that 437 has")

    def test_offsets_far_into_a_file(self):
        for before in (CHUNK - 1, CHUNK, 3 * CHUNK + 1):
            self.assert_fails("convert -f utf-8 -t 437", data=b"a" * before + "€".encode(), output=b"a" * before,
                              message=f":1:{before + 1}: byte {before}: U+20AC (E2 82 AC) ")
        for order, lone in (("be", b"\xdc\0"), ("le", b"\0\xdc")):  # behind pairs whose second units begin with DC to DF
            text = "😀🚢\U0001F300\U000103FF".encode("utf-16" + order)
            self.assert_fails(f"convert -f utf-16{order} -t utf-8", data=text + lone, output=None, message=":1:5: byte 16:")

    def test_no_character_is_cut_at_the_edge_of_a_chunk(self):
        tail = "\u00d7あ中日本語\r\n"
        for form, page in (("utf-8", "932"), ("932", "utf-8"), ("utf-16le", "932"), ("932", "kx"), ("kx", "932")):
            data = self.convert("utf-8", form, tail.encode(), "--ansi=932")
            letter = b"a" if form in ("utf-8", "932") else b"a\0"
            alone, one = self.convert(form, page, data), self.convert(form, page, letter)
            for shift in range(0, len(data) + 1, len(letter)):
                count = (CHUNK - shift) // len(letter)
                with self.subTest(form, shift=shift):
                    self.assertEqual(self.convert(form, page, letter * count + data), one * count + alone)

    def test_memory_does_not_grow_with_the_input(self):
        line = "雨の日の傘屋 umbrella 傘\0\r\n".encode("cp932")
        peaks = []
        for size in (1 << 20, 64 << 20):
            with subprocess.Popen([KX, "convert", "-f", "932", "-t", "utf-8"], stdin=subprocess.PIPE,
                                  stdout=subprocess.DEVNULL, env=environment()) as process:
                process.stdin.write(line * (size // len(line)))
                process.stdin.flush()
                status = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
                peaks.append(int(re.search(r"VmHWM:\s*(\d+) kB", status)[1]))
        self.assertLess(peaks[1] - peaks[0], 4 * 1024)

    def test_progress_is_shown_on_a_terminal_only(self):
        def convert_slowly(error):
            with subprocess.Popen([KX, "convert", "-f", "437", "-t", "utf-8"], stdin=subprocess.PIPE,
                                  stdout=subprocess.DEVNULL, stderr=error, env=environment()) as process:
                for wait in (1.1, 0.0):
                    process.stdin.write(b"a" * 3 * 1024 * 1024)
                    process.stdin.flush()
                    time.sleep(wait)
        main, terminal = pty.openpty()
        with os.fdopen(main, "rb", buffering=0) as shown, os.fdopen(terminal, "wb", buffering=0) as error:
            convert_slowly(error)
            self.assertTrue(select.select([shown], [], [], 5)[0])
            self.assertRegex(shown.read(4096), rb"\(standard input\): \d MiB")
        with tempfile.TemporaryFile() as error:
            convert_slowly(error)
            self.assertEqual(error.tell(), 0)


class Files(KxTest):
    def setUp(self):
        self.enterContext(contextlib.chdir(self.enterContext(tempfile.TemporaryDirectory())))
        pathlib.Path("a").write_bytes(b"\xe9")
        pathlib.Path("b").write_bytes(b"\xe8")

    def test_files_follow_one_another(self):
        self.assertEqual(self.output("convert -f 1252 -t utf-8 -o out a - b", data=b"\xea"), b"")
        self.assertEqual(pathlib.Path("out").read_text(encoding="utf-8"), "éêè")

    def test_the_file_at_fault_is_named(self):
        pathlib.Path("half").write_bytes(b"x\xe2\x82")
        pathlib.Path("rest").write_bytes(b"\xac")
        for why, arguments, wanted in (
            ("no character goes on in the next file", "half rest", "half:1:2: byte 1: E2 82 "),
            ("missing", "nothing", "nothing: No such file"),
            ("a folder", ".", ".: Is a directory"),
            ("output cannot be made", "-o no/out a", "no/out: No such file"),
            ("full disk", "-o /dev/full rest", "cannot write to /dev/full: No space left"),
        ):
            with self.subTest(why):
                form = "utf-8" if "half" in arguments else "1252"
                self.assert_fails(f"convert -f {form} -t 850 {arguments}", message="kx convert: " + wanted, output=None)
        self.assertEqual(pathlib.Path("a").read_bytes(), b"\xe9")

    def test_the_output_through_the_shell(self):
        with open("a", "ab") as output:
            self.assert_fails("convert -f 437 -t 437 a", stdout=output, message="also an input")
        reader, writer = os.pipe()
        os.close(reader)
        with os.fdopen(writer, "wb") as nobody:
            for arguments in ("convert -f 437 -t 437 a", "case upper -f 437 a b", "--help"):
                result = kx(arguments, stdout=nobody)
                self.assertEqual((result.stderr, result.returncode), (b"", 1), "a closed pipe ends the work quietly")

    def test_a_full_disk_is_told_whatever_is_printed(self):
        for arguments in ("--help", "convert --help", "convert -l", "codepages", "registry show"):
            with self.subTest(arguments), open("/dev/full", "wb") as full:
                self.assert_fails(arguments, stdout=full, env=environment(KX_REGISTRY="/none"),
                                  message="cannot write to (standard output): No space left")


class Usage(KxTest):
    def test_faults_in_the_command_line(self):
        for arguments, wanted in (
            ("", "are both needed"),
            ("-f 437", "are both needed"),
            ("-f iso-8859-99 -t utf-8", "no form or code page 'iso-8859-99', nor has the system one"),
            ("-f latin-11 -t utf-8", "; nearest: latin1"),
            ("-f ascii//translit -t utf-8", "no form"),
            ("-f 437x -t utf-8", "no form or code page '437x'"),
            ("-f 4294967733 -t utf-8", "no form or code page"),
            ("-f windows-1252x -t utf-8", "; nearest: 1252\n"),
            ("-f kx -t utf-8 --ansi=koi8-r", "no code page 'koi8-r': it is a form of text"),
            ("-f 437 -t 850 -c --subst=?", "exclude each other"),
            ("-f 437 -t 850 -c --strict", "--strict excludes"),
            ("-f 437 -t 850 --bom", "850 begins with no byte order mark"),
            ("-f 437 -t stream --eol=lf", "--eol has no say in stream"),
            ("-f kx -t 437 --eof", "a text in kx ends with no Ctrl-Z"),
            ("-f 437 -t 850 --eol=cr", "--eol: no 'cr'; there are keep, lf and crlf"),
            ("-f 437 -t 850 -j x", "'x' is no number"),
            ("-f 437 -t 850 -0 a", "--files-from"),
            ("-f 437 -t 850 -i -O d a", "exclude each other"),
            ("-f 437 -t 850 -i", "standard input has no name"),
            ("-f 437 -t 850 -O d -", "standard input has no name"),
            ("-f 437 -t 850 -i../b a", "another folder"),
            ("--wrong", "no option '--wrong'"),
            ("-t", "--to needs FORM"),
        ):
            with self.subTest(arguments):
                self.assert_fails("convert " + arguments, message=wanted, status=2)
        self.assert_fails("convert", "-f", "", "-t", "utf-8", message="no form or code page ''", status=2)
        for arguments, status in (("", 2), ("help", 0), ("nothing", 2)):
            self.assertEqual(kx(arguments).returncode, status, arguments)


if __name__ == "__main__":
    unittest.main()
