"""The collation tables: coltbl, diatbl and the tables of the comparisons that take a language number."""
from ._emit import header, hex16, hex8, lines_of, read_rows

NO_CHARACTER = 0xFFFF
NO_VALUE = 0xFF
IGNORABLE = 0xFD
# Targets of a contraction step from this one on are results, those below are states. State 0 is none.
FIRST_RESULT = 0x80

KANA_SOUNDS = {"small": 0, "plain": 1, "voiced": 3, "semi-voiced": 5}
LANGUAGE_KINDS = {"plain": "kPlain", "letters": "kLetters", "hebrew-arabic": "kHebrewArabic", "east-asian": "kEastAsian"}


def character(text):
    return int(text, 16) if text.startswith("0x") else ord(text)


def span_of(text):
    """The characters of `0x0041` or `0x0041..0x0043`."""
    first, _, last = text.partition("..")
    return range(character(first), character(last or first) + 1)


def read_composites(path):
    """Per set: the range that its table covers, and character -> (base, diacritic)."""
    ranges, composites = {}, {}
    for row in read_rows(path, 3):
        if row[0] == "range":
            ranges[character(row[1]) >> 8] = range(character(row[1]), character(row[2]) + 1)
        else:
            ch, base, diacritic = map(character, row)
            if ch not in ranges[ch >> 8] or ch in composites:
                raise ValueError(f"{path.name}: {row[0]} lies outside its range or stands twice")
            composites[ch] = (base, diacritic)
    return ranges, composites


def read_sequence(path, composites, default=None):
    """A list of (set, first index, values), in the order of the file."""
    blocks, values = [], {}
    for row in read_rows(path):
        if row[0] == "copy":
            blocks += [block for block in default if block[0] == int(row[1])]
        elif row[0] == "block":
            blocks.append((character(row[1]), character(row[2])))
        else:
            for ch in span_of(row[0]):
                if values.setdefault(ch, int(row[1], 16)) != int(row[1], 16):
                    raise ValueError(f"{path.name}: {hex16(ch)} has two values")

    def value_of(ch):
        while ch not in values:
            if ch not in composites:
                raise ValueError(f"{path.name}: {hex16(ch)} has no value and is no composite")
            ch = composites[ch][0]
        return values[ch]

    return [
        block
        if len(block) == 3
        else (block[0] >> 8, block[0] & 0xFF, [value_of(ch) for ch in range(block[0], block[1] + 1)])
        for block in blocks
    ]


def emit_blocks(name, qualifier, blocks):
    """The blocks, packed: first index, count, values. Also gives the offset of each."""
    text, offsets, size = f"{qualifier}std::uint8_t {name}[] = {{\n", [], 0
    for number, first, values in blocks:
        text += f"    // set {number}, from index {hex8(first)}\n    {hex8(first)}, {len(values)},\n"
        text += lines_of([hex8(value) for value in values], 16)
        offsets.append(size)
        size += 2 + len(values)
    return text + "};\n\n", offsets


def emit_entries(declaration, name, blocks, offsets):
    rows = "".join(f"    {{{block[0]}, {name} + {offset}}},\n" for block, offset in zip(blocks, offsets))
    return f"{declaration} = {{\n{rows}    {{0xFF, nullptr}},\n}};\n\n"


def emit_sequences(data, composites):
    coltbl = read_sequence(data / "coltbl.txt", composites)
    default = read_sequence(data / "default_sequence.txt", composites)
    hebrew_arabic = read_sequence(data / "hebrew_arabic_sequence.txt", composites, default)
    own = [block for block in hebrew_arabic if block not in default]

    coltbl_text, coltbl_offsets = emit_blocks("coltbl_blocks", "", coltbl)
    default_text, default_offsets = emit_blocks("default_blocks", "const ", default)
    own_text, own_offsets = emit_blocks("hebrew_arabic_blocks", "const ", own)
    internal = coltbl_text + default_text + own_text

    entries = [f"    {{{block[0]}, default_blocks + {default_offsets[default.index(block)]}}},\n"
               for block in hebrew_arabic if block in default]
    entries += [f"    {{{block[0]}, hebrew_arabic_blocks + {offset}}},\n" for block, offset in zip(own, own_offsets)]
    tables = emit_entries("const SequenceEntry kDefaultSequence[]", "default_blocks", default, default_offsets)
    tables += "const SequenceEntry kHebrewArabicSequence[] = {\n" + "".join(entries) + "    {0xFF, nullptr},\n};\n\n"
    exported = emit_entries("KxCollationEntry coltbl[]", "coltbl_blocks", coltbl, coltbl_offsets)
    return internal, tables, exported


def emit_composites(ranges, composites):
    internal, rows = "", ""
    for number, covered in ranges.items():
        name = f"composites_of_{number}"
        pairs = [composites.get(ch, (NO_CHARACTER, NO_CHARACTER)) for ch in covered]
        internal += f"const Composite {name}[] = {{\n"
        internal += lines_of([f"{{{hex16(base)}, {hex16(diacritic)}}}" for base, diacritic in pairs], 6) + "};\n\n"
        rows += f"    {{{number}, {hex8(covered[0] & 0xFF)}, {name}}},\n"
    return internal, f"const CompositeTable kCompositeTables[] = {{\n{rows}}};\n\n"


