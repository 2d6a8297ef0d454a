#!/usr/bin/env python3
"""detect.py [FOLDER]: how often libkxdetect and its peers find the page of a text, and how fast.

The texts come from Debian packages of which no model was made (see tools/detect/count.py for those): help, manuals,
wikis, sayings. FOLDER keeps them between two runs. An answer is right when its page decodes the sample to the text that
it was made of; all the pages that do are equally right.
"""
import argparse
import json
import random
import re
import struct
import subprocess
import sys
import time
import unicodedata
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tools" / "detect"))

import debian_text  # noqa: E402
from languages import LANGUAGES  # noqa: E402

DEBIAN_GUIDES = "de en es fr it ja pt zh-cn zh-tw".split()
PACKAGES = ["gnome-user-docs", "mediawiki", "installation-guide-amd64", "evolution-common", "gnome-control-center-data",
            "python3-django", "debian-faq-ko", *(f"debian-reference-{name}" for name in DEBIAN_GUIDES),
            *(f"aptitude-doc-{name}" for name in ("fi", "nl", "ru")),
            "fortunes", *(f"fortunes-{name}" for name in "bg cs de es it pl ru br zh eo".split())]
SAYINGS = {"en": "fortunes", "pt": "fortunes-br", "zh-CN": "fortunes-zh"}
WIKI = {"nb": ["nb", "nn"], "pt": ["pt-br", "pt"], "zh-CN": ["zh-hans"], "zh-TW": ["zh-hant"],
        "sr": ["sr-ec"], "be": ["be", "be-tarask"], "hr": ["hr", "bs"]}
# Pages without a model of their own: some are told by what they have in common with others, and the rest should not
# seem sure.
OTHER_PAGES = {
    "euc_jp": "ja", "iso2022_jp": "ja", "utf_32_le": "cs ru ja", "utf_32_be": "de el", "utf_7": "cs ru fr",
    "johab": "ko", "hz": "zh-CN", "cp037": "en de", "cp500": "fr", "cp1026": "tr", "cp424": "he", "cp875": "el",
    "mac_greek": "el", "mac_latin2": "cs pl hu", "mac_turkish": "tr", "mac_iceland": "is", "hp_roman8": "fr de",
    "iso8859_3": "mt eo", "iso8859_4": "lt et", "iso8859_13": "lt lv", "iso8859_16": "ro"}
SURE = 750  # the share from which on `kx convert -f auto` takes an answer
LARGEST_SOURCE = 400_000  # characters of a language from one package

FAMILIES = {
    "Western": "en fr de es it pt ca nl da sv nb fi is", "Central European": "cs sk pl hu sl hr ro",
    "Baltic": "et lv lt", "Cyrillic": "ru uk be bg sr mk", "Greek": "el", "Hebrew": "he", "Arabic": "ar fa",
    "Turkish, Maltese, Esperanto": "tr mt eo", "Vietnamese": "vi", "Thai": "th", "Georgian": "ka", "Japanese": "ja",
    "Korean": "ko", "Chinese": "zh-CN zh-TW"}
FAMILY_OF = {language: family for family, languages in FAMILIES.items() for language in languages.split()}

# What people wrote for a character that their page does not have.
INSTEAD = {"\u2018": "'", "\u2019": "'", "\u201a": ",", "\u201c": '"', "\u201d": '"', "\u201e": '"', "\u2013": "-",
           "\u2014": "-", "\u2010": "-", "\u2011": "-", "\u2212": "-", "\u2026": "...", "\u00ab": '"', "\u00bb": '"',
           "\u2039": "<", "\u203a": ">", "\u00a0": " ", "\u202f": " ", "\u200b": "", "\u200e": "", "\u200f": "",
           "\u200c": "", "\u200d": "", "\ufeff": "", "\u2022": "*", "\u2192": "->", "\u2190": "<-", "\u0218": "\u015e",
           "\u0219": "\u015f", "\u021a": "\u0162", "\u021b": "\u0163", "\u06cc": "\u064a", "\u06a9": "\u0643",
           "\u0143\u0301": "N", "\u2009": " ", "\u00d7": "x", "\u2020": "+", "\u02bc": "'", "\u2122": "(TM)",
           "\u00a9": "(C)", "\u00ae": "(R)"}


