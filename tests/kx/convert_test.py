#!/usr/bin/env python3
"""convert_test.py KX: runs `kx convert` as a user does. Python's own codecs say what the texts should be."""
import contextlib
import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
import unittest

KX = ""
TEXTS = pathlib.Path(__file__).resolve().parents[2] / "examples" / "texts"
CHUNK = 64 * 1024  # bytes that the tool reads at once

# Code pages with a codec of Python's.
CODECS = {str(n): f"cp{n}" for n in (437, 737, 775, 850, 852, 855, 857, 860, 861, 862, 863, 864, 865, 866, 869, 1250,
                                     1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258)}
CODECS |= {f"iso-8859-{n}": f"iso8859-{n}" for n in (1, 2, 6, 7, 8)} | {"10001": "mac_roman"}
DOUBLE_BYTE = {"932": "cp932", "936": "gb2312", "949": "euc_kr", "950": "big5"}


def environment(**settings):
    kept = {name: value for name, value in os.environ.items() if not name.startswith(("KX_", "LC_", "LANG"))}
    return kept | {"LC_ALL": "C"} | settings


def run(arguments, data=b"", **settings):
    return subprocess.run([KX, "convert", *arguments], input=data, capture_output=True, env=environment(**settings),
                          check=False, timeout=60)


def convert(source, target, data, *options, **settings):
    """The converted bytes; a failure is an error of the test."""
    result = run(["-f", source, "-t", target, *options], data, **settings)
    if result.returncode != 0:
        raise AssertionError(f"{source} to {target}: {result.stderr.decode()}")
    return result.stdout


def units(*values):
    return b"".join(value.to_bytes(2, "little") for value in values)


def listed_pages():
    listing = run(["-l"]).stdout.decode().split("Code pages")[1].splitlines()[1:]
    return [line.split()[0] for line in listing]


