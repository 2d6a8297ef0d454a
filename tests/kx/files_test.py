#!/usr/bin/env python3
"""files_test.py KX: many files, and outputs that must not be lost, for all commands that write a file."""
import contextlib
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import time
import unittest

from kx_tool import CHUNK, KX, KxTest, environment, kx, units

LETTERS = "Žluťoučký kůň\n"


def write(path, content):
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content.encode("cp852") if isinstance(content, str) else content)


def tree(folder="."):
    """All files below, by name, with what they hold."""
    return {str(path.relative_to(folder)): path.read_bytes() for path in pathlib.Path(folder).rglob("*") if path.is_file()}


class Folder(KxTest):
    def setUp(self):
        self.enterContext(contextlib.chdir(self.enterContext(tempfile.TemporaryDirectory())))


class Archives(Folder):
    def setUp(self):
        super().setUp()
        for name in ("in/a.txt", "in/deep/er/b.txt", "in/deep/c d.txt"):
            write(name, LETTERS + name)
        write("in/bad.txt", "ok\n\u2500")  # 1250 has no frames
        self.good = {name[3:]: (LETTERS + name).encode("cp1250") for name in
                     ("in/a.txt", "in/deep/er/b.txt", "in/deep/c d.txt")}

    def test_a_folder_into_another(self):
        write("out/bad.txt", b"old")
        self.assert_fails("convert -f 852 -t 1250 -r -O out in -j 3", message=(
            "kx convert: in/bad.txt:2:1: byte 3: U+2500 (C4) does not convert from 852 to 1250\n"
            "kx convert: 1 of 4 files failed\n"))
        self.assertEqual(tree("out"), self.good | {"bad.txt": b"old"})
        self.assert_fails("convert -f 852 -t 1250 -r -O in/new in", message="1 of 4 files failed")
        self.assert_fails("convert -f 852 -t 1250 -r -O in/new in", message="1 of 4 files failed")
        self.assertEqual(tree("in/new"), self.good, "what was made is no input of the next time")

    def test_an_archive_in_many_pages(self):
        texts = {"cp852": "Příliš žluťoučký kůň úpěl ďábelské ódy, ale nikdo ho neslyšel.",
                 "cp866": "Съешь же ещё этих мягких французских булок, да выпей чаю.",
                 "cp1253": "Τα λεφτά δεν φέρνουν πάντα την ευτυχία στους ανθρώπους.",
                 "cp932": "すべての人間は、生まれながらにして自由である。",
                 "cp437": "Die Größe der Bücher änderte sich für die Schüler völlig.", "ascii": "Nothing but plain words."}
        wanted = {}
        for number in range(200):
            codec, text = list(texts.items())[number % len(texts)]
            name, text = f"{number % 7}/{number % 3}/{number}.txt", f"{number}: {text}\n" * (number % 9 + 1)
            write(f"old/{name}", text.encode(codec))
            wanted[name] = text.encode()
        write("old/3/broken.txt", b"\x7fELF\2\1\1\0\0\0")
        self.assert_fails("convert -f auto -t utf-8 -r -O new -j2 old", message=(
            "kx convert: old/3/broken.txt: does not convert from binary\nkx convert: 1 of 201 files failed\n"))
        self.assertEqual(tree("new"), wanted)

    def test_where_names_lead(self):
        pathlib.Path("list").write_bytes(b"in/deep/c d.txt\n../" + os.path.basename(os.getcwd()).encode() +
                                         b"/in/a.txt\n\n" + os.path.abspath("in/deep/er/b.txt").encode())
        self.output("convert -f 852 -t 1250 --files-from list -O out")
        self.assertEqual(sorted(tree("out")), sorted([
            "in/deep/c d.txt", os.path.basename(os.getcwd()) + "/in/a.txt", os.path.abspath("in/deep/er/b.txt")[1:]]))
        self.assertEqual(self.output("convert -f 852 -t 1250 -0 --files-from -", data=b"in/deep/c d.txt\0in/a.txt"),
                         self.good["deep/c d.txt"] + self.good["a.txt"])
        self.assertEqual(self.output("convert -f 852 -t 1250 --files-from -"), b"", "a list without names has none")
        write("in/deep/a.txt", "x")
        for arguments, wanted in (("-O flat in/a.txt in/deep/a.txt", "flat/a.txt is already made of in/a.txt"),
                                  ("-O in in/a.txt", "in/a.txt is an input; -i converts in place"),
                                  ("-O in/deep in/a.txt in/deep/a.txt", "in/deep/a.txt is an input"),
                                  ("--files-from none", "none: No such file"),
                                  ("-O list in/a.txt", "list/a.txt: Not a directory"),
                                  ("-i in", "in: Is a directory; -r takes the files in it"),
                                  ("-i /dev/null", "/dev/null: not a regular file"), ("-i none", "none: No such file")):
            with self.subTest(arguments):
                self.assert_fails("convert -f 852 -t 1250 " + arguments, message=wanted, output=None)
        self.assertEqual(pathlib.Path("in/deep/a.txt").read_bytes(), b"x")

    def test_in_place(self):
        os.chmod("in/a.txt", 0o640)
        os.utime("in/a.txt", ns=(10**18, 10**18 + 1))
        os.symlink("in/a.txt", "link")
        os.link("in/deep/c d.txt", "twin")
        for names in ("in/a.txt", "link in/a.txt in/a.txt"):
            self.output("convert -f 852 -t 852 --eol=crlf -i " + names)
        self.output("convert -f 852 -t 1250 -i link in/a.txt in/a.txt")
        about = os.stat("in/a.txt")
        self.assertEqual((about.st_mode & 0o7777, about.st_mtime_ns), (0o640, 10**18 + 1))
        self.assertTrue(os.path.islink("link"))
        self.assertEqual(pathlib.Path("in/a.txt").read_bytes(), self.good["a.txt"].replace(b"\n", b"\r\n"))
        before = tree("in")
        self.assert_fails("convert -f 852 -t 1250 -i.old -r in/deep in/bad.txt", message="1 of 3 files failed")
        self.assertEqual(tree("in"), before | {name: text for name, text in self.good.items() if name != "a.txt"} |
                         {f"{name}.old": before[name] for name in self.good if name != "a.txt"})
        self.assertEqual(pathlib.Path("twin").read_bytes(), before["deep/c d.txt"])
        os.link("twin", "twin too")
        self.output("convert", "-f", "852", "-t", "1250", "-i", "twin", "./twin", "twin too")
        self.assertEqual({pathlib.Path(name).read_bytes() for name in ("twin", "twin too")}, {self.good["deep/c d.txt"]})
        before = tree()
        self.assert_fails("convert -f 1250 -t 852 -i.old -r in/deep", message="File exists")
        self.assertEqual(tree(), before, "an old file that was kept is not lost to the next run")

    def test_order_among_threads(self):
        names, wanted, faults = [], b"", []
        for number in range(40):
            text = (f"{number} é\n" * (1 << 20 if number == 0 else 10 * number)).encode()
            names.append(f"n{number}")
            write(names[-1], text + b"\xff" * (number % 7 == 3))
            wanted += text
            if number % 7 == 3:
                faults.append(names[-1])
        for threads in ("1", "8", "0"):
            result = kx("convert", "-f", "utf-8", "-t", "utf-8", "-j", threads, *names)
            self.assertEqual(result.stdout, wanted)
            told = [line.split(": ")[1].split(":")[0] for line in result.stderr.decode().splitlines()]
            self.assertEqual(told, faults + [f"{len(faults)} of 40 files failed"])

    def test_what_is_told(self):
        write("many", "€".encode() * 2 + "".join(map(chr, range(0x2600, 0x260A))).encode() + b"\xff" + b"a" * CHUNK)
        most = "U+20AC (2), U+2600 (1), U+2601 (1), U+2602 (1), U+2603 (1), U+2604 (1), U+2605 (1), U+2606 (1) and 4 others"
        for options, wanted in (
            ("-c", f"kx convert: many: 13 characters left out: {most}\n"),
            ("--subst=? -v", "kx convert: many: utf-8, 65549 characters, 13 replaced, 0 left out, 0 united\n"
                             f"kx convert: many: 13 characters replaced: {most}\n"),
            ("-c -q", ""),
        ):
            self.assertEqual(kx("convert -f utf-8 -t 852 many -o out " + options).stderr.decode(), wanted)
        result = kx("convert -f utf-8 -t 852 many many none -o out -cqv")
        self.assertIn("\nkx convert: none: No such file or directory\nkx convert: 3 files, 1 failed, 131098 characters, "
                      "0 replaced, 26 left out, 0 united\n", result.stderr.decode())

    def test_strict(self):
        for source, data, place in (("1252", b"ab\xadc\xa6", "3: byte 2: U+00AD (AD)"), ("1255", b"\xc9", "1: byte 0: U+05B9 (C9)"),
                                    ("utf-8", "\ufeffé\u00ad".encode(), "2: byte 5: U+00AD (C2 AD)")):
            self.assert_fails(f"convert -f {source} -t kx --strict", data=data, output=None,
                              message=f":1:{place} becomes another character from {source}")
            result = kx(f"convert -f {source} -t kx", data=data)
            self.assertRegex(result.stderr.decode(), r"^kx convert: .*: \d characters? written as others: ")
            self.assertEqual(result.returncode, 0)
        for form, codec in (("1252", "cp1252"), ("932", "cp932"), ("utf-16be", "utf-16be")):
            text = ("é" * CHUNK if form == "1252" else "あ×" * CHUNK) + "\r\n"
            strict = self.output("convert", "-f", form, "-t", "kx", "--strict", "--ansi=932", data=text.encode(codec))
            self.assertEqual(self.output("convert -f kx -t utf-8 --ansi=932", data=strict), text.encode())

    def test_line_ends_and_marks(self):
        for why, options, data, wanted in (
            ("to DOS", "-f utf-8 -t 852 --eol=crlf", "a\nb\r\n\n\r\r\n".encode(), b"a\r\nb\r\n\r\n\r\r\n"),
            ("from DOS", "-f 852 -t utf-16be --eol=lf", b"a\r\r\nb\rc\r", "a\r\nb\rc\r".encode("utf-16be")),
            ("kept", "-f 852 -t kx --eol=keep", b"\r\n\n", units(0xF90D, 0xF90A, 0xF90A)),
            ("KX text", "-f 852 -t kx --eol=crlf", b"\r\n\n", units(0xF90D, 0xF90A, 0xF90D, 0xF90A)),
            ("over chunks", "-f 852 -t utf-8 --eol=lf", b"a" * (CHUNK - 1) + b"\r\nb", b"a" * (CHUNK - 1) + b"\nb"),
            ("Ctrl-Z", "-f 852 -t utf-8 --eof", b"a" * CHUNK + b"\x1a\xff\x1a", b"a" * CHUNK),
            ("of 16 bits", "-f utf-16le -t utf-8 --eof", b"\x1a\x01a\0\x1a\0b\0", "\u011aa".encode()),
            ("not in it", "-f 852 -t utf-8", b"a\x1ab", b"a\x1ab"),
            ("a mark", "-f 852 -t utf-16le --bom", b"a", b"\xff\xfea\0"),
            ("one of two", "-f utf-8 -t utf-8 --bom", "\ufeffa".encode(), "\ufeffa".encode()),
        ):
            with self.subTest(why):
                self.assertEqual(self.output(*f"convert --ansi=1258 {options}".split(), data=data), wanted)
        write("one", b"1")
        self.assertEqual(self.output("convert -f 852 -t utf-8 --bom one one"), "\ufeff11".encode())
        self.output("convert -f 852 -t utf-8 --bom -i one")
        self.assertEqual(pathlib.Path("one").read_bytes(), "\ufeff1".encode())

    def test_letters_pass_what_they_do_not_know(self):
        text = "é🚢中\ufeffß"
        for command, form, wanted in (("case upper", "utf-8", "É🚢中\ufeffß"), ("case upper", "utf-16le", "É🚢中\ufeffß"),
                                      ("width double --country=japanese --ansi=1252", "utf-8", "é🚢中\ufeffß")):
            self.assertEqual(self.output(*f"{command} -f utf-8 -t {form}".split(), data=text.encode()), wanted.encode(form))
        self.assert_fails("case upper", data=b"\xff", message=":1:1: byte 0: FF does not convert")