def read_pages():
    pages, name = {}, ""
    for line in (ROOT / "data" / "detect" / "pages.txt").read_text(encoding="utf-8").splitlines():
        if line.startswith("page "):
            name = line.split()[1]
            pages[name] = [chr(byte) for byte in range(128)]
        elif name and line and not line.startswith("#"):
            pages[name] += [None if field == "-" else chr(int(field, 16)) for field in line.split()[1:]]
    return pages


PAGES = read_pages()
BYTES = {name: {character: byte for byte, character in reversed(list(enumerate(characters))) if character}
         for name, characters in PAGES.items()}
CODECS = {"932": "cp932", "936": "gbk", "949": "cp949", "950": "cp950", "utf-8": "utf-8", "utf-16le": "utf-16le",
          "utf-16be": "utf-16be", "ascii": "ascii"}


def decode(data, page):
    if page in PAGES:
        table = PAGES[page]
        return "".join(table[byte] or "\ufffd" for byte in data)
    try:
        return data.decode(CODECS.get(page, page), "replace")
    except LookupError:
        return None


FORMS = {}  # letter and form of an Arabic letter: the presentation form
for code in range(0xFE70, 0xFEFD):
    parts = unicodedata.decomposition(chr(code)).split()
    if len(parts) == 2:
        FORMS[chr(int(parts[1], 16)), parts[0]] = chr(code)


def shaped(text):
    """Arabic in presentation forms, as page 864 has them."""
    def joins(character, side):
        return (character, side) in FORMS
    result = []
    for place, character in enumerate(text):
        before = place > 0 and joins(text[place - 1], "<initial>") and joins(character, "<final>")
        after = place + 1 < len(text) and joins(character, "<initial>") and joins(text[place + 1], "<final>")
        wanted = "<medial>" if before and after else "<final>" if before else "<initial>" if after else "<isolated>"
        forms = {"<medial>": ["<medial>", "<initial>"], "<initial>": ["<initial>"],
                 "<final>": ["<final>", "<isolated>"], "<isolated>": ["<isolated>", "<final>"]}[wanted]
        found = [FORMS[character, form] for form in forms if (character, form) in FORMS]
        found = [form for form in found if form in BYTES["864"]] or found
        result.append(found[0] if found and character not in BYTES["864"] else character)
    return "".join(result)


def adapted(text, page):
    """The text in the characters of a page, or nothing when too many of them are missing."""
    if page in CODECS:
        codec = CODECS[page]
        if codec.startswith("utf"):
            return text

        def has(character):
            try:
                return bool(character.encode(codec))
            except UnicodeEncodeError:
                return False
    else:
        def has(character):
            return character in BYTES[page]
    if page == "864":
        text = shaped(text)
    result, lost = [], 0
    for character in text:
        if character not in "\n" and character != " " and not has(character):
            parts = unicodedata.normalize("NFD", character)
            if page == "1258" and len(parts) > 1:
                tones = [mark for mark in parts if unicodedata.combining(mark) and has(mark)]
                base = unicodedata.normalize("NFC", "".join(mark for mark in parts if mark not in tones))
                replaced = base + "".join(tones)
            else:
                replaced = INSTEAD.get(character)
            if replaced is None:
                replaced = parts[0] if has(parts[0]) else "?"
                lost += 1 if unicodedata.category(character)[0] in "LM" or replaced == "?" else 0
            character = "".join(one for one in replaced if has(one) or one == " ")
        result.append(character)
    return "".join(result) if lost * 100 <= len(text) else None


def encoded(text, page):
    if page in CODECS:
        return text.encode(CODECS[page], "replace")
    return bytes(BYTES[page][character] for character in text)


