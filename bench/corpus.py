#!/usr/bin/env python3
"""corpus.py FOLDER: makes the texts of the benchmarks out of what Debian packages install on this machine.

text-LANG.txt   running text in UTF-8, lines as they were, only characters of the language's code page
words-LANG.txt  20,000 words, one a line, in an order that is random but the same on every machine with these packages

`tools/deps.sh bench` installs the packages. Nothing is fetched here.
"""

import gettext
import glob
import gzip
import random
import re
import sys
from pathlib import Path

TEXT_CHARACTERS = 1 << 20
WORDS = 20_000

# What roff writes for characters; other escapes are fonts, sizes and spacing, and say nothing.
ROFF_CHARACTERS = {"-": "-", "e": "\\", "(aq": "'", "(cq": "’", "(oq": "‘", "(lq": "“", "(rq": "”", "(em": "—",
                   "(en": "–", "(dq": '"', "(bu": "•", "(co": "©", " ": " ", "~": " ", "'": "'"}
ROFF_ESCAPE = re.compile(r"\\(f(?:\(..|\[[^]]*\]|.)|s[+-]?\d+|\*?\(..|\*?\[[^]]*\]|.)")


def roff_text(source):
    """The text of a manual page; the first word of a request goes, its arguments stay."""
    for line in source.splitlines():
        if line.startswith((".\\\"", "'\\\"", ".TH", ".de", ".if", ".ie", ".el", ".nr", ".ds")):
            continue
        if line.startswith((".", "'")):
            line = line.partition(" ")[2].replace('"', "")
        line = ROFF_ESCAPE.sub(lambda match: ROFF_CHARACTERS.get(match[1], ""), line)
        if line.strip():
            yield line


def manual_pages(language):
    for path in sorted(glob.glob(f"/usr/share/man/{language}/man*/*.gz")):
        if not Path(path).is_symlink():
            yield from roff_text(gzip.decompress(Path(path).read_bytes()).decode("utf-8", "replace"))


def messages(language, programs):
    for program in programs:
        with open(f"/usr/share/locale/{language}/LC_MESSAGES/{program}.mo", "rb") as file:
            catalogue = gettext.GNUTranslations(file)._catalog  # there is no public way to list it
        for key, text in catalogue.items():
            if key:
                yield from text.splitlines()


def licenses():
    for path in sorted(Path("/usr/share/common-licenses").iterdir()):
        if not path.is_symlink():
            yield from path.read_text("utf-8").splitlines()


# Language: lines and code page. Greek has few translated pages; messages of programs that every machine has fill up.
TEXTS = {
    "en": (licenses, "cp1252"),
    "fr": (lambda: manual_pages("fr"), "cp1252"),
    "ru": (lambda: manual_pages("ru"), "cp1251"),
    "el": (lambda: [*manual_pages("el"), *messages("el", ["apt", "bash", "diffutils", "dpkg", "findutils"])], "cp1253"),
    "ja": (lambda: manual_pages("ja"), "cp932"),
    "zh": (lambda: manual_pages("zh_TW"), "cp950"),  # Traditional, for kx han
}


def code_page_characters(code_page):
    """A test of one character, remembered: whether the page has it. Of the controls only the line end counts.

    The broken bar and the soft hyphen are one with the bar and the hyphen in KX text, so no peer has the same result."""
    known = {"\n": True, "¦": False, "\u00ad": False}

    def has(character):
        if character not in known:
            try:
                known[character] = character >= " " and character.encode(code_page).decode(code_page) == character
            except UnicodeError:
                known[character] = False
        return known[character]

    return has


def text(language):
    lines, code_page = TEXTS[language]
    has = code_page_characters(code_page)
    result = []
    length = 0
    for line in lines():
        # One plain space for each run of spaces of any kind, tabs and no-break spaces among them.
        line = "".join(filter(has, " ".join(line.split())))
        if not line or line == (result[-1] if result else None):
            continue
        result.append(line)
        length += len(line) + 1
        if length >= TEXT_CHARACTERS:
            break
    return "\n".join(result) + "\n"


def word_list(path, encoding="utf-8"):
    return Path(path).read_text(encoding).split("\n")


def dictionary(path):
    """The words of a hunspell dictionary, without its count and the flags behind the slash."""
    return [line.partition("/")[0].strip() for line in word_list(path)[1:]]


def skk():
    """Readings in kana and the words written for them, from the entries that are whole words."""
    for line in word_list("/usr/share/skk/SKK-JISYO.L", "euc_jp"):
        if line.startswith(";") or " /" not in line:
            continue
        reading, _, forms = line.partition(" /")
        if reading[-1:].isascii() or not reading:
            continue
        yield reading
        yield from (form.partition(";")[0] for form in forms.strip("/").split("/"))


# By the language codes of the library.
WORD_LISTS = {
    "US": (lambda: word_list("/usr/share/dict/american-english"), "cp1252"),
    "ES": (lambda: word_list("/usr/share/dict/spanish"), "cp1252"),
    "SV": (lambda: word_list("/usr/share/dict/swedish", "latin-1"), "cp1252"),
    "CZ": (lambda: dictionary("/usr/share/hunspell/cs_CZ.dic"), "cp1250"),
    "HE": (lambda: dictionary("/usr/share/hunspell/he_IL.dic"), "cp1255"),
    "JP": (skk, "cp932"),
}


def words(language):
    source, code_page = WORD_LISTS[language]
    has = code_page_characters(code_page)
    usable = sorted({word for word in source()
                     if word and all(c.isalpha() or c in "'ー" for c in word) and all(map(has, word))})
    chosen = random.Random(1).sample(usable, WORDS)
    return "\n".join(chosen) + "\n"


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for name, make, languages in (("text", text, TEXTS), ("words", words, WORD_LISTS)):
        for language in languages:
            path = folder / f"{name}-{language}.txt"
            if not path.exists():
                path.write_text(make(language), "utf-8")
                print(f"{path}: {path.stat().st_size} bytes")


if __name__ == "__main__":
    main()
