#!/usr/bin/env python3
"""count.py FOLDER [LANGUAGE...]: counts the models of data/detect/ in texts of Debian packages.

Downloads the packages into FOLDER and writes, for each language, how often which letter follows which one, or for the
languages with thousands of characters, how often each character occurs; and how often the signs that are no letters
occur in all of them. tools/gen_detect.py makes the C++ of these files. The first time takes minutes, most of them for
downloads and for reading; the texts are kept in FOLDER.
"""
import argparse
import functools
import re
import subprocess
import unicodedata
from collections import Counter
from pathlib import Path

import debian_text
from languages import LANGUAGES

DATA = Path(__file__).resolve().parents[2] / "data" / "detect"

# Packages of the base system and what lies close to it, whose translations make the models. Whatever serves to measure
# them (bench/detect.py) is taken from other packages.
CATALOGUES = """coreutils bash dpkg apt tar sed grep gawk findutils diffutils gettext util-linux-locales libglib2.0-data
    libgtk-3-common libgtk-4-common gsettings-desktop-schemas passwd binutils-common wget nano make libc-l10n iso-codes
    gnupg-l10n aspell gcc-12-locales nautilus-data gnome-calculator gedit-common""".split()
MANUALS = {"en": "manpages", "pt": "manpages-pt-br", "zh-CN": "manpages-zh", "zh-TW": "manpages-zh"} | {
    language: f"manpages-{language}" for language in
    "cs da de el es fi fr hu it ja mk nb nl pl ro ru sr sv tr uk vi".split()}
DICTIONARIES = """cs:hunspell-cs sk:hunspell-sk pl:hunspell-pl hu:hunspell-hu sl:hunspell-sl hr:hunspell-hr ro:hunspell-ro
    ru:hunspell-ru uk:hunspell-uk be:hunspell-be bg:hunspell-bg sr:hunspell-sr el:hunspell-el he:hunspell-he
    ar:hunspell-ar fa:myspell-fa tr:hunspell-tr vi:hunspell-vi th:hunspell-th eo:myspell-eo en:hunspell-en-us
    fr:hunspell-fr-classical de:hunspell-de-de es:hunspell-es it:hunspell-it pt:hunspell-pt-pt ca:hunspell-ca
    nl:hunspell-nl da:hunspell-da sv:hunspell-sv nb:hunspell-no is:hunspell-is et:myspell-et lv:hunspell-lv
    lt:hunspell-lt""".split()

LARGEST_TEXT = 1_500_000    # characters of a language: more hardly changes a pair
LARGEST_SOURCE = 700_000    # of these from one package
DICTIONARY_WEIGHT = 0.15    # of the pairs, where there is text, too
PAIRS = 400_000             # the counts are scaled down to this sum
RAREST_LETTER = 1.5e-5      # of all letters; what is rarer is not of the language
IDEOGRAPHS = {"ja", "ko", "zh-CN", "zh-TW"}
MOST_CHARACTERS = 1500
SCRIPTS = {"ru": "CYRILLIC", "uk": "CYRILLIC", "be": "CYRILLIC", "bg": "CYRILLIC", "sr": "CYRILLIC", "mk": "CYRILLIC",
           "el": "GREEK", "he": "HEBREW", "ar": "ARABIC", "fa": "ARABIC", "th": "THAI", "ka": "GEORGIAN"}
BOUNDARY = "_"


@functools.cache
def script_of_character(character):
    """The first word of its name, for a letter; else nothing."""
    return unicodedata.name(character, "?").split()[0] if is_letter(character) else ""


def script_of(language):
    return SCRIPTS.get(language, "LATIN")


def is_letter(character):
    return unicodedata.category(character)[0] in "LM"


def in_1258(character):
    try:
        return bool(character.encode("cp1258"))
    except UnicodeEncodeError:
        return False


