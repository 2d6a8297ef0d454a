#!/usr/bin/env python3
"""examples_test.py ROOT FOLDER: runs the examples, which lie compiled in the folder, and holds the pages that show them
against their sources."""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT, FOLDER = map(pathlib.Path, sys.argv[1:3])


def run(name, *arguments, status=0, **environment):
    result = subprocess.run([FOLDER / name, *arguments], capture_output=True, env=environment)
    assert result.returncode == status, (name, result)
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

    def test_the_pages_show_them(self):
        shown = [block for page in ("README.md", "docs/guide.md")
                 for block in re.findall(r"```c\n(.*?)```", (ROOT / page).read_text("utf-8"), re.DOTALL)]
        sources = [path.read_text("utf-8") for path in (ROOT / "examples").glob("*.c")]
        self.assertEqual(sorted(shown), sorted(sources))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