class SafeOutputs(Folder):
    """A failure leaves the old file as it was, whatever the command, and nothing beside it."""
    COMMANDS = ("convert -f 852 -t utf-8 -o old", "case upper -f 852 -o old", "sort -l CZ -f 852 -o old",
                "sort -l CZ -f 852 --keys -o old", "convert -f 852 -t utf-8 -i")

    def setUp(self):
        super().setUp()
        write("old", LETTERS)
        write("new", LETTERS * CHUNK)

    def assert_untouched(self, arguments):
        self.assertEqual(sorted(tree()), ["new", "old"], arguments)
        self.assertEqual(pathlib.Path("old").read_bytes(), LETTERS.encode("cp852"), arguments)
        self.assertEqual(os.path.getsize("new"), len(LETTERS) * CHUNK)

    def test_a_limit_on_the_size_of_files(self):
        for arguments in self.COMMANDS:
            self.assert_fails(arguments + " new", message="File too large", preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_FSIZE, (CHUNK, resource.RLIM_INFINITY)))
            self.assert_untouched(arguments)

    def test_signals(self):
        for end in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL):
            with subprocess.Popen([KX, *self.COMMANDS[0].split()], stdin=subprocess.PIPE, env=environment()) as process:
                process.stdin.write(b"x" * CHUNK)
                process.stdin.flush()
                while not list(pathlib.Path().glob(".kx-*")):
                    time.sleep(0.01)
                process.send_signal(end)
            self.assertEqual(process.returncode, -end)
            for left in pathlib.Path().glob(".kx-*" if end == signal.SIGKILL else "none"):
                left.unlink()
            self.assert_untouched(end)

    def test_an_input_may_be_the_output(self):
        for arguments, wanted in (("convert -f 852 -t 1250 -o old old old", (LETTERS * 2).encode("cp1250")),
                                  ("case upper -f 1250 -o ./old old", LETTERS.upper().encode("cp1250") * 2),
                                  ("sort -l CZ -f 1250 -u -o old old", LETTERS.upper().encode("cp1250"))):
            os.chmod("old", 0o600)
            self.output(arguments)
            self.assertEqual(pathlib.Path("old").read_bytes(), wanted)
            self.assertEqual(os.stat("old").st_mode & 0o777, 0o600)

    def test_faults(self):
        os.symlink("loop", "loop")
        for arguments, wanted in (("convert -f 852 -t 1250 -o loop new", "loop: Too many"),
                                  ("convert -f 852 -t 1250 -o old new none", "none: No such"),
                                  ("convert -f utf-8 -t 1250 -o old new", "does not convert"),
                                  ("convert -f 852 -t 1250 -o no/old new", "no/old: No such"),
                                  ("convert -f 852 -t 1250 -o . new", ".: Is a directory")):
            self.assert_fails(arguments, message=wanted)
            self.assert_untouched(arguments)

    def test_what_is_no_file_is_written_as_it_is(self):
        os.symlink("target", "dangling")
        self.output("convert -f 852 -t 852 -o dangling old")
        self.assertEqual(pathlib.Path("target").read_bytes(), LETTERS.encode("cp852"))
        self.assertEqual(self.output("convert -f 852 -t 852 -o /dev/stdout old"), LETTERS.encode("cp852"))
        with open("target", "ab") as target:
            subprocess.run([KX, *"convert -f 852 -t 852 -o /dev/stdout old".split()], stdout=target, check=True)
        self.assertEqual(pathlib.Path("target").read_bytes(), LETTERS.encode("cp852") * 2)
        os.mkfifo("pipe")
        with subprocess.Popen(["cat", "pipe"], stdout=subprocess.PIPE) as reader:
            self.output("convert -f 852 -t 852 -o pipe old")
            self.assertEqual(reader.stdout.read(), LETTERS.encode("cp852"))

    def test_closed_standard_streams(self):
        # None of them may become the output, or the messages an input's or output's bytes.
        for closed, arguments, status in (("2>&-", "convert -f 852 -t 437 -o old new none", 1), ("2>&-", "dump none", 1),
                                          (">&- 2>&-", "convert -f 852 -t 437 -O out -v none", 1),
                                          ("<&-", "convert -f 852 -t 437 -o old", 1), (">&-", "convert -f 852 -t 852 old", 1),
                                          ("<&- >&- 2>&-", "convert -f 852 -t 852 -c -o old old", 0)):
            result = subprocess.run(["sh", "-c", f'exec "$0" {arguments} {closed}', KX], env=environment(), check=False,
                                    capture_output=True)
            self.assertEqual(result.returncode, status, (closed, result.stderr))
            self.assert_untouched(closed)


if __name__ == "__main__":
    unittest.main()