def folded(text, language):
    """In small letters, as the pages have them: Vietnamese with its tones apart, Romanian with cedillas, Arabic without
    presentation forms."""
    text = unicodedata.normalize("NFC", text).replace("\u0130", "i").lower()
    if language == "vi":
        parts = {}
        for character in set(text):
            if not in_1258(character):
                tone = [mark for mark in unicodedata.normalize("NFD", character) if in_1258(mark) and
                        unicodedata.combining(mark)]
                rest = [mark for mark in unicodedata.normalize("NFD", character) if mark not in tone]
                parts[ord(character)] = unicodedata.normalize("NFC", "".join(rest)) + "".join(tone)
        return text.translate(parts)
    if language == "ro":
        return text.replace("\u0219", "\u015f").replace("\u021b", "\u0163")
    return text


def texts_of(language, folders):
    names = LANGUAGES[language][1]
    manual = MANUALS.get(language)
    if manual in folders:
        directories = {"en": ["."], "pt": ["pt_BR"]}.get(language, [name.replace("@", "_") for name in names])
        yield manual, debian_text.manual_pages(folders[manual], directories)
    for package in CATALOGUES:
        if package in folders and language != "en":
            yield package, debian_text.catalogues(folders[package], names, 4 if language == "mt" else 16)


def is_in_script(text, language):
    scripts = [script for script in map(script_of_character, text[:200]) if script]
    own = {"ja": ("CJK", "HIRAGANA", "KATAKANA"), "ko": ("HANGUL",), "zh-CN": ("CJK",), "zh-TW": ("CJK",)}
    return sum(script in own.get(language, (script_of(language),)) for script in scripts) * 2 > len(scripts)


def collect(language, folders, cache):
    """The text of a language and the packages it came from; kept in a file for the next time."""
    if cache.exists():
        sources, text = cache.read_text(encoding="utf-8").split("\n", 1)
        return text, sources.split()
    paragraphs, seen, size, sources = [], set(), 0, []
    for package, texts in texts_of(language, folders):
        before = size
        for text in texts:
            if size >= min(LARGEST_TEXT, before + LARGEST_SOURCE):
                break
            if text not in seen and is_in_script(text, language):
                seen.add(text)
                paragraphs.append(text)
                size += len(text)
        if size > before:
            sources.append(package)
    text = "\n".join(paragraphs)
    cache.write_text(" ".join(sources) + "\n" + text, encoding="utf-8")
    return text, sources


def count_pairs(text, letters):
    """{(first, second): count}, and the same for the first two letters of words."""
    words = Counter(text.translate({ord(one): " " for one in set(text) - letters}).split())
    pairs, starts = Counter(), Counter()
    for word, count in words.items():
        for pair in zip(BOUNDARY + word, word + BOUNDARY):
            pairs[pair] += count
        starts[word[0], (word + BOUNDARY)[1]] += count
    return pairs, starts


def merged(in_text, in_words, weight):
    """Both scaled to PAIRS together, or to what they have if it is less; the words of a dictionary have this weight."""
    result = {}
    whole = min(PAIRS, in_text.total() + in_words.total())
    for pair in in_text.keys() | in_words.keys():
        share = (1 - weight) * in_text[pair] / max(in_text.total(), 1) + weight * in_words[pair] / max(in_words.total(), 1)
        if round(whole * share):
            result[pair] = round(whole * share)
    return result


def rows_of(pairs, letters, prefix=""):
    for first in letters:
        row = sorted(((count, second) for (left, second), count in pairs.items() if left == first),
                     key=lambda one: (-one[0], one[1]))
        yield f"{prefix}{written(first)}: " + " ".join(f"{written(second)} {count}" for count, second in row)


def usual_letters(text, script):
    counts = {one: count for one, count in Counter(text).items() if is_letter(one)}
    least = max(sum(counts.values()) * RAREST_LETTER, 3)
    return {letter for letter, count in counts.items() if count >= least and
            (unicodedata.name(letter, "").startswith(script) or unicodedata.combining(letter))}


def written(letter):
    """Marks and blanks do not stand alone in a line of text."""
    return letter if unicodedata.category(letter)[0] not in "MZC" else f"U+{ord(letter):04X}"


@functools.cache
def versions(packages):
    info = subprocess.run(["apt-cache", "show", "--no-all-versions", *packages], capture_output=True, text=True,
                          check=False).stdout
    return dict(re.findall(r"^Package: (\S+)$.*?^Version: (\S+)$", info, flags=re.M | re.S))