class Converts(unittest.TestCase):
    CASES = (
        # why, from, to, input, output
        ("names do not heed case", "CP1252", "UTF-8", b"\xe9", "é".encode()),
        ("aliases", "ISO_8859-1", "Latin1", b"\xe9", b"\xe9"),
        ("both numbers of a page", "28591", "18851", b"\xe9", b"\xe9"),
        ("the other number of 949", "934", "utf-8", b"\xb0\xa1", "가".encode()),
        ("the other number of 950", "utf-8", "938", "中".encode(), b"\xa4\xa4"),
        ("KX text is little-endian", "1252", "kx", b"A\xe9", units(0x41, 0x129)),
        ("byte order of UTF-16", "1252", "utf-16be", b"A", b"\0A"),
        ("byte order of UTF-16", "1252", "utf-16le", b"A", b"A\0"),
        ("nothing gives nothing", "1252", "utf-8", b"", b""),
        ("NUL is a character", "437", "kx", b"a\0b", units(0x61, 0, 0x62)),
        ("NUL is a character", "utf-16le", "932", b"a\0\0\0b\0", b"a\0b"),
        ("line ends and tabs are codes in KX text", "437", "kx", b"\t\n\f\r", units(0xF909, 0xF90A, 0xF90C, 0xF90D)),
        ("and from Unicode", "utf-8", "kx", b"\t\n\f\r", units(0xF909, 0xF90A, 0xF90C, 0xF90D)),
        ("and controls elsewhere", "kx", "utf-16le", units(0xF909, 0xF90A, 0xF90C, 0xF90D), b"\t\0\n\0\f\0\r\0"),
        ("controls of a DOS page are glyphs", "437", "utf-8", b"\x01\x1b\x7f", "☺←⌂".encode()),
        ("glyphs go back to them", "utf-8", "437", "☺←⌂".encode(), b"\x01\x1b\x7f"),
        ("controls of other pages pass", "1252", "utf-8", b"\x01\x1b\x7f", b"\x01\x1b\x7f"),
        ("controls pass to DOS", "utf-8", "437", b"\x01\x1b\x7f", b"\x01\x1b\x7f"),
        ("an undefined byte keeps its place", "1252", "kx", b"\x81", units(0xC81)),
        ("and comes back", "kx", "1252", units(0xC81), b"\x81"),
        ("not as what it is in another page", "1253", "1252", b"\xaa\n", None),
        ("the no-break space moves with its page", "1252", "437", b"\xa0", b"\xff"),
        ("the no-break space moves with its page", "utf-8", "10001", "\u00a0".encode(), b"\xca"),
        ("the no-break space moves with its page", "10001", "utf-8", b"\xca", "\u00a0".encode()),
        ("the page has none", "utf-8", "932", "\u00a0".encode(), None),
        ("Arabic letters are letters", "1256", "utf-8", b"\xc8", "\u0628".encode()),
        ("but forms in a page of forms", "864", "utf-8", b"\xc7", "\ufe8d".encode()),
        ("Greek in a Japanese page", "1253", "932", "αΩ".encode("cp1253"), "αΩ".encode("cp932")),
        ("between double-byte pages", "950", "932", "中文".encode("big5"), "中文".encode("cp932")),
        ("half-width katakana", "932", "kx", b"\xb1", units(0xB10)),
        ("user-defined characters", "932", "kx", b"\xf0\x40", units(0x2BBC)),
        ("user-defined characters", "936", "kx", b"\x81\xa1", units(0x2BBC)),
        ("the euro byte", "936", "utf-8", b"\x80", "€".encode()),
        ("the euro byte", "utf-8", "936", "€".encode(), b"\x80"),
        ("a glyph must not become a line end", "utf-8", "437", "○".encode(), None),
        ("a byte order mark begins the file", "utf-8", "437", b"\xef\xbb\xbfa", b"a"),
        ("a byte order mark begins the file", "utf-16be", "437", b"\xfe\xff\0a", b"a"),
        ("nowhere else", "utf-8", "437", b"a\xef\xbb\xbf", None),
    )

    def test_cases(self):
        for why, source, target, data, wanted in self.CASES:
            with self.subTest(why, source=source, target=target):
                result = run(["-f", source, "-t", target], data)
                if wanted is None:
                    self.assertEqual(result.returncode, 1)
                else:
                    self.assertEqual((result.stdout, result.returncode, result.stderr), (wanted, 0, b""))

    def test_kx_text_and_the_code_page_it_was_written_with(self):
        extension = units(0x2BBC)
        cases = (
            # why, options, ANSI code page, input, wanted text
            ("the set tells the page", [], "1252", units(0x255F, 0x5A5E, 0x8787, 0xA6D8), "あ가啊一"),
            ("the host's page decides for the extension", [], "936", extension, b"\x81\xa1".decode("gbk")),
            ("the option decides", ["--ansi=950"], "936", extension, "\ueeb8"),
            ("without a page it is the first that has it", [], "1252", extension, "\ue000"),
            ("native bytes too", ["--ansi=1250"], "1252", units(0xCA0 - 0x17), b"\x89".decode("cp1250")),
        )
        for why, options, ansi, data, wanted in cases:
            with self.subTest(why):
                self.assertEqual(convert("kx", "utf-8", data, *options, KX_ANSI_CODEPAGE=ansi).decode(), wanted)
        for why, options, data, wanted in (
            ("Unicode to KX text by the host", [], "가", None),
            ("Unicode to KX text by the option", ["--ansi=949"], "가", units(0x5A5E)),
            ("Greek is no matter of the page", [], "α", units(0x801)),
        ):
            with self.subTest(why):
                result = run(["-f", "utf-8", "-t", "kx", *options], data.encode())
                self.assertEqual(result.stdout, wanted or b"")
                self.assertEqual(result.returncode, 1 if wanted is None else 0)

        self.assertEqual(convert("950", "kx", "一".encode("big5"), "--ansi=936"),
                         convert("936", "kx", "一".encode("gb2312")), "moved into the sets of another page")

    def test_kx_text_keeps_units_that_are_no_characters(self):
        data = units(*range(0, 0x10000, 7), 0xFFFF)
        self.assertEqual(convert("kx", "kx", data), data)

    def test_samples_by_every_way(self):
        for path in sorted(TEXTS.glob("*.txt")):
            page = path.stem.rsplit("-", 1)[1]
            native = path.read_bytes()
            text = native.decode((CODECS | DOUBLE_BYTE)[page])
            for form in ("utf-8", "utf-16le", "utf-16be"):
                with self.subTest(path.name, form=form):
                    self.assertEqual(convert(page, form, native), text.encode(form))
                    self.assertEqual(convert(form, page, text.encode(form)), native)


