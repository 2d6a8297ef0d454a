#!/usr/bin/env python3
"""make_corpus.py FOLDER: the inputs that fuzzing begins with, a few of each kind for each target, the same each time.

An input is a text and behind it 64 bytes of choices; see input.h.
"""
import pathlib
import random
import sys

CZECH = "Příliš žluťoučký kůň úpěl ďábelské ódy.\n"
GREEK = "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία.\r\n"
JAPANESE = "いろはにほへと チリヌルヲ ｶﾞｷﾞ 漢字、。\n"
CHINESE = "漢語汉语 繁體字简体字\n"
HEBREW = "דג סקרן שט בים\n"
RUSSIAN = "Съешь ещё этих мягких булок\n"
VIETNAMESE = "Tiếng Việt đẹp lắm\n"
LINES = "zebra 10\nÄpfel 9\nllama 2.5\nLLama -3\n\ncote\nCôté\n\nčh\nch\n"

# Every kind of code, sound; then the ways in which one can be wrong.
SOUND = bytes.fromhex(
    "41 20 80 CC CF 84 F0 29 01 F0 F2 05 F2 F3 05 F3 F1 01 02 03 F1 F6 01 02 F6 FB 01 02 03 04 FB "
    "FD 01 02 03 04 05 06 FD D4 01 0A 00 41 42 43 0A 00 D4 FF 90 61 F0 20 25 F0 00"
)
WRONG = bytes.fromhex("F0 29 01 41 D0 00 04 00 D0 D0 01 00 00 D4 01 FF FF F1 01 02 03 04 D4 01 08 00 07 00 08 00 D4 F0 29")
OLD = bytes.fromhex("41 C0 29 01 C0 C3 05 C3 42 C4 05 C4 D4 01 02 00 41 42 0A 21 21 23 41 30 7F FF 00")

SETTINGS = """
; remarks start with a semicolon
[HKEY_CURRENT_USER\\Software\\K]
"v"="text \\"quoted\\" \\\\ \u00e9"
@=dword:00000001
"bytes"=hex:00,01,\\
  02 ; behind it
"link"=hex(80000008):3c,00,4b,00,3e,00
"v"=-
; between
[HKEY_USERS\\A\\B]
"n" = hex(40000003) : ff
[-HKEY_USERS\\A]

[HKEY_LOCAL_MACHINE\\K]
"w"="x
y"
"""
LINKS = "<K\\a>|<K\\b>*<\\HKEY_LOCAL_MACHINE\\K\\c>\"text\"<a>"


def texts_of(target):
    japanese, chinese = JAPANESE.encode("cp932"), CHINESE.encode("gbk", "ignore")
    plain = [CZECH.encode("cp1250"), CZECH.encode("cp852"), GREEK.encode("cp1253"), japanese, chinese,
             RUSSIAN.encode("cp866"), HEBREW.encode("cp1255"), VIETNAMESE.encode("cp1258", "ignore"), b"Plain & simple && (&F)\n"]
    unicode = [(CZECH + JAPANESE + VIETNAMESE).encode(), (GREEK + CHINESE).encode("utf-16le"),
               b"\xef\xbb\xbf" + HEBREW.encode(), b"\xc3\xe9\xed\xa0\x80\xf4\x90\x80\x80\xff", "e\u0301\u0323 \U0001F600".encode()]
    # Blocks of the kernels that are all of one kind, as long as their UTF-8 fills its room to the last byte.
    blocks = [b"\x80" * 192, b"\xb3" * 256, "\u2026".encode() * 128, japanese * 8]
    kx = [bytes(range(1, 256)), b"".join(bytes([0x80 + i, i]) for i in range(128)), "cote Côté llama LLama".encode("latin-1")]
    return {
        "conversions": plain + unicode[:2] + kx + blocks + [SOUND, OLD],
        "text": plain + unicode + kx + blocks + [b"\x81\x30\x81\x30\xfe\xfe", b"a" * 300 + b"\xe9"],
        "streams": [SOUND, SOUND + SOUND, WRONG, SOUND + WRONG, b"text\xf0\x29\x01\xf0" * 20],
        "strings": plain[:5] + kx + [b"needle in a haystack with a needle", b"A" * 100],
        "collation": kx + [LINES.encode("latin-1", "ignore"), b"llllama", b"cote\x86\x01COTE"],
        "settings": [SETTINGS.encode(), (SETTINGS * 2).encode(), b"[HKEY_USERS\\a]\n\"x\"=hex:1\n", "\r\n".join(SETTINGS.split("\n")).encode()],
        "links": [LINKS.encode(), (LINKS * 8).encode(), b"<K\\a><K\\b><K\\c><K\\d>" * 3],
        "tool": plain + unicode + [LINES.encode(), SOUND, OLD, b"Windows Registry Editor Version 5.00\n" + SETTINGS.encode()],
        "detect": plain + unicode + [bytes(range(256)), RUSSIAN.encode("koi8-r"), b""],
    }[target]


def main():
    root = pathlib.Path(sys.argv[1])
    for target in ("conversions", "text", "streams", "strings", "collation", "settings", "links", "tool", "detect"):
        folder = root / target
        folder.mkdir(parents=True, exist_ok=True)
        for number, text in enumerate(texts_of(target)):
            for way in range(4):
                choices = random.Random(f"{target} {number} {way}").randbytes(64)
                (folder / f"{number:02}-{way}").write_bytes(text + choices)


if __name__ == "__main__":
    main()
