"""The models of libkxdetect: data/detect/*.txt -> detect/src/tables/*.cpp."""
import math
import unicodedata

from . import _emit

FOLDER = "detect/src/tables"  # not kxstr's

UNIT = 16          # costs are in sixteenths of a nat: -16 ln(probability)
WORST = 184     # a letter that a language lacks costs little less
PRIOR = 8          # pairs that a row is thought to have seen before it was counted, spread as the letters are
UNDEFINED, CONTROL, SIGN, LETTER, SMALL, CAPITAL = 0, 1, 0x1000, 0x8000, 0x2000, 0x4000
CODECS = {"ja": ("932", "cp932"), "zh-CN": ("936", "gbk"), "ko": ("949", "cp949"), "zh-TW": ("950", "cp950")}
OPENING = "\u00ab\u201e\u201a\u2039\u00bf\u00a1"
CLOSING = "\u00bb\u203a\u2026"
QUOTING = "\u2018\u201c\u201d\u2013\u2014\u2015"
JOINING = "\u2019\u00a0\u00ad\u00b7\u02bc"
TYPOGRAPHIC = "\u2018\u2019\u201c\u201d\u201e\u2026\u2013\u2014"
KNOWN = "\u00a2\u00a3\u00a5\u00b1\u00b2\u00b7\u00bd\u00bc\u00f7\u2248\u2116\u20ac"
USUAL = "\u00a9\u00ae\u00b0\u00a7\u00ab\u00bb"


def cost(probability):
    return min(WORST, round(-UNIT * math.log(probability))) if probability > 0 else WORST