class EveryCodePage(unittest.TestCase):
    # Characters that KX text unites with others, or that Windows has otherwise; docs/iconv-differences.md explains them.
    DIFFERENT = {"1255": "\u05b9\u05c2", "1256": "\u06a9\u06c1", "864": "\ufe7d\u0651\ufef5\ufef6",
                 "1258": "\u0301\u0303\u00b4\u02dc", "iso-8859-7": "\u2018\u2019\u20ac\u20af\u037a",
                 "iso-8859-8": "\u00af\u200e\u200f", "10001": "\u2206\u20ac\uf8ff"}

    def test_all_are_listed(self):
        index = (TEXTS.parents[1] / "data" / "codepages" / "index.txt").read_text(encoding="utf-8")
        windows = {row.split()[1] for row in index.splitlines() if re.match(r"\d+\s+\d+", row)}
        self.assertEqual(len(windows), 46)
        for number in sorted(windows | {"934", "936", "938", "949", "950"}):
            self.assertEqual(run(["-f", number, "-t", number]).returncode, 0, number)
        self.assertEqual(len(listed_pages()), 46 + 3)

    def test_every_byte_comes_back_through_kx_text(self):
        for page in listed_pages():
            if page in DOUBLE_BYTE:
                continue
            with self.subTest(page):
                kx = convert(page, "kx", bytes(range(256)))
                chars = [kx[at:at + 2] for at in range(0, len(kx), 2)]
                self.assertEqual(len(chars), 256)
                # Where two bytes are one KX character the ASCII one stands for both, else the higher one.
                wanted = bytes(char[0] if char[1] == 0 else 255 - chars[::-1].index(char) for char in chars)
                self.assertEqual(convert("kx", page, kx), wanted)
                self.assertLessEqual(256 - len(set(chars)), 4)

    def test_every_double_byte_code_comes_back(self):
        singles = bytes(range(0x80))
        for page, count in (("932", 11280), ("936", 11844), ("949", 8836), ("950", 19782)):
            with self.subTest(page):
                pairs = b"".join(bytes((lead, trail)) + b"\n"
                                 for lead in range(0x81, 0xFF) for trail in range(0x40, 0xFF))
                kept = convert(page, "kx", pairs, "-c")
                codes = [line for line in convert("kx", page, kept).split(b"\n") if len(line) == 2 and line[0] > 0x80]
                # The bytes that are no lead bytes in 932 come as two characters.
                codes = [code for code in codes if not (page == "932" and (0xA0 <= code[0] <= 0xDF or code[0] > 0xFC))]
                self.assertEqual(len(set(codes)), count)
                self.assertLessEqual(set(codes), {pairs[at:at + 2] for at in range(0, len(pairs), 3)})
                self.assertEqual(convert("kx", page, convert(page, "kx", singles)), singles)

    def test_unicode_by_another_implementation(self):
        for page, codec in CODECS.items():
            different = self.DIFFERENT.get(page, "") + "\u00a6\u00ad"
            pairs = [(bytes([byte]), bytes([byte]).decode(codec, "replace")) for byte in range(0x80, 0x100)]
            pairs = [(byte, text) for byte, text in pairs if text not in different and not "\x80" <= text <= "\x9f"
                     and text != "\ufffd"]
            native = b"".join(byte for byte, _ in pairs)
            text = "".join(character for _, character in pairs)
            with self.subTest(page):
                self.assertGreater(len(pairs), 40)
                self.assertEqual(convert(page, "utf-8", native).decode(), text)
                self.assertEqual(convert("utf-8", page, text.encode()), native)