def collect(folders):
    """{language: paragraphs} of everything in the packages."""
    texts = defaultdict(list)

    def take(language, paragraphs):
        size = 0
        for paragraph in paragraphs:
            size += len(paragraph)
            if size > LARGEST_SOURCE:
                break
            texts[language].append(" ".join(paragraph.split()))

    def pages_of(package, pattern):
        for path in sorted(folders[package].glob(pattern)):
            yield from debian_text.markup(path)

    for language, (_, names, _) in LANGUAGES.items():
        code = names[0]
        take(language, pages_of("gnome-user-docs", f"usr/share/help/{'C' if code == 'en' else code}/**/*.page"))
        for wiki in WIKI.get(language, [code]):
            for path in sorted(folders["mediawiki"].glob(f"usr/share/mediawiki/languages/i18n/{wiki}.json")):
                take(language, debian_text.json_messages(path))
        for guide in {code, code.lower().replace("_", ".").replace("zh.cn", "zh_CN").replace("zh.tw", "zh_TW")}:
            take(language, pages_of("installation-guide-amd64",
                                    f"usr/share/doc/installation-guide-amd64/{guide}/*.html"))
        for package in (f"debian-reference-{code.lower().replace('_', '-')}", f"aptitude-doc-{code}",
                        f"debian-faq-{code}"):
            if package in folders:
                take(language, pages_of(package, "usr/share/**/*.html"))
        if code != "en":
            for package in ("evolution-common", "gnome-control-center-data", "python3-django"):
                take(language, debian_text.catalogues(folders[package], names))
        sayings = SAYINGS.get(language, f"fortunes-{code}")
        if sayings in folders:
            for path in sorted(folders[sayings].glob("usr/share/games/fortunes/**/*")):
                if path.is_file() and not path.is_symlink() and path.suffix not in (".dat", ".u8") and "off" not in path.parts:
                    take(language, debian_text.read_text(path).split("\n%\n"))
    return texts


def is_foreign(text, language):
    """English that nobody has translated, in the languages that have letters of their own."""
    if FAMILY_OF[language] in ("Western", "Turkish, Maltese, Esperanto", "Baltic", "Central European"):
        words = re.findall(r"[a-z]+", text.lower())
        english = sum(word in ("the", "of", "to", "and", "is", "you", "for", "this", "with") for word in words)
        return language != "en" and english * 8 > len(words)
    letters = [letter for letter in text if letter.isalpha()]
    return sum(letter < "\u0100" for letter in letters) * 2 > len(letters)


def wrapped(text, width):
    lines, line = [], ""
    for word in text.split(" "):
        if line and len(line) + len(word) >= width:
            lines.append(line)
            line = word
        else:
            line = f"{line} {word}" if line else word
    return lines + [line]


def framed(text, page):
    has = BYTES.get(page, {})
    signs = "\u2554\u2550\u2557\u2551\u255a\u255d" if "\u2554" in has else "\u250c\u2500\u2510\u2502\u2514\u2518"
    if any(sign not in has for sign in signs):
        return None
    lines = wrapped(text, 52)
    width = max(map(len, lines))
    body = [f"{signs[3]} {line.ljust(width)} {signs[3]}" for line in lines]
    return "\n".join([signs[0] + signs[1] * (width + 2) + signs[2], *body,
                      signs[4] + signs[1] * (width + 2) + signs[5]])


def capitals(text, language):
    if language == "el":
        text = "".join(letter for letter in unicodedata.normalize("NFD", text) if letter != "\u0301")
        text = unicodedata.normalize("NFC", text)
    if language == "tr":
        text = text.replace("i", "\u0130")
    return text.upper()


