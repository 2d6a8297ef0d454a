"""Programs under Wine, on the system that a locale stands for: Wine takes code pages, languages and the double-byte
flag from it. Locales and Wine's own files are made in the build folder."""
import os
import pathlib
import subprocess

WINE = "wine"
SETTINGS = "HKEY_CURRENT_USER\\Software\\Norvane"  # all that the library stores


def environment(build, locale):
    """What makes a program started by WINE run on the system of a locale."""
    target = build / "locales" / f"{locale}.UTF-8"
    if not target.exists():
        target.parent.mkdir(exist_ok=True)
        subprocess.run(["localedef", "-i", locale, "-f", "UTF-8", target], check=True)
    kept = {name: os.environ[name] for name in ("PATH", "HOME", "USER") if name in os.environ}
    return kept | {"LOCPATH": str(build / "locales"), "WINEPREFIX": str(build / "wineprefix"), "WINEDEBUG": "-all",
                   "DISPLAY": "", "LC_ALL": f"{locale}.UTF-8"}


def run(build, locale, *program, timeout=300):
    """The finished process; its output as bytes."""
    build = pathlib.Path(build).resolve()
    return subprocess.run([WINE, *program], cwd=build, env=environment(build, locale), stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=timeout, check=False)


def forget_settings(build, locale):
    run(build, locale, "reg", "delete", SETTINGS, "/f")  # fails when there are none