class Unconvertible(unittest.TestCase):
    CASES = (
        # why, from, to, input, offset, the bytes named, the output before it, with -c, with --subst=?
        ("no such character in the page", "utf-8", "437", "ab€c".encode(), 2, "E2 82 AC", b"ab", b"abc", b"ab?c"),
        ("first of two", "utf-8", "437", "€x€".encode(), 0, "E2 82 AC", b"", b"x", b"?x?"),
        ("invalid UTF-8", "utf-8", "437", b"ab\xffc", 2, "FF", b"ab", b"abc", b"ab?c"),
        ("written too long", "utf-8", "437", b"\xc0\xafc", 0, "C0", b"", b"c", b"??c"),
        ("a piece of a character", "utf-8", "437", b"a\xe2\x82c", 1, "E2 82", b"a", b"ac", b"a?c"),
        ("cut off at the end", "utf-8", "437", b"a\xe2\x82", 1, "E2 82", b"a", b"a", b"a?"),
        ("a surrogate in UTF-8", "utf-8", "437", b"a\xed\xa0\x80", 1, "ED", b"a", b"a", b"a???"),
        ("above the last character", "utf-8", "437", b"\xf4\x90\x80\x80", 0, "F4", b"", b"", b"????"),
        ("beyond U+FFFF", "utf-8", "437", "a🚢b".encode(), 1, "F0 9F 9A A2", b"a", b"ab", b"a?b"),
        ("beyond U+FFFF", "utf-16le", "437", "a🚢b".encode("utf-16le"), 2, "3D D8 A2 DE", b"a", b"ab", b"a?b"),
        ("lone low surrogate", "utf-16be", "437", b"\0a\xde\0\0b", 2, "DE 00", b"a", b"ab", b"a?b"),
        ("lone high surrogate", "utf-16be", "437", b"\xd8\0\0b", 0, "D8 00", b"", b"b", b"?b"),
        ("high surrogate at the end", "utf-16be", "437", b"\0a\xd8\0", 2, "D8 00", b"a", b"a", b"a?"),
        ("odd byte at the end", "utf-16le", "437", b"a\0b", 2, "62", b"a", b"a", b"a?"),
        ("odd byte at the end", "kx", "437", b"a\0b", 2, "62", b"a", b"a", b"a?"),
        ("a code of KX text", "kx", "437", units(0x61, 0xFE00, 0x62), 2, "00 FE", b"a", b"ab", b"a?b"),
        ("no KX character", "kx", "utf-8", units(0x61, 0xFFFF), 2, "FF FF", b"a", b"a", b"a?"),
        ("a unit that no code gives", "kx", "932", units(0x2BFC), 0, "FC 2B", b"", b"", b"?"),
        ("lead byte at the end", "932", "utf-8", b"a\x82", 1, "82", b"a", b"a", b"a?"),
        ("a line end is no trail byte", "932", "utf-8", b"\x82\nb", 0, "82", b"", b"\nb", b"?\nb"),
        ("a trail byte goes with its lead byte", "949", "utf-8", b"\xa1Ab", 0, "A1 41", b"", b"b", b"?b"),
        ("Windows has only a mark for it", "932", "utf-8", b"a\x81\xadb", 1, "81 AD", b"a", b"ab", b"a?b"),
        ("undefined byte without a Unicode value", "8660", "utf-8", b"a\xffb", 1, "FF", b"a", b"ab", b"a?b"),
    )

    def test_cases(self):
        for why, source, target, data, offset, named, before, dropped, replaced in self.CASES:
            with self.subTest(why, source=source):
                forms = ["-f", source, "-t", target]
                result = run(forms, data)
                self.assertEqual((result.stdout, result.returncode), (before, 1))
                self.assertEqual(result.stderr.decode(), f"kx convert: (standard input): byte {offset}: {named} does "
                                 f"not convert from {source} to {target}\n")
                for option, wanted in (("-c", dropped), ("--subst=?", replaced)):
                    result = run([*forms, option], data)
                    self.assertEqual((result.stdout, result.returncode, result.stderr), (wanted, 0, b""), option)

    def test_substitutes(self):
        for target, substitute, wanted in (("932", "〓", "〓".encode("cp932")), ("utf-16be", "é", b"\0\xe9"),
                                           ("kx", "é", units(0x129)), ("437", "○", None), ("437", "??", None),
                                           ("437", "", None), ("437", "\udcff", None), ("437", "𝕏", None)):
            with self.subTest(target, substitute=ascii(substitute)):
                result = run(["-f", "utf-8", "-t", target, "--subst", substitute], "🚢".encode())
                self.assertEqual((result.stdout, result.returncode), (wanted or b"", 0 if wanted else 2))

    def test_offsets_far_into_a_file(self):
        for before in (CHUNK - 1, CHUNK, 3 * CHUNK + 1):
            result = run(["-f", "utf-8", "-t", "437"], b"a" * before + "€".encode())
            self.assertIn(f"byte {before}: E2 82 AC ", result.stderr.decode())
            self.assertEqual(len(result.stdout), before)


