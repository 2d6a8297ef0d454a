"""Text in many languages, out of Debian packages: manual pages, message catalogues, dictionaries, HTML and plain files.

Packages are downloaded by apt-get and unpacked below a folder, never installed. Each reader yields paragraphs.
"""
import gzip
import html
import json
import re
import struct
import subprocess
from pathlib import Path

SHORTEST_MESSAGE = 16  # characters; shorter ones are labels, the same in many languages


def unpack(packages, folder):
    """Downloads and unpacks what is not there yet. Returns {package: its folder}; packages that do not exist are left
    out."""
    folder = Path(folder)
    (folder / "deb").mkdir(parents=True, exist_ok=True)
    folders = {}
    for package in packages:
        target = folder / "tree" / package
        if not target.exists():
            files = list((folder / "deb").glob(f"{package}_*.deb"))
            if not files:
                subprocess.run(["apt-get", "download", "-qq", package], cwd=folder / "deb", check=False)
                files = list((folder / "deb").glob(f"{package}_*.deb"))
            if not files:
                continue
            target.mkdir(parents=True)
            subprocess.run(["dpkg-deb", "-x", files[0], target], check=True)
            files[0].unlink()
        folders[package] = target
    return folders


def read_text(path, encodings=("utf-8",)):
    raw = path.read_bytes()
    if path.suffix == ".gz":
        raw = gzip.decompress(raw)
    for encoding in encodings:
        try:
            return raw.decode(encoding)
        except (UnicodeDecodeError, LookupError):
            pass
    return ""


def manual_pages(folder, directories):
    """The text lines of the manual pages in man/DIRECTORY, without requests and escapes."""
    for directory in directories:
        for path in sorted(folder.glob(f"usr/share/man/{directory}/man*/*")):
            if path.is_symlink() or not path.is_file():
                continue
            lines = []
            for line in read_text(path).splitlines():
                if line.startswith((".", "'")):
                    if lines:
                        yield " ".join(lines)
                    lines = []
                    continue
                line = re.sub(r"\\f(?:\[\w*\]|\(..|.)|\\[&|^%:/,cd]", "", line)
                line = re.sub(r"\\(?:\(..|\[\w*\]|\*\(..|\*\[\w*\]|s[-+]?\d)", "", line)
                lines.append(line.replace(r"\-", "-").replace(r"\ ", " ").replace("\\e", "\\"))
            if lines:
                yield " ".join(lines)


def catalogue(raw):
    """Pairs of message and translation of an .mo file."""
    order = "<" if raw[:4] == b"\xde\x12\x04\x95" else ">"
    count, messages, translations = struct.unpack(order + "8x3I", raw[:20])
    charset = "utf-8"
    for number in range(count):
        texts = []
        for table in (messages, translations):
            length, offset = struct.unpack_from(order + "2I", raw, table + 8 * number)
            texts.append(raw[offset:offset + length])
        if not texts[0]:
            found = re.search(rb"charset=([\w-]+)", texts[1])
            charset = found.group(1).decode() if found else charset
            continue
        try:
            yield texts[0].decode(charset), texts[1].decode(charset)
        except (UnicodeDecodeError, LookupError):
            continue


def plain_message(text):
    text = re.sub(r"<[^<>]*>", "", text.split("\0")[0])
    text = re.sub(r"%[-\d$.*#' +]*(?:hh?|ll?|[zjtLq])?[a-zA-Z]|%\(\w+\)[a-z]|\{\w*\}|\$\w+", "", html.unescape(text))
    text = re.sub(r"(?<!\w)[_&](?=\w)|(?<=\w)[_&](?=\w)", "", text)
    return " ".join(text.split())


def catalogues(folder, names, shortest=SHORTEST_MESSAGE):
    """The translations in all .mo files for the given names of languages ("de", "pt_BR")."""
    for name in names:
        for path in sorted(folder.glob(f"usr/**/{name}/LC_MESSAGES/*.mo")):
            for message, translation in catalogue(path.read_bytes()):
                text = plain_message(translation)
                if translation != message and len(text) >= shortest:
                    yield text


def json_messages(path):
    """MediaWiki's catalogues: a JSON object of texts in wiki markup."""
    for key, value in json.loads(path.read_text(encoding="utf-8")).items():
        if key.startswith("@") or not isinstance(value, str):
            continue
        text = re.sub(r"\{\{[^{}]*\}\}", "", re.sub(r"\{\{[^{}]*\}\}", "", value))
        text = re.sub(r"\[\[(?:[^\]|]*\|)?([^\]]*)\]\]|\[\S+ ([^\]]*)\]", r"\1\2", re.sub(r"\$\d+", "", text))
        text = plain_message(text.replace("'''", "").replace("''", ""))
        if len(text) >= SHORTEST_MESSAGE:
            yield text


def markup(path, tags="p|li|dd|td|title|note|screen"):
    """The paragraphs of an HTML or Mallard file."""
    text = re.sub(r"<!--.*?-->|<(?:script|style|pre)\b.*?</(?:script|style|pre)>", "", read_text(path), flags=re.S)
    for found in re.finditer(rf"<({tags})\b[^>]*>(.*?)</\1>", text, flags=re.S):
        paragraph = " ".join(html.unescape(re.sub(r"<[^<>]*>", "", found.group(2))).split())
        if len(paragraph) >= SHORTEST_MESSAGE:
            yield paragraph


def dictionary_words(folder):
    """The words of hunspell dictionaries, without their affixes."""
    for path in sorted(folder.glob("usr/share/hunspell/*.dic")) + sorted(folder.glob("usr/share/myspell/dicts/*.dic")):
        affixes = path.with_suffix(".aff")
        if path.is_symlink() or path.name.startswith("hyph_") or not affixes.exists():
            continue
        found = re.search(rb"^SET\s+(\S+)", affixes.read_bytes(), flags=re.M)
        encoding = found.group(1).decode() if found else "iso8859-1"
        encoding = {"microsoft-cp1251": "cp1251", "ISCII-DEVANAGARI": "utf-8"}.get(encoding, encoding)
        for line in path.read_bytes().decode(encoding, "ignore").splitlines()[1:]:
            word = re.split(r"[/\t ]", line.strip())[0]
            if len(word) > 1:
                yield word
