"""Programs under Wine, on the system that a locale stands for: Wine takes code pages, languages and the double-byte
flag from it. Locales and Wine's own files are made in the build folder."""
import os
import pathlib
import subprocess

WINE = "wine"
SETTINGS = "HKEY_CURRENT_USER\\Software\\Norvane"  # all that the library stores


def run(build, locale, *program, timeout=300):
    """The finished process; its output as bytes."""
    build = pathlib.Path(build).resolve()
    target = build / "locales" / f"{locale}.UTF-8"
    if not target.exists():
        target.parent.mkdir(exist_ok=True)
        subprocess.run(["localedef", "-i", locale, "-f", "UTF-8", target], check=True)
    environment = {name: os.environ[name] for name in ("PATH", "HOME", "USER") if name in os.environ}
    environment |= {"LOCPATH": str(build / "locales"), "WINEPREFIX": str(build / "wineprefix"), "WINEDEBUG": "-all",
                    "DISPLAY": "", "LC_ALL": f"{locale}.UTF-8"}
    return subprocess.run([WINE, *program], cwd=build, env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=timeout, check=False)


def forget_settings(build, locale):
    run(build, locale, "reg", "delete", SETTINGS, "/f")  # fails when there are none