class Streams(unittest.TestCase):
    def test_no_character_is_cut_at_the_edge_of_a_chunk(self):
        tail = "\u00d7あ中日本語\r\n"
        for form, page in (("utf-8", "932"), ("932", "utf-8"), ("utf-16le", "932"), ("932", "kx"), ("kx", "932")):
            data = {"utf-8": tail.encode(), "932": tail.encode("cp932"), "utf-16le": tail.encode("utf-16le"),
                    "kx": convert("932", "kx", tail.encode("cp932"))}[form]
            letter = b"a" if form in ("utf-8", "932") else b"a\0"
            alone = convert(form, page, data)
            one = convert(form, page, letter)
            for shift in range(0, len(data) + 1, len(letter)):
                count = (CHUNK - shift) // len(letter)
                with self.subTest(form, shift=shift):
                    self.assertEqual(convert(form, page, letter * count + data), one * count + alone)

    def test_bytes_that_come_one_by_one(self):
        data = "żółć 日本 🚢 Ω".encode()
        with subprocess.Popen([KX, "convert", "-f", "utf-8", "-t", "932", "-c"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, env=environment()) as process:
            for byte in data:
                process.stdin.write(bytes([byte]))
                process.stdin.flush()
                time.sleep(0.001)
            process.stdin.close()
            self.assertEqual(process.stdout.read(), data.decode().encode("cp932", "ignore"))

    def test_memory_does_not_grow_with_the_input(self):
        line = "雨の日の傘屋 umbrella 傘\0\r\n".encode("cp932")
        peaks = []
        for size in (1 << 20, 64 << 20):
            count = size // len(line)
            with tempfile.TemporaryFile() as output, subprocess.Popen(
                    [KX, "convert", "-f", "932", "-t", "utf-8"], stdin=subprocess.PIPE, stdout=output,
                    env=environment()) as process:
                process.stdin.write(line * count)
                process.stdin.flush()
                status = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
                peaks.append(int(re.search(r"VmHWM:\s*(\d+) kB", status)[1]))
                process.stdin.close()
                self.assertEqual(process.wait(), 0)
                output.seek(0)
                self.assertEqual(output.read(), line.decode("cp932").encode() * count)
        self.assertLess(peaks[1] - peaks[0], 4 * 1024)

    def test_progress_is_shown_on_a_terminal(self):
        def watch(error, terminal):
            with subprocess.Popen([KX, "convert", "-f", "437", "-t", "utf-8"], stdin=subprocess.PIPE,
                                  stdout=subprocess.DEVNULL, stderr=error, env=environment()) as process:
                for wait in (1.1, 0.0):
                    process.stdin.write(b"a" * 3 * 1024 * 1024)
                    process.stdin.flush()
                    time.sleep(wait)
                process.stdin.close()
                if terminal is None:
                    return process.stderr.read()
                return os.read(terminal, 4096) if select.select([terminal], [], [], 5)[0] else b""
        main, terminal = pty.openpty()
        try:
            shown = watch(terminal, main)
        finally:
            os.close(terminal)
            os.close(main)
        self.assertRegex(shown, rb"\(standard input\): \d MiB")
        self.assertEqual(watch(subprocess.PIPE, None), b"")


class Files(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.enterContext(contextlib.chdir(self.folder))
        pathlib.Path("a").write_bytes(b"\xe9")
        pathlib.Path("b").write_bytes(b"\xe8")

    def test_files_follow_one_another(self):
        result = run(["-f", "1252", "-t", "utf-8", "-o", "out", "a", "-", "b"], b"\xea")
        self.assertEqual((result.returncode, result.stdout), (0, b""))
        self.assertEqual(pathlib.Path("out").read_text(encoding="utf-8"), "éêè")

    def test_the_file_at_fault_is_named(self):
        pathlib.Path("half").write_bytes(b"x\xe2\x82")
        pathlib.Path("rest").write_bytes(b"\xac")
        for why, arguments, wanted in (
            ("no character goes on in the next file", ["half", "rest"], "half: byte 1: E2 82 "),
            ("offsets begin at 0 in each file", ["half", "a"], "half: byte 1: "),
            ("missing", ["nothing"], "nothing: No such file"),
            ("a folder", ["."], ".: Is a directory"),
            ("output cannot be made", ["-o", "no/out", "a"], "no/out: No such file"),
            ("the output is an input", ["-o", "a", "b", "a"], "the output is also an input: a"),
            ("under another name", ["-o", "./a", "a"], "the output is also an input: ./a"),
            ("full disk", ["-o", "/dev/full", "b"], "cannot write to /dev/full: No space left"),
        ):
            with self.subTest(why):
                form = "utf-8" if "half" in arguments else "1252"
                result = run(["-f", form, "-t", "437", *arguments])
                self.assertEqual(result.returncode, 1)
                self.assertIn("kx convert: " + wanted, result.stderr.decode())
        self.assertEqual(pathlib.Path("a").read_bytes(), b"\xe9")

    def test_the_output_through_the_shell_is_an_input(self):
        with open("a", "ab") as output:
            result = subprocess.run([KX, "convert", "-f", "437", "-t", "437", "a"], stdout=output,
                                    stderr=subprocess.PIPE, env=environment(), check=False, timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"also an input", result.stderr)

    def test_a_pipe_that_nobody_reads(self):
        reader, writer = os.pipe()
        os.close(reader)
        result = subprocess.run([KX, "convert", "-f", "437", "-t", "437", "a"], stdout=writer, stderr=subprocess.PIPE,
                                env=environment(), check=False)
        os.close(writer)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"cannot write to (standard output): Broken pipe", result.stderr)


class Usage(unittest.TestCase):
    def test_faults_in_the_command_line(self):
        for arguments, wanted in (
            ([], "are both needed"),
            (["-f", "437"], "are both needed"),
            (["-f", "koi8-r", "-t", "utf-8"], "no form or code page 'koi8-r'"),
            (["-f", "437x", "-t", "utf-8"], "no form or code page '437x'"),
            (["-f", "", "-t", "utf-8"], "no form or code page ''"),
            (["-f", "4294967733", "-t", "utf-8"], "no form or code page"),
            (["-f", "kx", "-t", "utf-8", "--ansi=utf-8"], "no code page 'utf-8'"),
            (["-f", "437", "-t", "850", "-c", "--subst=?"], "exclude each other"),
            (["--wrong"], "unrecognized option"),
            (["-t"], "requires an argument"),
        ):
            with self.subTest(arguments):
                result = run(arguments)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertIn(wanted, result.stderr.decode())

    def test_help(self):
        help_text = run(["--help"])
        self.assertEqual((help_text.returncode, help_text.stderr), (0, b""))
        for option in ("-f", "-t", "-o", "-c", "-l", "--subst", "--ansi"):
            self.assertIn(option, help_text.stdout.decode())
        for arguments, status in (([], 2), (["help"], 0), (["nothing"], 2)):
            result = subprocess.run([KX, *arguments], capture_output=True, check=False)
            self.assertEqual(result.returncode, status, arguments)
        of_command = subprocess.run([KX, "help", "convert"], capture_output=True, check=False)
        self.assertEqual((of_command.returncode, of_command.stdout), (0, help_text.stdout))

    def test_a_full_disk_is_told_whatever_is_printed(self):
        for arguments in (["--help"], ["convert", "--help"], ["convert", "-l"], ["codepages"], ["registry", "show"]):
            with self.subTest(arguments), open("/dev/full", "wb") as full:
                result = subprocess.run([KX, *arguments], stdout=full, stderr=subprocess.PIPE,
                                        env=environment(KX_REGISTRY=os.devnull + "/none"), check=False)
                self.assertEqual(result.returncode, 1)
                self.assertIn(b"cannot write to (standard output): No space left", result.stderr)


if __name__ == "__main__":
    KX = str(pathlib.Path(sys.argv.pop(1)).resolve())
    unittest.main()