def text_lines(path):
    return [line for line in path.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")]


def character(field):
    return chr(int(field[2:], 16)) if field.startswith("U+") else field


def read_languages(data):
    return [line.split("; ") for line in text_lines(data / "languages.txt")]


def read_pages(data):
    pages = []
    for line in text_lines(data / "pages.txt"):
        if line.startswith("page "):
            _, name, preference = line.split()
            pages.append((name, int(preference), []))
        else:
            pages[-1][2].extend(None if field == "-" else chr(int(field, 16)) for field in line.split()[1:])
    for name, _, characters in pages:
        if len(characters) != 128:
            raise ValueError(f"pages.txt: page {name} has {len(characters)} characters")
    return pages


def read_model(path):
    """Rows of {follower: count}, "_" for the edge of a word."""
    rows = {}
    for line in text_lines(path):
        fields = line.split()
        if fields[0] == "language":
            continue
        name = fields[0][:-1]
        name = "_" + character(name[1:]) if len(name) > 1 and name[0] == "_" else character(name)
        rows[name] = {
            character(name): int(count) for name, count in zip(fields[1::2], fields[2::2])}
    return rows


def matrix_of(rows, names, usual):
    matrix = []
    for row in rows:
        count = sum(row.values())
        matrix.append([cost((row.get(name, 0) + PRIOR * usual[name]) / (count + PRIOR)) for name in names])
    return matrix


def costs_of(rows):
    """The symbols of a model, and its costs: of pairs, and of pairs at the start of words."""
    names = [name for name in rows if len(name) == 1]
    seen = {name: sum(rows[first].get(name, 0) for first in names) for name in names}
    total = sum(seen.values())
    usual = {name: 0.95 * seen[name] / total + 0.05 / len(names) for name in names}
    pairs = matrix_of([rows[name] for name in names], names, usual)
    pairs[0][0] = 0  # no edge follows an edge
    starts = []
    for name in names[1:]:
        # Seldom starts are thought to go on as the letter does elsewhere.
        elsewhere = sum(rows[name].values())
        expected = {second: (rows[name].get(second, 0) + PRIOR * usual[second]) / (elsewhere + PRIOR) for second in names}
        starts += matrix_of([rows["_" + name]], names, expected)
    return names, pairs, [[0] * len(names), *starts], usual_cost(rows, names, pairs)


def usual_cost(rows, names, pairs):
    """What a pair with a letter outside ASCII costs in the language itself, on the average."""
    counts = {(first, second): rows[names[first]].get(names[second], 0)
              for first in range(len(names)) for second in range(len(names)) if max(names[first], names[second]) > "\x7f"}
    total = sum(counts.values())
    return round(sum(count * pairs[first][second] for (first, second), count in counts.items()) / total) if total else WORST


def is_letter(sign):
    """Not the ordinals and the micro sign, which stand beside numbers."""
    return unicodedata.category(sign) in ("Ll", "Lu", "Lo", "Mn", "Mc") and sign not in "\u00aa\u00ba\u00b5"


def base_of(sign):
    """The small letter that models know, and whether this one is small, capital or neither; both for an Arabic form
    that is joined to the next letter."""
    if "\ufb50" <= sign <= "\ufefc":
        kept = sign
        sign = unicodedata.normalize("NFKC", sign)[0]
        joined = unicodedata.decomposition(kept).split()[0] in ("<initial>", "<medial>")
        return sign, SMALL | CAPITAL if joined else 0
    small = "i" if sign == "\u0130" else sign.lower()
    if small != sign:
        return small, CAPITAL
    return sign, SMALL if sign.upper() != sign else 0


def parts_of(sign):
    """The letters of pages that a letter of Unicode alone is written with."""
    special = {"\u06cc": "\u064a", "\u0219": "\u015f", "\u021b": "\u0163"}
    if sign in special:
        return special[sign]
    decomposed = unicodedata.normalize("NFD", sign)
    tones = [mark for mark in decomposed if mark in "\u0300\u0301\u0303\u0309\u0323"]
    if not tones:
        return ""
    return unicodedata.normalize("NFC", "".join(mark for mark in decomposed if mark not in tones)) + tones[0]


def numbers(values, per_line=24):
    return _emit.lines_of([str(value) for value in values], per_line)


def characters_of(data, code):
    """(character, cost) of a language with thousands of characters, and what one of them costs on the average."""
    rows = (line.rsplit(" ", 1) for line in text_lines(data / f"{code}.txt") if not line.startswith("characters "))
    counts = {character(name): int(count) for name, count in rows}
    seen = sum(counts.values())
    costs = {one: cost(count / (1.01 * seen)) for one, count in counts.items()}  # the rest is for what was not seen
    usual = round(sum(count * costs[one] for one, count in counts.items()) / seen)
    return [(one, value) for one, value in costs.items() if ord(one) <= 0xFFFF], usual


def generate(data):
    data = data / "detect"
    languages, pages = read_languages(data), read_pages(data)
    models = {code: costs_of(read_model(data / f"{code}.txt")) for code, *_ in languages if code not in CODECS}
    sign_costs = {}
    for line in text_lines(data / "signs.txt")[1:]:
        code, count = line.split()[:2]
        sign_costs[character(code)] = cost(int(count) / 1e6)
    # Much of today's text has them as ASCII; where a page has them they are used.
    for signs, most in ((TYPOGRAPHIC, 5), (USUAL, 7), (KNOWN, 9)):
        sign_costs.update({sign: min(sign_costs.get(sign, WORST), most * UNIT) for sign in signs})

    in_pages = {one for _, _, characters in pages for one in characters if one}
    letters = {name for names, *_ in models.values() for name in names if name != "_"}
    letters |= {base_of(one)[0] for one in in_pages if is_letter(one)}
    letters = sorted(letters)
    letter_ids = {letter: number + 1 for number, letter in enumerate(letters)}  # 0 is no letter
    signs = sorted({one for one in in_pages if not is_letter(one) and ord(one) >= 0xA0})
    sign_ids = {sign: number for number, sign in enumerate(signs)}

    def code_of(one):
        if one is None:
            return UNDEFINED
        if is_letter(one):
            base, case = base_of(one)
            return LETTER | case | letter_ids[base]
        return SIGN | sign_ids[one] if one in sign_ids else CONTROL

    def class_of(sign):
        for name, members in (("opening", OPENING), ("closing", CLOSING), ("quoting", QUOTING), ("joining", JOINING),
                              ("upright", "\u2502\u2551"), ("level", "\u2500\u2550")):
            if sign in members:
                return name
        return "box" if "\u2500" <= sign <= "\u259f" else "other"

    head = '#include "tables.h"\n\nnamespace kxdetect {\n\n'
    tail = "\n} // namespace kxdetect\n"
    text = _emit.header("data/detect/pages.txt and signs.txt") + head
    text += f"constexpr Sign kSignRows[{len(signs)}] = {{\n"
    text += "".join(f"    {{{_emit.hex16(ord(sign))}, {sign_costs.get(sign, 208)}, SignClass::{class_of(sign)}}},\n"
                    for sign in signs)
    text += "};\nconstinit const std::span<const Sign> kSigns{kSignRows};\n\n"
    text += f"constexpr Page kPageRows[{len(pages)}] = {{\n"
    for name, preference, characters in pages:
        text += f'    {{"{name}", {2 * preference}, {{{{\n'
        text += _emit.lines_of([_emit.hex16(code_of(one)) for one in characters], 16, "        ") + "    }}},\n"
    text += "};\nconstinit const std::span<const Page> kPages{kPageRows};\n" + tail
    result = {"pages.cpp": text}

    # What UTF-8 and UTF-16 can hold: every letter above, its capital, and what is written with two of them.
    rows = {}
    for letter in letters:
        for one in (letter, letter.upper()):
            if len(one) == 1:
                rows[ord(one)] = (letter_ids[letter], 0)
    for code in range(0xA0, 0x2000):
        parts = [base_of(part)[0] for part in parts_of(chr(code))]
        if code not in rows and parts and all(part in letter_ids for part in parts):
            rows[code] = (letter_ids[parts[0]], letter_ids[parts[1]] if len(parts) > 1 else 0)
    text = _emit.header("data/detect/") + head
    text += f"constexpr UnicodeLetter kUnicodeLetterRows[{len(rows)}] = {{\n"
    text += _emit.lines_of([f"{{{_emit.hex16(code)}, {first}, {second}}}" for code, (first, second) in sorted(rows.items())],
                           6)
    text += "};\nconstinit const std::span<const UnicodeLetter> kUnicodeLetters{kUnicodeLetterRows};\n\n"
    text += f"constinit const std::size_t kLetterCount = {len(letters) + 1};\n\n"

    table = []
    page_numbers = {name: number for number, (name, *_) in enumerate(pages)}
    for code, name, _, its_pages in languages:
        if code in CODECS:
            continue
        names, pairs, starts, usual = models[code]
        symbol = "k" + "".join(part.capitalize() for part in code.split("-"))
        text += f"constexpr std::uint16_t {symbol}Letters[{len(names) - 1}] = {{\n"
        text += numbers([letter_ids[letter] for letter in names[1:]], 20) + "};\n"
        for kind, matrix in (("Costs", pairs), ("Starts", starts)):
            text += f"constexpr std::uint8_t {symbol}{kind}[{len(names) ** 2}] = {{\n"
            text += numbers([value for row in matrix for value in row]) + "};\n"
        mask = sum(1 << page_numbers[page] for page in its_pages.split())
        table.append(f'{{"{code}", "{name}", {mask:#x}U, {usual}, {symbol}Letters, {symbol}Costs, {symbol}Starts}}')
    text += f"\nconstexpr Model kModelRows[{len(table)}] = {{\n{_emit.lines_of(table, 1)}}};\n"
    text += "constinit const std::span<const Model> kModels{kModelRows};\n" + tail
    result["models.cpp"] = text

    text = _emit.header("data/detect/") + head
    table = []
    for code, name, _, _ in languages:
        if code not in CODECS:
            continue
        page, codec = CODECS[code]
        rows, usual = characters_of(data, code)
        symbol = "k" + "".join(part.capitalize() for part in code.split("-"))
        text += f"constexpr CharacterCost {symbol}InUnicode[{len(rows)}] = {{\n"
        text += _emit.lines_of([f"{{{_emit.hex16(ord(one))}, {value}}}" for one, value in sorted(rows)], 8) + "};\n"
        native = sorted((int.from_bytes(one.encode(codec, "ignore"), "big"), value) for one, value in rows
                        if len(one.encode(codec, "ignore")) == 2)
        text += f"constexpr CharacterCost {symbol}InPage[{len(native)}] = {{\n"
        text += _emit.lines_of([f"{{{_emit.hex16(one)}, {value}}}" for one, value in native], 8) + "};\n"
        table.append(f'{{"{code}", "{name}", "{page}", {usual}, {symbol}InUnicode, {symbol}InPage}}')
    text += f"\nconstexpr CharacterModel kCharacterModelRows[{len(table)}] = {{\n{_emit.lines_of(table, 1)}}};\n"
    text += "constinit const std::span<const CharacterModel> kCharacterModels{kCharacterModelRows};\n" + tail
    result["characters.cpp"] = text
    return result