def emit_contractions(path):
    """The state machine and the number of each named state."""
    rows = read_rows(path)
    states = {}
    for row in rows:
        states.setdefault(row[0], len(states) + 1)
    steps, results = "", ""
    count = 0
    for row in sorted(rows, key=lambda row: states[row[0]]):
        if row[2] == "->":
            target = states[row[3]]
        else:
            letters = [f"'{letter}'" for letter in row[3:]] + (["0"] if row[2] == "one" else [])
            target = FIRST_RESULT + count
            results += f"    {{{', '.join(letters)}}},\n"
            count += 1
        steps += f"    {{{states[row[0]]}, {hex8(target)}, {hex16(character(row[1]))}}}, // {' '.join(row)}\n"
    text = f"const ContractionStep kContractionSteps[{len(rows)}] = {{\n{steps}}};\n\n"
    return text + f"const ContractionResult kContractionResults[{count}] = {{\n{results}}};\n\n", states


def emit_languages(data, states):
    letters = read_rows(data / "letters.txt")
    columns = letters[0][1:]
    rows = ""
    for number, (place, code, kind, start, column, exceptions) in enumerate(read_rows(data / "languages.txt", 6)):
        if int(place) != number:
            raise ValueError(f"languages.txt: {place} stands at place {number}")
        flags = ["true" if flag in exceptions.split(",") else "false" for flag in ("late-diaeresis", "upper-first")]
        rows += (f"    {{{{'{code[0]}', '{code[1]}'}}, LanguageKind::{LANGUAGE_KINDS[kind]}, {states.get(start, 0)}, "
                 f"{columns.index(column)}, {', '.join(flags)}}}, // {number}\n")
    text = f"const LanguageRules kCollationLanguages[{number + 1}] = {{\n{rows}}};\n\n"
    text += f"const LetterValues kLetters[{len(letters) - 1}] = {{\n"
    for row in letters[1:]:
        values = ", ".join(f"0x{value}" for value in row[1:])
        text += f"    {{{hex16(character(row[0]))}, {{{values}}}}},\n"
    return text + "};\n\n"


def emit_coltbl_letters(path):
    head, *letters = read_rows(path)
    codes = [(code, column) for column, name in enumerate(head[1:]) if column for code in name.split(",")]
    text = f"const ColtblLanguage kColtblLanguages[{len(codes)}] = {{\n"
    text += lines_of([f"{{{{'{code[0]}', '{code[1]}'}}, {column}}}" for code, column in codes], 6) + "};\n\n"
    text += f"const ColtblLetter kColtblLetters[{len(letters)}] = {{\n"
    for row in letters:
        values = ", ".join(f"0x{value}" for value in row[1:])
        text += f"    {{{hex16(character(row[0]))}, {{{values}}}}},\n"
    return text + "};\n\n"


def emit_bytes(name, values):
    return f"const std::uint8_t {name}[{len(values)}] = {{\n" + lines_of([str(value) for value in values], 22) + "};\n\n"


def numbered(path, columns):
    """The rows of a file whose first column counts from 0, without that column."""
    rows = read_rows(path, columns)
    if [int(row[0]) for row in rows] != list(range(len(rows))):
        raise ValueError(f"{path.name}: the first column does not count from 0")
    return [row[1:] for row in rows]


def emit_marks(path):
    rows = read_rows(path)
    ranks = [(character(row[1]), int(row[2])) for row in rows if row[0] == "rank"]
    first = ranks[0][0]
    if [ch for ch, _ in ranks] != list(range(first, first + len(ranks))):
        raise ValueError(f"{path.name}: the ranks have gaps")
    text = emit_bytes("kHamzaRanks", [rank for _, rank in ranks])
    apart = [span_of(row[1]) for row in rows if row[0] == "apart"]
    pairs = [f"{{{hex16(span[0])}, {hex16(span[-1])}}}" for span in apart]
    return text + f"const CharacterRange kArabicLettersApart[{len(pairs)}] = {{\n" + lines_of(pairs, 4) + "};\n\n"


def emit_east_asian(data):
    kana = numbered(data / "kana.txt", 3)
    vowels = numbered(data / "kana_vowels.txt", 2)
    symbols = read_rows(data / "east_asian_symbols.txt", 2)
    text = emit_bytes("kKanaSounds", [KANA_SOUNDS[sound] for sound, _ in kana])
    text += emit_bytes("kKanaValues", [value for _, value in kana])
    text += emit_bytes("kKanaVowels", [vowel for vowel, in vowels])
    rows = lines_of([f"{{{index}, {value}}}" for index, value in symbols], 6)
    return text + f"const EastAsianSymbol kEastAsianSymbols[{len(symbols)}] = {{\n{rows}}};\n\n"


def generate(data):
    data = data / "collation"
    ranges, composites = read_composites(data / "composites.txt")
    blocks, sequences, coltbl = emit_sequences(data, composites)
    pairs, composite_tables = emit_composites(ranges, composites)
    contractions, states = emit_contractions(data / "contractions.txt")
    diacritics = numbered(data / "diacritics.txt", 3)
    diatbl = "const uint16_t diatbl[26] = {\n" + lines_of([value for _, value in diacritics], 26) + "};\n"
    text = (
        header("data/collation/")
        + '#include "tables/collation.h"\n\n#include <kxstr/collate.h>\n\nnamespace kxstr::tables {\nnamespace {\n\n'
        + blocks
        + pairs
        + "} // namespace\n\n"
        + sequences
        + composite_tables
        + emit_bytes("kDiacriticRanks", [rank for rank, _ in diacritics])
        + emit_marks(data / "arabic_marks.txt")
        + emit_languages(data, states)
        + contractions
        + emit_coltbl_letters(data / "coltbl_letters.txt")
        + emit_east_asian(data)
        + "} // namespace kxstr::tables\n\nusing kxstr::tables::coltbl_blocks;\n\nextern \"C\" {\n\n"
        + coltbl
        + diatbl
        + "}\n"
    )
    return {"collation.cpp": text}