def header(name, what, sources, folders):
    packed, line = [], "# Sources:"
    known = versions(tuple(sorted(folders)))
    for source in [f"{package} {known.get(package, '')}".strip() for package in sources]:
        if len(line) + len(source) > 116:
            packed.append(line)
            line = "#  "
        line += f" {source},"
    packed.append(line.rstrip(",") + ".")
    return "\n".join([f"# {name}: {what}", "# Counted by tools/detect/count.py in the text of Debian packages.", *packed,
                      "# Terms: numbers only, no text of the packages, which are free software or documentation (see the",
                      "# copyright file of each).", ""])


def write_pairs(language, folders, dictionary, cache):
    text, sources = collect(language, folders, cache)
    text = folded(text, language)
    script = script_of(language)
    words = []
    if dictionary in folders:
        words = [folded(word, language) for word in debian_text.dictionary_words(folders[dictionary])]
        sources.append(dictionary)
    letters = usual_letters(text, script) | usual_letters("".join(words), script)
    if script == "LATIN":
        letters |= set("abcdefghijklmnopqrstuvwxyz")
    in_text, in_words = count_pairs(text, letters), count_pairs(" ".join(words), letters)
    weight = DICTIONARY_WEIGHT if text else 1.0
    weight = weight if words else 0.0
    pairs, starts = (merged(*both, weight) for both in zip(in_text, in_words))
    name = LANGUAGES[language][0]
    what = f"which letter follows which one, in {sum(pairs.values())} pairs; _ is the edge of a word."
    lines = [header(name, what, sources, folders), f"language {language} {name}"]
    lines += rows_of(pairs, [BOUNDARY, *sorted(letters)])
    lines += [f"# The same at the start of words, in {sum(starts.values())} words."]
    lines += rows_of(starts, sorted(letters), BOUNDARY)
    (DATA / f"{language}.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(f"{language}: {len(text)} characters, {len(words)} words, {len(letters)} letters from {len(sources)} packages")
    return text


def write_characters(language, folders, cache):
    text, sources = collect(language, folders, cache)
    counts = Counter(character for character in text if ord(character) > 0x7F)
    scale = min(1.0, PAIRS / counts.total())
    rows = [(count, character) for character, count in counts.items() if count * scale >= 1]
    rows = sorted(rows, key=lambda one: (-one[0], one[1]))[:MOST_CHARACTERS]
    name = LANGUAGES[language][0]
    lines = [header(name, "how often each character occurs, of those that are not of ASCII.", sources, folders),
             f"characters {language} {name}"]
    lines += [f"{written(character)} {round(count * scale)}" for count, character in rows]
    (DATA / f"{language}.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(f"{language}: {len(text)} characters, {len(rows)} of {len(counts)} kept")
    return text


def write_signs(signs, folders):
    total = signs.total()
    lines = [header("Signs", "how often characters that are no letters occur, in a million of them.", [], folders)
             .replace("# Sources:.\n", "# Sources: those of all languages.\n"), "signs"]
    for sign, count in sorted(signs.items(), key=lambda one: (-one[1], one[0])):
        if ord(sign) >= 0xA0 and count > 2 and count * 1e6 / total >= 1:
            lines.append(f"U+{ord(sign):04X} {round(count * 1e6 / total)} {unicodedata.name(sign, '?').lower()}")
    (DATA / "signs.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=Path)
    parser.add_argument("languages", nargs="*")
    options = parser.parse_args()
    dictionaries = dict(entry.split(":") for entry in DICTIONARIES)
    wanted = options.languages or list(LANGUAGES)
    folders = debian_text.unpack([*CATALOGUES, *dictionaries.values(), *sorted(set(MANUALS.values()))], options.folder)
    DATA.mkdir(parents=True, exist_ok=True)
    signs = Counter()
    for language in wanted:
        cache = options.folder / f"{language}.text"
        if language in IDEOGRAPHS:
            write_characters(language, folders, cache)
        else:
            text = write_pairs(language, folders, dictionaries.get(language), cache)
            signs += Counter({one: count for one, count in Counter(text).items() if not is_letter(one)})
    if not options.languages:
        write_signs(signs, folders)


if __name__ == "__main__":
    main()
