"""Programs under Wine, each on the system that a locale stands for: Wine takes code pages, languages and the double-byte
flag from it."""
import os
import pathlib
import subprocess
import tempfile

WINE = "wine"
SETTINGS = "HKEY_CURRENT_USER\\Software\\Norvane"  # all that the library stores


class Wine:
    """A Wine of its own, with its files and its locales in a temporary folder. It ends with the `with` block."""

    def __init__(self, build):
        self.build = pathlib.Path(build).resolve()

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="kxstr-wine-", ignore_cleanup_errors=True)
        self._start_quietly()  # makes the prefix, and a server that ends with its last program
        self._server("-w")
        self._server("-p")  # one that stays, so that programs start at once
        self._start_quietly()
        return self

    def _start_quietly(self):
        # What starts first leaves services behind that keep its output open.
        subprocess.run([WINE, "wineboot"], env=self.environment("en_US"), stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=600, check=True)

    def __exit__(self, *_):
        self._server("-k")
        self._server("-w")
        self._folder.cleanup()

    def _server(self, option):
        subprocess.run(["wineserver", option], env=self.environment("en_US"), check=False, timeout=60)

    def environment(self, locale):
        locales = pathlib.Path(self._folder.name) / "locales"
        target = locales / f"{locale}.UTF-8"
        if not target.exists():
            locales.mkdir(exist_ok=True)
            subprocess.run(["localedef", "-i", locale, "-f", "UTF-8", target], check=True)
        kept = {name: os.environ[name] for name in ("PATH", "HOME", "USER") if name in os.environ}
        return kept | {"LOCPATH": str(locales), "WINEPREFIX": str(pathlib.Path(self._folder.name) / "prefix"),
                       "WINEDEBUG": "-all", "DISPLAY": "", "LC_ALL": f"{locale}.UTF-8"}

    def run(self, locale, *program, timeout=300):
        """The finished process; its output as bytes. Programs of the build are named from its folder."""
        return subprocess.run([WINE, *program], cwd=self.build, env=self.environment(locale), capture_output=True,
                              stdin=subprocess.DEVNULL, timeout=timeout, check=False)

    def forget_settings(self, locale="en_US"):
        self.run(locale, "reg", "delete", SETTINGS, "/f")  # fails when there are none
