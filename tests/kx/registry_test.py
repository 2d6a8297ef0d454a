#!/usr/bin/env python3
"""registry_test.py KX: runs `kx registry` and `kx codepages` as a user does."""
import pathlib
import subprocess
import tempfile
import unittest

from kx_tool import KX, KxTest, environment

HEADER = "Windows Registry Editor Version 5.00\r\n"
SOFTWARE = "HKEY_CURRENT_USER\\Software\\"
FRENCH = SOFTWARE + "Norvane\\Conversions\\21\\CodePageData\\FR"


class Registry(KxTest):
    def setUp(self):
        self.settings = {"XDG_CONFIG_HOME": self.enterContext(tempfile.TemporaryDirectory())}
        self.file = pathlib.Path(self.settings["XDG_CONFIG_HOME"]) / "kxstr" / "registry.reg"

    def write(self, text):
        self.file.parent.mkdir(exist_ok=True)
        self.file.write_bytes((HEADER + text).encode())

    def kx(self, *arguments, **settings):
        return self.output(*arguments, **self.settings | settings).decode()

    def refused(self, *arguments, message="", status=1, output=b"", **settings):
        self.assert_fails(*arguments, message=message, status=status, output=output,
                          env=environment(**self.settings | settings))

    def test_values_of_all_types_come_back(self):
        for kind, value, stored in (
            ("text", 'né "a\\b"', '"né \\"a\\\\b\\""'), ("dword", "4294967295", "dword:ffffffff"),
            ("codepage", "1250", "hex(80000002):e2,04"), ("hex", "00 ff", "hex:00,ff"),
            ("link", "<v>", "hex(80000008):3c,00,76,00,3e,00,00,00"),
        ):
            self.kx("registry", "set", "-t", kind, SOFTWARE + "K", kind, value)
            self.assertIn(f'"{kind}"={stored}\n', self.file.read_text(encoding="utf-8"))
            self.assertEqual(self.kx("registry", "get", SOFTWARE.lower() + "k\\", kind.upper()), value + "\n")
        self.assertEqual(self.kx("registry", "show"), self.file.read_text(encoding="utf-8") +
                         "; writing through it sets HKEY_CURRENT_USER\\v\n")
        other = str(self.file) + ".other"
        self.kx("registry", "-f", other, "set", "HKEY_USERS", "", "other")
        self.assertEqual(self.kx("registry", "-f", other, "get", "HKEY_USERS", ""), "other\n")

    def test_known_values_have_a_type_of_their_own_and_roots_short_names(self):
        short = FRENCH.replace("HKEY_CURRENT_USER", "hkcu")
        for key, name, value, stored in (
            (short, "dos code page", "852", '"dos code page"=hex(80000002):54,03'),
            (short, "Other", "852", '"Other"="852"'), (short + "\\k", "DOS Code Page", "1", '"DOS Code Page"="1"'),
            ("HKU\\K", "DOS Code Page", "1", '"DOS Code Page"="1"'),
            ("HKLM", "v", "x", "[HKEY_LOCAL_MACHINE]\n\"v\"=\"x\""),
            ("HKCR\\a", "v", "x", "[HKEY_CLASSES_ROOT\\a]\n"), ("HKCC", "v", "x", "[HKEY_CURRENT_CONFIG]\n"),
        ):
            self.kx("registry", "set", key, name, value)
            self.assertIn(stored, self.file.read_text(encoding="utf-8"))
            self.assertEqual(self.kx("registry", "get", key, name), value + "\n")
        self.refused("registry", "set", short, "Windows Code Page", "latin", status=2, message="is no codepage")

    def test_keys_are_deleted_with_what_is_below(self):
        self.write('; 1\r\n[HKEY_USERS\\K]\r\n"v"=hex:01\r\n; in\r\n"w"=hex:01\r\n; 2\r\n[HKEY_USERS\\Kx]\r\n'
                   '[HKEY_USERS\\k\\below\\deep]\r\n"v"="x"\r\n; 3\r\n[HKEY_USERS\\K]\r\n"later"="x"\r\n')
        self.kx("registry", "delete", "hku\\K")
        rest = HEADER + "; 1\r\n; 2\r\n[HKEY_USERS\\Kx]\r\n; 3\r\n"
        self.assertEqual(self.file.read_bytes().decode(), rest)
        self.refused("registry", "delete", "HKU\\K", message="HKU\\K: not found")
        self.write('[HKEY_USERS\\K\\below]\r\n"v"=hex(40000003):00\r\n')
        self.refused("registry", "delete", "HKU\\K", message="write-protected")

    def test_what_is_exported_is_imported(self):
        self.write('; mine\r\n[HKEY_USERS\\k]\r\n"V"=hex:01 ; one\r\n"gone"="x"\r\n"stays"="x"\r\n'
                   '[HKEY_USERS\\old\\below]\r\n"v"="x"')
        other = pathlib.Path(self.settings["XDG_CONFIG_HOME"]) / "other.reg"
        other.write_text(HEADER + '[-HKEY_USERS\\OLD]\n[HKEY_USERS\\K]\n"gone"=-\n"v"="new"\n"more"=dword:1\n'
                         '[HKEY_USERS\\K\\New]\n@="x"\n[HKEY_USERS\\none]\n"l"=hex(80000008):3c,00,61,00,3e,00\n',
                         encoding="utf-8")
        for _ in range(2):  # the second time nothing changes
            self.kx("registry", "import", str(other))
            self.assertEqual(self.file.read_bytes().decode(), HEADER + '; mine\r\n[HKEY_USERS\\k]\r\n"V"="new" ; one\r\n'
                             '"stays"="x"\r\n"more"=dword:00000001\r\n\r\n[HKEY_USERS\\k\\New]\r\n@="x"\r\n\r\n'
                             '[HKEY_USERS\\none]\r\n"l"=hex(80000008):3c,00,61,00,3e,00\r\n')
        exported = self.kx("registry", "export")
        self.assertNotIn(";", exported)
        other.write_text(exported, encoding="utf-8")
        self.kx("registry", "-f", str(other) + ".2", "import", str(other))
        self.assertEqual(self.kx("registry", "-f", str(other) + ".2", "export"), exported)
        self.assertNotIn("none", self.kx("registry", "export", "HKU\\k"))
        before = self.file.read_bytes()
        for text, message in (("x", "damaged"), (HEADER + "[HKEY_USERS\\" + 256 * "k" + "]\n", "cannot hold")):
            other.write_text(text, encoding="utf-8")
            self.refused("registry", "import", str(other), message=message)
        self.refused("registry", "import", str(other) + ".3", message="other.reg.3: not found")
        self.assertEqual(self.file.read_bytes(), before)
        self.write('[HKEY_USERS\\K]\r\n"v"=hex(40000003):00\r\n')
        for text in ('[HKEY_USERS\\K]\n"v"="new"\n', "[-HKEY_USERS\\K]\n", '[HKEY_USERS\\K]\n"v"=-\n'):
            other.write_text(HEADER + text, encoding="utf-8")
            self.refused("registry", "import", str(other), message="write-protected")
        other.write_text(HEADER + '[HKEY_USERS\\K]\n"v"=hex(40000003):00\n"w"="x"\n', encoding="utf-8")
        self.kx("registry", "import", str(other))  # it stays what it is

    def test_only_what_is_named_is_shown_and_changes(self):
        before = '; mine\r\n[HKEY_USERS\\K]\r\n"v" = hex:01 ; one\r\n"a"="x"\r\n[HKEY_USERS\\Kx]\r\n"b"="y"\r\n'
        self.write(before)
        self.assertEqual(self.kx("registry", "show", "HKEY_USERS\\k"), HEADER.replace("\r", "") +
                         '\n[HKEY_USERS\\K]\n"v"=hex:01\n"a"="x"\n')
        self.kx("registry", "set", "-t", "hex", "HKEY_USERS\\k", "V", ", 02")
        self.assertEqual(self.file.read_bytes().decode(), HEADER + before.replace("01", "02"))
        self.kx("registry", "unset", "HKEY_USERS\\K", "v")
        self.assertEqual(self.file.read_bytes().decode(), HEADER + before.replace('"v" = hex:01 ; one\r\n', ""))
        self.refused("registry", "unset", "HKEY_USERS\\K", "v", message="not found")

    def test_links_that_write_elsewhere_than_they_read_are_marked(self):
        links = (("<K\\v>", "K\\v"), ("<\\HKEY_USERS\\K\\v>", None), ("<K\\there>", None), ("<K\\q\"\"\n>", "K\\q?"),
                 ("<K\\loop>", None), ("<K", None), ("", ""))
        self.write("[HKEY_CURRENT_USER\\Software\\K]\n\"loop\"=hex(80000008):" +
                   "<K\\loop>".encode("utf-16-le").hex(",") + "\n")
        self.kx("registry", "set", "-t", "link", SOFTWARE + "K", "there", "<\\HKEY_USERS\\K\\v>")
        for i, (link, _) in enumerate(links):
            self.kx("registry", "set", "-t", "link", "HKEY_USERS\\L", str(i), link)
        before = self.file.read_bytes()
        shown = self.kx("registry", "show", "HKEY_USERS\\L").splitlines()
        for i, (_, target) in enumerate(links):
            at = next(n for n, line in enumerate(shown) if line.startswith(f'"{i}"='))
            remarks = [line for line in shown[at + 1:at + 2] if line.startswith(";")]
            self.assertEqual(remarks, [] if target is None else
                             ["; writing through it sets HKEY_CURRENT_USER\\" + target], links[i])
        self.assertEqual(self.file.read_bytes(), before, "looking changes nothing")

    def test_what_is_refused(self):
        for arguments, message in (
            ("", "say what to do"), ("list", "no 'list' here"), ("get HKEY_USERS", "other operands"),
            ("show a b", "other operands"), ("get HKXX v", "does not start with a root's name"),
            ("set -t word HKEY_USERS v 1", "no 'word'; there are text"), ("set -t hex HKEY_USERS v 1", "'1' is no hex"),
            ("set -t codepage HKEY_USERS v 65536", "is no codepage"),
        ):
            with self.subTest(message):
                self.refused("registry", *arguments.split(), status=2, message=message)
        self.refused("registry", "set", "HKU", "v", b"\xff", status=2, message="is no text")
        self.refused("registry", "--file", "", "show", status=2, message="--file needs the name of a file")
        self.refused("registry", "-f", 4096 * "f", "show", status=2, message="the path is too long")
        for command in ("show", "get HKU v", "export", "unset HKU v", "delete HKU\\k"):
            self.refused("registry", "-f", str(self.file), *command.split(), message="registry.reg: not found")
        self.assertEqual(self.kx("registry", "show"), HEADER.replace("\r", ""), "the library's own is empty at first")
        self.refused("registry", "set", "HKEY_USERS\\" + 256 * "k", "v", "1", message="a name that the file cannot")
        self.refused("registry", "get", "HKEY_USERS", "v", message="not found")
        self.refused("registry", "show", "HKEY_USERS", message="not found")
        self.refused("registry", "set", "HKEY_USERS", "v", "1", message="no settings file", KX_REGISTRY="")
        self.assertFalse(self.file.exists())
        for text in ("[HKEY_USERS]\n\"v\"=hex(40000003):00\n", "\"v\"=\n"):
            self.write(text)
            self.refused("registry", "set", "HKEY_USERS", "v", "1")
            self.refused("registry", "unset", "HKEY_USERS", "v")
            self.assertEqual(self.file.read_bytes().decode(), HEADER + text)
        self.refused("codepages", message="cannot be read", output=None)  # damaged

    def in_force(self, *arguments, **settings):
        lines = self.kx("codepages", *arguments, **settings).splitlines()
        start = next(i for i, line in enumerate(lines) if line.startswith("language"))
        return [" ".join(line.split()) for line in lines[start + 1:] if line and not line.startswith("On this")]

    def test_code_pages_in_force_and_why(self):
        system = "437, the system's 1252, the system's"
        self.assertEqual(self.in_force("-l", "french"), ["EN " + system, "FR " + system])
        self.assertFalse(self.file.exists(), "looking leaves nothing behind")
        self.kx("registry", "set", "-t", "codepage", FRENCH, "Windows Code Page", "1250")
        self.kx("registry", "set", "-t", "link", FRENCH, "DOS Code Page", "<K\\dos>")
        self.kx("registry", "set", "-t", "codepage", SOFTWARE + "K", "dos", "852")
        self.assertEqual(self.in_force("-l", "en"), ["EN " + system, "FR 852, stored 1250, stored"])
        japan = "932, default of the country"
        self.assertEqual(self.in_force("-l", "DE", KX_SYSTEM_LANGID="0411")[0], f"EN {japan} {japan}")
        self.assertNotIn("DE", self.file.read_text(encoding="utf-8"), "nor in a file that is there")

    def test_code_pages_are_set_by_their_names(self):
        self.kx("codepages", "set", "FR", "--dos", "852", "--windows", "windows-1250")
        self.kx("codepages", "set", "fr_FR", "--dos=cp850")
        self.assertEqual(self.in_force(), ["EN 437, the system's 1252, the system's", "FR 850, stored 1250, stored"])
        self.kx("registry", "set", "-t", "link", FRENCH, "DOS Code Page", "<\\HKEY_USERS\\K\\v>")
        self.kx("codepages", "set", "FR", "--dos", "866")
        self.assertEqual(self.kx("registry", "get", "-t", "hex", "HKU\\K", "v"), "866\n")
        self.write("[" + FRENCH + ']\r\n"DOS Code Page"=hex(c0000002):54,03\r\n')
        self.refused("codepages", "set", "FR", "--dos", "850", message="cannot be stored (status 5)")
        self.kx("codepages", "set", "LONGEST", "--dos", "850")
        for arguments, message in (
            ("set", "a language"), ("set FR", "--dos or"), ("set LANGUAGES --dos 852", "at most 7"), ("852 850", "one page"),
            ("set sl --dos 852", "no rules for Slovene"), ("set FR --dos 999", "no code page '999'"), ("85x", "no code page '85x'"), ("--dos 852", "go with set"),
        ):
            self.refused("codepages", *arguments.split(), status=2, message=message)

    def test_what_import_takes(self):
        text = "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\K]\r\n\"x\"=\"y\"\r\n"
        subprocess.run([KX, "registry", "import", "-"], input=text.encode("utf-16"), check=True,
                       env=environment(KX_REGISTRY=str(self.file)))
        self.assertIn('"x"="y"', self.kx("registry", "show"))
        older = self.file.with_name("older.reg")
        older.write_text("REGEDIT4\n", encoding="ascii")
        self.refused("registry", "import", str(older), message="older form")

    def test_a_page_as_a_table(self):
        for page in (437, 852, 866, 1251):
            rows = [line for line in self.kx("codepages", str(page)).splitlines() if line]
            self.assertEqual(len(rows), 17)
            for byte in range(0x20, 0x100):
                cell = rows[1 + byte // 16].ljust(40)[4 + 2 * (byte % 16)]
                character = bytes([byte]).decode(f"cp{page}", errors="replace")
                if byte not in (0x7F, 0xA0, 0xA6, 0xAD, 0x98, 0xFF, 0xF0):  # without a shape, or united with another
                    self.assertEqual(cell, character, (page, hex(byte)))
            self.assertEqual(rows[1][6:9], "" if page == 1251 else "☺ ☻")
        self.assertIn("by a rule", self.kx("codepages", "950"))

    def test_table_sizes(self):
        lines = [" ".join(line.split()) for line in self.kx("codepages", "-l", "EN").splitlines()]
        self.assertEqual(lines[1], "10001 10001 01..1F 64 80..FF 258 155 in 467")
        self.assertEqual(lines[29], "932 932 - A1..DF 128 63 in 191")
        self.assertEqual(lines.index(""), 47)
        self.assertEqual(lines[48], "By rule, for their double-byte characters: 932 934 936 938 949 950")


if __name__ == "__main__":
    unittest.main()
