#!/usr/bin/env python3
"""registry_test.py KX: runs `kx registry` and `kx codepages` as a user does."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

KX = ""
ROOT = "HKEY_CURRENT_USER\\Software\\"
FRENCH = ROOT + "Norvane\\Conversions\\21\\CodePageData\\FR"
HAND_MADE = "Windows Registry Editor Version 5.00\r\n; mine\r\n[HKEY_USERS\\K]\r\n\"v\" = hex:01 ; one\r\n"


class Registry(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.file = pathlib.Path(self.folder.name) / "kxstr" / "registry.reg"

    def kx(self, *arguments, status=0, **settings):
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("KX_", "LC_", "LANG"))}
        result = subprocess.run([KX, *arguments], capture_output=True, check=False, timeout=60,
                                env=kept | {"XDG_CONFIG_HOME": self.folder.name, "LC_ALL": "C"} | settings)
        self.assertEqual(result.returncode, status, result.stderr.decode())
        self.assertEqual(bool(result.stderr), status != 0, "a failure, and nothing else, is explained")
        return result.stdout.decode()

    def test_values_of_all_types_come_back(self):
        for kind, value, stored in (("text", 'né "a\\b"', '"né \\"a\\\\b\\""'), ("dword", "4294967295", "dword:ffffffff"),
                                    ("codepage", "1250", "hex(80000002):e2,04"), ("hex", "00 ff", "hex:00,ff"),
                                    ("link", "<v>", "hex(80000008):3c,00,76,00,3e,00,00,00")):
            self.kx("registry", "set", "-t", kind, ROOT + "K", kind, value)
            self.assertIn(f'"{kind}"={stored}\n', self.file.read_text(encoding="utf-8"))
            self.assertEqual(self.kx("registry", "get", ROOT.lower() + "k\\", kind.upper()), value + "\n")
        self.assertEqual(self.kx("registry", "show"), self.file.read_text(encoding="utf-8"))
        self.assertEqual(self.kx("registry", "show", "HKEY_USERS", status=1), "")

    def test_only_what_is_named_changes(self):
        self.file.parent.mkdir()
        self.file.write_text(HAND_MADE, newline="")
        self.kx("registry", "set", "-t", "hex", "HKEY_USERS\\k", "V", "02")
        self.assertEqual(self.file.read_bytes().decode(), HAND_MADE.replace("01", "02"))
        self.kx("registry", "unset", "HKEY_USERS\\K", "v")
        self.assertEqual(self.file.read_bytes().decode(), "".join(HAND_MADE.splitlines(True)[:3]))
        self.kx("registry", "unset", "HKEY_USERS\\K", "v", status=1)

    def test_what_is_refused(self):
        for arguments in ((), ("list",), ("get", "HKEY_USERS"), ("get", "HKCU", "v"), ("show", "a", "b"),
                          ("set", "-t", "word", "HKEY_USERS", "v", "1"), ("set", "-t", "hex", "HKEY_USERS", "v", "1"),
                          ("set", "-t", "codepage", "HKEY_USERS", "v", "65536")):
            self.kx("registry", *arguments, status=2)
        self.kx("registry", "get", "HKEY_USERS", "v", status=1)
        self.kx("registry", "set", "HKEY_USERS", "v", "1", status=1, KX_REGISTRY="")
        self.assertFalse(self.file.exists())
        self.file.parent.mkdir()
        for text in ("[HKEY_USERS]\n\"v\"=hex(40000003):00\n", "\"v\"=\n"):
            self.file.write_text("Windows Registry Editor Version 5.00\n" + text)
            before = self.file.read_bytes()
            self.kx("registry", "set", "HKEY_USERS", "v", "1", status=1)
            self.kx("registry", "unset", "HKEY_USERS", "v", status=1)
            self.assertEqual(self.file.read_bytes(), before)
        self.kx("codepages", status=1)  # damaged

    def in_force(self, *arguments, **settings):
        lines = self.kx("codepages", *arguments, **settings).splitlines()
        start = next(i for i, line in enumerate(lines) if line.startswith("language"))
        return [" ".join(line.split()) for line in lines[start + 1:] if line and not line.startswith("On this")]

    def test_code_pages_in_force_and_why(self):
        system = "437, the system's 1252, the system's"
        self.assertEqual(self.in_force("-l", "fr"), ["EN " + system, "fr " + system])
        self.assertFalse(self.file.exists(), "looking leaves nothing behind")
        self.kx("registry", "set", "-t", "codepage", FRENCH, "Windows Code Page", "1250")
        self.kx("registry", "set", "-t", "link", FRENCH, "DOS Code Page", "<K\\dos>")
        self.kx("registry", "set", "-t", "codepage", ROOT + "K", "dos", "852")
        self.assertEqual(self.in_force(), ["EN " + system, "FR 852, stored 1250, stored"])
        japan = "932, default of the country"
        self.assertEqual(self.in_force(KX_SYSTEM_LANGID="0411")[0], f"EN {japan} {japan}")

    def test_table_sizes(self):
        lines = self.kx("codepages").splitlines()
        self.assertEqual([" ".join(line.split()) for line in (lines[1], lines[29], lines[40])],
                         ["10001 10001 01..1F 64 80..FF 258 155 in 467", "932 932 - A1..DF 128 63 in 191",
                          "18851 28591 - 7F..FF 260 93 in 281"])
        self.assertEqual(lines.index(""), 47)


if __name__ == "__main__":
    KX = sys.argv.pop(1)
    unittest.main()
