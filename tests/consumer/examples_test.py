#!/usr/bin/env python3
"""examples_test.py ROOT FOLDER: runs the examples, which lie compiled in the folder, and holds the pages that show them
against their sources."""
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

ROOT, FOLDER = map(pathlib.Path, sys.argv[1:3])


def run(name, *arguments, status=0, **environment):
    result = subprocess.run([FOLDER / name, *arguments], capture_output=True, env=environment)
    assert status is None or result.returncode == status, (name, result)
    return result.stdout.decode(), result.stderr.decode()


class Examples(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def test_what_they_do(self):
        self.assertEqual(run("lower_case")[0], "příliš žluťoučký kůň\n")
        page, utf16, stream = (self.folder / name for name in ("page", "utf16", "stream"))
        text = "DĚJŮ, ŽÁR\r\n" * 3000
        page.write_bytes(text.encode("cp852"))
        run("read_852", page, utf16)
        self.assertEqual(utf16.read_bytes().decode("utf-16"), text.lower())
        self.assertEqual(run("compare", "CZ", "chata", "cukr")[0], "chata > cukr\n")
        self.assertEqual(run("compare", "US", "chata", "cukr")[0], "chata < cukr\n")
        stream.write_bytes(b"A\x80\xf0\x29\x01\xf0\xf2\x0c\xf2\xd4\x01\x04\x07b\xf0\x01")
        self.assertEqual(run("walk_stream", stream, status=1),
                         ("A é\x01\x04\x07b\x01", "byte 9: the code D4 is cut off\nbyte 14: the code F0 is cut off\n"))
        settings = {"KX_REGISTRY": str(self.folder / "settings")}
        for arguments, windows in ((["CZ"], 1252), (["CZ", "1250"], 1250), (["CZ"], 1250), (["SV"], 1252)):
            self.assertIn(f"Windows {windows}, ", run("choose_page", *arguments, **settings)[0])

    def filter(self, name, data, *page, status=0):
        """What a filter makes of some bytes, and says."""
        source, target = self.folder / "source", self.folder / "target"
        source.write_bytes(data)
        said = run(name, source, target, *page, status=status)[1]
        return target.read_bytes(), said

    def test_import(self):
        group = b"\xd4\x01\x0b\x00text\x0b\x00\xd4"
        stream = (b"A\x80\x84b\xcc\xf2\x0c\xf2<&>\xf3\x0c\xf3\xcf\xf2\x05\xf2\xf0\x29\x01\xf0\xf3\x05\xf3" +
                  b"\xf0\x09\xf9\xf0\x07\xf0\xff\xff\xf0")
        text = "A -b\n<b>&lt;&amp;></b><soft/><a5>é</a5>\t<kx 0007/><kx FFFF/>"
        one = "characters without a Unicode value, in markup: 1\n"
        self.assertEqual(self.filter("import_filter", stream), (text.encode(), one))
        self.assertEqual(self.filter("import_filter", b"\xf0\x5f\x25\xf0", "932"), ("あ".encode(), ""))
        for damaged, place in ((b"\xd4\1\xff\xff", "byte 9: the code D4 is cut off"),
                               (b"\xf0A\1A", "byte 9: the code F0 is not closed"),
                               (group + b"\x90", "byte 9: the code D4 is none that this filter knows"),
                               (b"\0x", "byte 9: the stream ends, and what follows was left out")):
            out, said = self.filter("import_filter", b"text here" + damaged + b"", status=1)
            self.assertTrue(out.startswith(b"text here") and said.startswith(place), (damaged, out, said))
        # No code is lost where pieces of the file meet.
        for shift in (0, 1, 2, 3, 4, 65000):
            some = b"a" * shift + b"\xf0\x29\x01\xf0\xf2\x0e\xf2\xcc" * 60000 + b"\xf3\x0e\xf3\0"
            self.assertEqual(self.filter("import_filter", some), (b"a" * shift + "é<u>\n".encode() * 60000 + b"</u>", ""))

    def test_export_and_back(self):
        text = "\ufeffa\r\n<b>&lt;&amp;x</b><soft/>\r\r\né<a255><kx 0007/>\t😀"
        stream = b"a\xcc\xf2\x0c\xf2<&x\xf3\x0c\xf3\xcf\xcf\xcc\xf0\x29\x01\xf0\xf2\xff\xf2\x07\xf0\x09\xf9\xf0?"
        said = "line 3: KX text has no F0 9F 98 80 (😀)\nquestion marks in place of characters: 1\n"
        self.assertEqual(self.filter("export_filter", text.encode(), status=1), (stream, said))
        self.assertEqual(self.filter("export_filter", b"<i>&nbsp;<")[0], b"<i>&nbsp;<")
        self.assertEqual(self.filter("export_filter", b"a\0b\xffc", status=1)[0], b"a?b?c")
        for path in sorted((ROOT / "examples" / "texts").glob("*.txt")):
            page = path.stem.rsplit("-", 1)[1]
            text = (ROOT / "examples" / "texts" / "utf-8" / path.name).read_bytes().replace(b"\r\n", b"\n")
            text = (b"<b>" + text.replace(b"&", b"&amp;").replace(b"<", b"&lt;") + b"</b><soft/>") * 400
            stream, said = self.filter("export_filter", text, page)
            self.assertEqual((said, stream.count(b"\xf2\x0c\xf2")), ("", 400), page)
            self.assertEqual(self.filter("import_filter", stream, page), (text, ""), page)
        marks = ("a" + "\u0301" * 100000 + "\u0628").encode()
        self.assertTrue(self.filter("export_filter", marks)[0].startswith(b"\xf0"))
        # Whatever a stream holds, its text gives the same text again. (Not letters and marks, which come back as one.)
        chance = random.Random(5)
        codes = [bytes([byte]) for byte in range(256)] + [b"\xf0%c%c\xf0" % (i, j) for i in range(0x18, 256) for j in (1, 8)]
        codes += [b"\xf2\x0c\xf2", b"\xf3\x0e\xf3", b"\xcc", b"\xcf", b"<", b"&"] * 90
        for _ in range(20):
            text = self.filter("import_filter", b"".join(chance.choices(codes, k=3000)), status=None)[0]
            self.assertEqual(self.filter("import_filter", self.filter("export_filter", text)[0])[0], text)

    def test_the_pages_show_them(self):
        def shown(*pages):
            return [block for page in pages
                    for block in re.findall(r"```c\n(.*?)```", (ROOT / page).read_text("utf-8"), re.DOTALL)]

        sources = [path.read_text("utf-8") for path in (ROOT / "examples").glob("*.c")]
        filters = [source for source in sources if "_filter" in source]
        whole = [source for source in sources if source not in filters]
        self.assertEqual(sorted(shown("README.md", "docs/guide.md")), sorted(whole))
        for part in shown("docs/filters.md"):
            self.assertTrue(any(part in source for source in filters), part)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