class Samples:
    def __init__(self, texts, seed):
        self.random = random.Random(seed)
        self.texts = {language: [one for one in paragraphs if not is_foreign(one, language)]
                      for language, paragraphs in texts.items()}
        self.rows = []  # (kind, page, language, bytes)

    def running_text(self, language, characters):
        paragraphs = self.texts[language]
        start = self.random.randrange(len(paragraphs))
        lines, size = [], 0
        while size < characters:
            paragraph = paragraphs[start % len(paragraphs)]
            if size == 0 and len(paragraph) > characters:  # not always the start of a sentence
                words = paragraph.split(" ")
                skipped = self.random.randrange(max(len(words) - characters // 5, 1))
                paragraph = " ".join(words[skipped:]) if len(" ".join(words[skipped:])) > characters else paragraph
            lines += wrapped(paragraph, 72)
            size += len(paragraph) + 1
            start += 1
        return "\n".join(lines)

    def add(self, kind, page, language, size):
        for _ in range(30):
            text = self.running_text(language, size)
            if kind == "capitals":
                text = capitals(text, language)
            if kind == "foreign line":
                text = self.running_text(language, 65).replace("\n", " ")[:65]
                english = wrapped(self.running_text("en", 1200).replace("\n", " ").encode("ascii", "ignore").decode(), 65)
                english = english[:11]
                english.insert(self.random.randrange(12), text)
                text = "\n".join(english)
            text = adapted(text, page)
            if text is None:
                continue
            if kind == "frames":
                text = framed(text[:size].replace("\n", " "), page)
            data = encoded(text, page)
            if kind not in ("frames", "foreign line"):
                data = encoded(text[:size], page)
                while len(data) > size and text:
                    text = text[:min(size, len(text)) - 1 - (len(data) - size) // 4]
                    data = encoded(text, page)
            letters = sum(byte >= 0x80 for byte in data)
            if kind == "frames":
                letters = sum(unicodedata.category(one)[0] in "LM" and ord(one) > 0x7F for one in text)
            if page.startswith("utf-16") or letters > 0:
                self.rows.append((kind, page, language, data))
                return

    def build(self, each):
        for language, (_, _, pages) in LANGUAGES.items():
            if language == "en":
                pages = "1252"
            if not self.texts.get(language):
                print(f"no text in {language}", file=sys.stderr)
                continue
            for page in [*pages.split(), "utf-8", "utf-16le", "utf-16be"]:
                for size in (60, 200, 1024, 4096):
                    for _ in range(each if size < 4096 else each // 4):
                        self.add(size, page, language, size)
                if page.startswith("utf") or language == "en":
                    continue
                for _ in range(each // 2):
                    if language not in ("ja", "ko", "zh-CN", "zh-TW", "he", "ar", "fa", "th", "ka"):
                        self.add("capitals", page, language, 200)
                    if "\u2502" in BYTES.get(page, {}):
                        self.add("frames", page, language, 200)
                    self.add("foreign line", page, language, 65)
        for _ in range(each * 4):
            for size in (60, 200, 1024):
                text = self.running_text("en", size).encode("ascii", "ignore")[:size]
                self.rows.append((size, "ascii", "en", text))

    def add_other_pages(self, each):
        for page, languages in OTHER_PAGES.items():
            for number in range(each):
                for size in (60, 200, 1024, 4096):
                    language = languages.split()[number % len(languages.split())]
                    while True:
                        data = self.running_text(language, size).encode(page, "replace")[:size]
                        is_text = page.startswith("utf") or max(data) >= 0x80 or b"\x1b" in data or b"~{" in data
                        if is_text and data.count(b"?") * 50 <= len(data):
                            break
                    self.rows.append((size, page, language, data[:len(data) // 4 * 4] if "32" in page else data))

    def add_binaries(self, each):
        files = [path for path in sorted(Path("/usr/lib").glob("*/*.so*"))[:40] + sorted(Path("/usr/bin").glob("[a-g]*"))[:40]
                 + sorted(Path("/usr/share").glob("**/*.gz"))[:40] if path.is_file() and path.stat().st_size > 5000]
        for _ in range(each):
            raw = self.random.choice(files).read_bytes()
            for size in (200, 1024, 4096):
                start = self.random.randrange(max(len(raw) - size, 1))
                data = raw[start:start + size]
                # A stretch of a program's strings is text.
                if sum(byte in (9, 10, 13) or 0x20 <= byte < 0x7F for byte in data) < 0.7 * len(data):
                    self.rows.append((size, "binary", "", data))
            self.rows.append((1024, "binary", "", self.random.randbytes(1024)))


def is_right(row, page):
    _, truth, _, data = row
    if page == truth or truth == "binary" or page == "binary":
        return page == truth
    if truth == "utf-8":
        return False
    return decode(data, page) == decode(data, truth)


def write_samples(rows, path):
    with open(path, "wb") as out:
        for row in rows:
            out.write(struct.pack("<I", len(row[3])) + row[3])


def run_driver(driver, engine, path):
    """Answers of an engine of detect_bench: for each sample a list of (page, language, share), and seconds."""
    done = subprocess.run([driver, engine, path], capture_output=True, text=True, check=True)
    lines = done.stdout.splitlines()
    answers = [[tuple((one + "  ").split(" ")[:3]) for one in line.split("\t") if one] for line in lines[:-1]]
    return answers, float(lines[-1].split()[1])


ALIASES = {"shift_jis": "932", "gb18030": "936", "gb2312": "936", "gbk": "936", "hz": "936", "euc-kr": "949", "uhc": "949",
           "cp949": "949", "big5": "950", "cp932": "932", "big5hkscs": "950", "us-ascii": "ascii", "tis-620": "874",
           "iso-8859-11": "874", "iso-8859-8-i": "iso-8859-8", "x-mac-cyrillic": "mac-cyrillic",
           "mac-centraleurope": "mac_latin2", "utf-8-sig": "utf-8", "johab": "johab", "viscii": "viscii"}


def page_of_peer(name):
    """Our name of a page, where we have it; else one for Python."""
    name = (name or "?").lower().replace("_", "-")
    name = ALIASES.get(name, ALIASES.get(name.replace("-", "_"), name))
    found = re.fullmatch(r"(?:windows-?|cp|ibm)(\d+)", name)
    if found and (found.group(1) in PAGES or found.group(1) in CODECS):
        return found.group(1)
    return name


def run_python_peer(name, rows):
    sys.path.append("/usr/lib/python3/dist-packages")  # Debian's, whatever interpreter this is
    answers = []
    start = time.process_time()
    for row in rows:
        if name == "chardet":
            import chardet
            found = [one["encoding"] for one in chardet.detect_all(row[3])]
        else:
            import charset_normalizer
            found = [one.encoding for one in charset_normalizer.from_bytes(row[3])]
        answers.append([(one or "binary", "") for one in found] or [("binary", "")])
    return answers, time.process_time() - start


KINDS = {"200": "200 bytes", "1024": "1 KB", "4096": "4 KB", "60": "60 bytes", "capitals": "capitals, 200 bytes",
         "frames": "in frames, 200 bytes", "foreign line": "one line of twelve"}
NOT_OF_PAGES = ("UTF-8", "UTF-16", "ASCII", "binary")


def family_of(row):
    _, truth, language, _ = row
    if truth.startswith("utf"):
        return "UTF-8" if truth == "utf-8" else "UTF-16"
    return {"ascii": "ASCII", "binary": "binary"}.get(truth, FAMILY_OF.get(language))


class Score:
    """Of one engine: by (kind, family), how many there were, and were right at first and among three."""

    def __init__(self, rows, answers, seconds):
        self.cells = defaultdict(lambda: [0, 0, 0, 0])
        self.speed = sum(len(row[3]) for row in rows) / seconds / 1e6
        for row, found in zip(rows, answers):
            right = [is_right(row, page_of_peer(page)) for page, *_ in found[:3]]
            family = family_of(row)
            for name in (family,) if family in NOT_OF_PAGES else (family, "all pages"):
                cell = self.cells[str(row[0]), name]
                for index, value in enumerate((True, right and right[0], any(right), found and found[0][1] == row[2])):
                    cell[index] += bool(value)

    def percent(self, kind, family, index):
        cell = self.cells.get((kind, family))
        return f"{100 * cell[index] / cell[0]:.1f}" if cell else ""


def print_peers(scores):
    print("\n| texts | " + " | ".join(f"{name} first | of three" for name in scores) + " |")
    print("|---" * (1 + 2 * len(scores)) + "|")
    for kind, title in KINDS.items():
        cells = [score.percent(kind, "all pages", index) for score in scores.values() for index in (1, 2)]
        print(f"| {title} | " + " | ".join(cells) + " |")
    for family in ("UTF-8", "UTF-16", "ASCII", "binary"):
        cells = [score.percent("1024", family, index) for score in scores.values() for index in (1, 2)]
        print(f"| {family}, 1 KB | " + " | ".join(cells) + " |")
    print("| MB/s | " + " | ".join(f"{score.speed:.1f} | " for score in scores.values()) + " |")


def print_families(score):
    families = [*FAMILIES, "all pages", *NOT_OF_PAGES]
    print("\n| family | " + " | ".join(KINDS.values()) + " |\n" + "|---" * (1 + len(KINDS)) + "|")
    for family in families:
        cells = [" / ".join(filter(None, (score.percent(kind, family, index) for index in (1, 2)))) for kind in KINDS]
        print(f"| {family} | " + " | ".join(cells) + " |")
    print("| language of all pages | " + " | ".join(score.percent(kind, "all pages", 3) for kind in KINDS) + " |")


def read_rows(folder, each):
    """The samples, made once."""
    file = folder / f"samples-{each}.json"
    if not file.exists():
        texts_file = folder / "texts.json"
        if not texts_file.exists():
            texts = collect(debian_text.unpack(PACKAGES, folder))
            texts_file.write_text(json.dumps(texts, ensure_ascii=False), encoding="utf-8")
        samples = Samples(json.loads(texts_file.read_text(encoding="utf-8")), 4711)
        samples.build(each)
        samples.add_binaries(each)
        file.write_text(json.dumps([(*row[:3], row[3].decode("latin-1")) for row in samples.rows]), encoding="utf-8")
    return [(*row[:3], row[3].encode("latin-1")) for row in json.loads(file.read_text(encoding="utf-8"))]


def print_wrong(rows, answers, options):
    shown = defaultdict(int)
    for row, found in zip(rows, answers):
        if (not options.kind or str(row[0]) == options.kind) and not is_right(row, found[0][0]):
            shown[row[1:3]] += 1
            if shown[row[1:3]] <= options.wrong:
                print(row[0], row[1], row[2], found, repr((decode(row[3], row[1]) or "")[:300]))
    for key, count in sorted(shown.items(), key=lambda one: -one[1])[:30]:
        print(key, count)


def print_other_pages(texts, each, folder):
    samples = Samples(texts, 4712)
    samples.add_other_pages(each)
    write_samples(samples.rows, folder / "others.bin")
    answers, _ = run_driver(DRIVER, "kxdetect", folder / "others.bin")
    cells = defaultdict(lambda: [0, 0, 0])
    for row, found in zip(samples.rows, answers):
        right = decode(row[3], found[0][0]) == row[3].decode(row[1], "replace")
        for index, value in enumerate((True, right, not right and int(found[0][2]) >= SURE)):
            cells[row[1], row[0]][index] += value
    print("\n| page | 60 bytes | 200 bytes | 1 KB | 4 KB |\n|---|---|---|---|---|")
    for page in OTHER_PAGES:
        counts = [cells[page, size] for size in (60, 200, 1024, 4096)]
        print(f"| {page} | " + " | ".join(f"{100 * right / all_:.0f} / {100 * sure / all_:.0f}"
                                          for all_, right, sure in counts) + " |")


def large_files(rows, folder):
    """Speed on a MiB of the texts of one page, in MB/s."""
    speeds = []
    for page, language in (("852", "cs"), ("1251", "ru"), ("1252", "de"), ("932", "ja"), ("utf-8", "ru")):
        text = b"\n".join(row[3] for row in rows if row[1:3] == (page, language) and row[0] in (1024, 4096))
        text = (text * (1 + (1 << 20) // len(text)))[:1 << 20]
        write_samples([(0, page, language, text)] * 8, folder / "large.bin")
        speeds.append(f"{page} {8 * len(text) / run_driver(DRIVER, 'kxdetect', folder / 'large.bin')[1] / 1e6:.0f}")
    print("\nkxdetect on files of 1 MiB, MB/s: " + ", ".join(speeds))


PEERS_SHARE = 5  # not a divisor of the four kinds of binaries
DRIVER = ROOT / "build" / "release" / "detect_bench"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", nargs="?", type=Path, default=ROOT / "build" / "release" / "bench" / "detect")
    parser.add_argument("--each", type=int, default=12, help="samples for each page, language and size")
    parser.add_argument("--peers", action="store_true", help="the other detectors, too")
    parser.add_argument("--wrong", type=int, default=0, help="print so many wrong answers for each page and language")
    parser.add_argument("--kind", help="of the wrong answers")
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)
    rows = read_rows(options.folder, options.each)
    path = options.folder / "samples.bin"
    write_samples(rows, path)
    print(f"{len(rows)} samples, {sum(len(row[3]) for row in rows)} bytes")
    answers, seconds = run_driver(DRIVER, "kxdetect", path)
    print_families(Score(rows, answers, seconds))
    print_other_pages(json.loads((options.folder / "texts.json").read_text(encoding="utf-8")), options.each, options.folder)
    large_files(rows, options.folder)
    if options.peers:
        some = rows[::PEERS_SHARE]  # two of them are slow
        write_samples(some, path)
        scores = {name: Score(some, *run_driver(DRIVER, name, path)) for name in ("kxdetect", "uchardet", "icu")}
        scores |= {name: Score(some, *run_python_peer(name, some)) for name in ("chardet", "charset-normalizer")}
        print(f"\nBeside the others, {len(some)} of the samples:")
        print_peers(scores)
    if options.wrong:
        print_wrong(rows, answers, options)


if __name__ == "__main__":
    main()
