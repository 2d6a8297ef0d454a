"""Settings go from Windows to the portable build by the registry editor's export, and back by its import."""
import os
import pathlib
import subprocess
import tempfile

from wine import SETTINGS

LOCALE = "en_US"
KEY = SETTINGS + "\\Conversions\\21\\CodePageData\\EN"


class Difference(Exception):
    pass


def check(wine, portable):
    try:
        exchange(wine, portable)
    except Difference as difference:
        print(difference)
        return False
    return True


def exchange(wine, portable):
    def under_wine(*program):
        result = wine.run(LOCALE, *program)
        if result.returncode != 0:
            raise Difference(f"{program}: exit status {result.returncode}\n{result.stderr.decode(errors='replace')}")
        return result.stdout.decode("ascii", errors="replace").strip()

    def portably(file, program, *arguments):
        environment = os.environ | {"LC_ALL": f"{LOCALE}.UTF-8", "KX_REGISTRY": str(file)}
        result = subprocess.run([portable / program, *arguments], check=True, capture_output=True, env=environment)
        return result.stdout.decode("utf-8").strip()

    def shown(file):
        # The order of values means nothing.
        return sorted(portably(file, "kx", "registry", "show", KEY).splitlines(), reverse=True)

    def export_into(file):
        file.unlink(missing_ok=True)
        under_wine("regedit", "/E", f"Z:{file}", SETTINGS)
        return file

    def expect(what, got, wanted):
        if got != wanted:
            raise Difference(f"{what}: {got!r}, but {wanted!r} was expected")
        print(f"{what}: {got if isinstance(got, str) else f'{len(got)} lines alike'}")

    with tempfile.TemporaryDirectory() as folder:
        exported, ours = pathlib.Path(folder) / "exported.reg", pathlib.Path(folder) / "ours.reg"

        wine.forget_settings()
        under_wine("./settings.exe", "1251")
        expect("Windows by its own settings", under_wine("./settings.exe"), "437 1251")
        expect("the export's first bytes", export_into(exported).read_bytes()[:2].hex(), "fffe")
        expect("the portable build by the export", portably(exported, "settings"), "437 1251")

        portably(ours, "settings", "1250")
        portably(ours, "kx", "registry", "set", "-t", "codepage", KEY, "DOS Code Page", "852")
        portably(ours, "kx", "registry", "set", KEY, "a \\ \"name\"", "a text")
        wine.forget_settings()
        under_wine("regedit", f"Z:{ours}")
        expect("Windows by our file", under_wine("./settings.exe"), "852 1250")
        expect("our file exported again", shown(export_into(exported)), shown(ours))

        # The editor takes UTF-8 for the ANSI code page; what is beyond ASCII has to come as UTF-16.
        portably(ours, "kx", "registry", "set", KEY, "na\u00efve", "text \u20ac \u3042")
        as_utf16 = pathlib.Path(folder) / "utf-16.reg"
        as_utf16.write_bytes(("\ufeff" + ours.read_text(encoding="utf-8")).encode("utf-16-le"))
        under_wine("regedit", f"Z:{as_utf16}")
        expect("our file as UTF-16 exported again", shown(export_into(exported)), shown(ours))
