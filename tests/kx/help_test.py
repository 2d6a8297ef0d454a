#!/usr/bin/env python3
"""help_test.py KX: what is the same for all commands: help, manual pages, completion, --version, outputs, colours."""
import gzip
import os
import pathlib
import pty
import re
import shutil
import subprocess
import tempfile
import unittest

from kx_tool import KX, KxTest, environment, kx

PAGES = KX.parent / "tools" / "kx" / "share"
COMMANDS = re.findall(r"^  ([a-z]+)  +\S", kx("--help").stdout.decode(), re.M)[:-1]  # but help
OF_SORT = set("bckmnrstuzC")  # sort(1) gives them their meaning


def complete(line):
    """What bash offers at the end of a line."""
    words = re.findall(r"=|[^\s=]+", line) + [""] * line.endswith((" ", "="))
    script = (f"source {PAGES}/bash-completion/completions/kx; COMP_WORDS=({' '.join(map(repr, words))}); "
              f"COMP_CWORD={len(words) - 1}; _kx; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
    path = f"{KX.parent}:{os.environ['PATH']}"
    return subprocess.run(["bash", "-c", script], env=environment(PATH=path), stdout=subprocess.PIPE, check=True,
                          timeout=60).stdout.decode().split()


def on_terminal(*arguments, **settings):
    """What a command writes to a terminal."""
    terminal, inside = pty.openpty()
    subprocess.run([KX, *arguments], stdin=subprocess.DEVNULL, stdout=inside, stderr=inside, check=False,
                   env=environment(**{"TERM": "xterm"} | settings))
    os.close(inside)
    text = os.read(terminal, 1 << 16)
    os.close(terminal)
    return text


class Manners(KxTest):
    def test_every_command_explains_itself(self):
        self.assertIn("registry", COMMANDS)
        meanings = {}
        for command in COMMANDS:
            text = self.output(command, "--help").decode()
            self.assertEqual(self.output("help", command).decode(), text)
            for wanted in (f"usage: kx {command} ", "\nExample", f"\n  kx {command} ", "Exit status: 0 ", "--output=FILE", "--version"):
                self.assertIn(wanted, text, command)
            self.assertRegex(text, r";\s1\s[^;]+;\s2\sthe\scommand\sline\sis\swrong\.\n$")
            self.assertTrue(all(len(line) <= 104 for line in text.splitlines()), command)
            for letter, name in re.findall(r"^  -(.)(?:, --([\w-]+)|)", text, re.M):
                if command != "sort" or letter not in OF_SORT:
                    meanings.setdefault(letter, set()).add(name)
        self.assertEqual({letter: names for letter, names in meanings.items() if len(names) > 1}, {})
        self.assertEqual(meanings["o"], {"output"})
        for arguments in ("--help=x", "convert --help=x"):
            self.assert_fails(arguments, message="no 'x'; there are text, man, bash and zsh", status=2)
        self.assert_fails("convert --e=lf", message="'--e' may be --eol or --eof", status=2)
        self.assert_fails("dump --output", message="--output needs FILE", status=2)
        self.assert_fails("convert --bom=1", message="--bom takes no argument", status=2)

    def test_where_settings_came_from(self):
        told = self.output("case", "--version", LC_ALL="cs_CZ.UTF-8", KX_OEM_CODEPAGE="850", KX_REGISTRY="",
                           KXSTR_KERNELS="plain").decode()
        told = re.sub(" +", " ", told)
        for wanted in (r"kx \d+\.\d+\.\d+\n", r"compiler: \S+ \d", r"kernels: plain \(", r"ANSI code page 1250 \(LC_ALL\)",
                       r"OEM code page 850 \(KX_OEM_CODEPAGE\)", r"settings file none \(KX_REGISTRY\)",
                       r"DOS code page 850 \(the system's\)"):
            self.assertRegex(told, wanted)

    def test_outputs(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "out"
            text = pathlib.Path(folder) / "text"
            text.write_bytes(b"a\xcc")
            for line in ("convert --list", "sort --list", f"detect {text}", f"dump {text}", "codepages", "codepages 852",
                         "registry show"):
                plain = kx(line, env=environment(KX_REGISTRY=folder + "/none"))
                self.assertEqual(kx(line + f" -o {path}", env=environment(KX_REGISTRY=folder + "/none")).stdout, b"", line)
                self.assertEqual(path.read_bytes(), plain.stdout, line)
                self.assertEqual(kx(line + " -o -", env=environment(KX_REGISTRY=folder + "/none")).stdout, plain.stdout)
                read_end, write_end = os.pipe()
                os.close(read_end)
                closed = subprocess.run([KX, *line.split()], stdout=write_end, stderr=subprocess.PIPE, check=False,
                                        env=environment(KX_REGISTRY=folder + "/none"))
                os.close(write_end)
                self.assertNotIn(b"write", closed.stderr, line)
            settings = self.output("registry", "export", KX_REGISTRY=folder + "/none")
            self.output("registry", "--file", f"{folder}/new", "import", "-", data=settings + b"[HKEY_USERS\\K]\n")
            self.assertIn(b"HKEY_USERS\\K", (pathlib.Path(folder) / "new").read_bytes())

    def test_colours(self):
        with tempfile.NamedTemporaryFile() as stream:
            stream.write(b"a\xd0")
            stream.flush()
            self.assertIn(b"\x1b[31mLIES", on_terminal("dump", stream.name))
            self.assertIn(b"\x1b[1mkx dump\x1b[0m: ", on_terminal("dump", stream.name))
            for settings in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
                self.assertNotIn(b"\x1b", on_terminal("dump", stream.name, **settings))
            self.assertNotIn(b"\x1b", kx("dump", stream.name).stdout)


@unittest.skipUnless(PAGES.exists(), "pages are made where the tool runs")
class Pages(KxTest):
    def test_manual_pages(self):
        pages = {path.name.split(".")[0]: path for path in (PAGES / "man" / "man1").iterdir()}
        self.assertEqual(set(pages), {"kx"} | {f"kx-{command}" for command in COMMANDS})
        for name, path in pages.items():
            source = (gzip.open if path.suffix == ".gz" else open)(path, "rb").read()
            summary = re.search(rb"\.SH NAME\n\S+ \\- (.*)\n", source)[1].decode()
            explained = " ".join(self.output("help", *name.split("-")[1:]).decode().lower().split())
            self.assertTrue(summary[0].islower() and summary[:30].lower() in explained, summary)
            for command, said in ((["mandoc", "-T", "lint", "-W", "warning"], r"^(mandoc: \S+ WARNING: missing date.*\n)?$"),
                                  (["groff", "-K", "utf8", "-man", "-T", "utf8", "-ww", "-z"], "^$")):
                if shutil.which(command[0]):
                    result = subprocess.run(command, input=source, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
                    self.assertRegex(result.stdout.decode(), said, name)

    def test_completion(self):
        self.assertEqual(complete("kx co"), ["convert", "codepages"])
        for line, wanted in (("kx convert --ou", ["--output", "--output-dir"]), ("kx convert --eol=", ["keep", "lf", "crlf"]),
                             ("kx convert -f aut", ["auto"]), ("kx convert --to utf-1", ["utf-16", "utf-16le", "utf-16be"]),
                             ("kx convert --ansi 125", [f"125{digit}" for digit in range(9)]),
                             ("kx convert -t koi8", ["koi8-r", "koi8-u"]), ("kx convert -t th", []),
                             ("kx case up", ["upper"]), ("kx registry --type=dw", ["dword"]), ("kx help de", ["detect"]),
                             (f"kx dump {KX.parent}/CMakeCa", [f"{KX.parent}/CMakeCache.txt"]),
                             (f"kx convert -O {KX.parent}/CMakeCa", [])):
            self.assertEqual(complete(line), wanted, line)
        if shutil.which("zsh"):
            subprocess.run(["zsh", "-n", PAGES / "zsh" / "_kx"], check=True)


if __name__ == "__main__":
    unittest.main()
