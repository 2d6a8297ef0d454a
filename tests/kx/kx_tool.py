"""How the tests of the kx tool start it: as a user does, in an environment of their own. Run as NAME_test.py KX."""
import os
import pathlib
import re
import subprocess
import sys
import unittest

KX = pathlib.Path(sys.argv.pop(1)).resolve()
TEXTS = pathlib.Path(__file__).resolve().parents[2] / "examples" / "texts"
CHUNK = 64 * 1024  # bytes that the tool reads at once


def environment(**settings):
    kept = {name: value for name, value in os.environ.items() if not name.startswith(("KX_", "LC_", "LANG"))}
    return kept | {"LC_ALL": "C"} | settings


def kx(*arguments, data=b"", **options):
    """Runs the tool; one argument alone is a command line, split at its spaces. Options are those of subprocess.run."""
    arguments = arguments[0].split() if len(arguments) == 1 else arguments
    streams = {"input": data, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
    return subprocess.run([KX, *arguments], **streams | {"env": environment(), "timeout": 240} | options, check=False)


def rows_of(name):
    """The rows of a file beside the tests: fields between bars, as bytes, with a few of the escapes of C."""
    def meant(escape):
        return {b"n": b"\n", b"r": b"\r", b"0": b"\0", b"\\": b"\\"}.get(escape[1]) or bytes([int(escape[1][1:], 16)])
    for line in pathlib.Path(__file__).with_name(name).read_bytes().splitlines():
        if line and not line.startswith(b"#"):
            yield [re.sub(rb"\\(x..|.)", meant, field) for field in line.split(b" | ")]


def units(*values):
    return b"".join(value.to_bytes(2, "little") for value in values)


class KxTest(unittest.TestCase):
    def output(self, *arguments, data=b"", **settings):
        """What a command writes that must succeed without a word, but about characters where it was told to change them."""
        arguments = arguments[0].split() if len(arguments) == 1 else arguments
        changes = any(str(word).startswith(("-c", "--subst")) for word in arguments)
        result = kx(*arguments, *["-q"] * changes, data=data, env=environment(**settings))
        self.assertEqual((result.stderr.decode(), result.returncode), ("", 0), arguments)
        return result.stdout

    def assert_fails(self, *arguments, message, status=1, output=b"", **options):
        """That a command tells a fault (part of its words, or a pattern), and nothing else but this output (None: any)."""
        result = kx(*arguments, **options)
        self.assertRegex(result.stderr.decode(errors="replace"),
                         message if isinstance(message, re.Pattern) else re.compile(re.escape(message)))
        self.assertEqual(result.returncode, status)
        if output is not None:
            self.assertEqual(result.stdout or b"", output)
