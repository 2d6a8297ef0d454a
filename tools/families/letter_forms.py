"""The East Asian form tables: data/eastasia/forms1.txt .. forms4.txt, one for each country that has one."""
from families import _emit

COUNTRIES = {1: "Japanese", 2: "Korean", 3: "Traditional Chinese", 4: "Simplified Chinese"}
SEPARATOR = 0xFFFF
FIRST_DOUBLE_SET = 0x24
FIRST_CASE_SET = 0x10  # below, case goes by the rule of the set
BLOCK = 64  # characters to a block of the index: smallest together with the block numbers
FOUND = 0x8000
GROUP_SHIFT = 12


def read_table(path):
    rows = []
    for number, single, double in _emit.read_rows(path, 3):
        if int(number) != len(rows):
            raise ValueError(f"{path.name}: row {len(rows)} is numbered {number}")
        rows.append((int(single, 16), int(double, 16)))
    separators = [number for number, row in enumerate(rows) if row == (SEPARATOR, SEPARATOR)]
    if len(separators) != 4 or separators[-1] != len(rows) - 1:
        raise ValueError(f"{path.name}: separators at {separators}")
    return rows


def index_of(rows):
    """For each character the entry of its first row, 0 where it has none: characters below the double-byte sets are
    looked for in column 0, the others in column 1."""
    index = [0] * 0x10000
    group = 0
    for number, row in enumerate(rows):
        for column, ch in enumerate(row):
            if (ch >> 8 >= FIRST_DOUBLE_SET) == (column == 1) and index[ch] == 0:
                index[ch] = FOUND | group << GROUP_SHIFT | number
        if row[0] == SEPARATOR:
            group += 1
    return index


def case_ranges(rows, small):
    """What has a small letter (or else a capital) of the same width: [first, last, distance], the widest first."""
    ranges = []
    for ch, entry in enumerate(index_of(rows)):
        other = rows[entry & 0x3FE | small][ch >> 8 >= FIRST_DOUBLE_SET]
        if ch < FIRST_CASE_SET << 8 or entry >> GROUP_SHIFT != FOUND >> GROUP_SHIFT or other in (0, ch):
            continue
        if ranges and ranges[-1][1] == ch - 1 and ranges[-1][2] == other - ch and ch & 0xFF:
            ranges[-1][1] = ch
        else:
            ranges.append([ch, ch, other - ch])
    return sorted(ranges, key=lambda r: r[0] - r[1])


def generate_case_ranges(tables):
    text = _emit.header("data/eastasia/forms1.txt to forms4.txt")
    text += "// The letters of the East Asian sets in two cases, as ranges within a set.\n#pragma once\n\n"
    text += "#include <array>\n#include <kxstr/types.h>\n\nnamespace kxstr::tables {\n\n"
    text += "// Characters whose other case lies `distance` above them. 0 in all: no range.\n"
    text += "struct CaseRange {\n    KxChar first;\n    KxChar last;\n    int distance;\n};\n\n"
    text += "// By country, from kJapanese (country 1) to kSimplifiedChinese (country 4); the widest ranges first.\n"
    for name, small in (("kCapitalRanges", 1), ("kSmallLetterRanges", 0)):
        ranges = {country: case_ranges(rows, small) for country, rows in tables.items()}
        most = max(map(len, ranges.values()))
        text += f"inline constexpr std::array<std::array<CaseRange, {most}>, {len(tables)}> {name}{{{{\n"
        for country, rows in ranges.items():
            text += f"    // {COUNTRIES[country]}\n    {{{{\n"
            text += "".join(f"        {{{_emit.hex16(a)}, {_emit.hex16(b)}, {distance}}},\n" for a, b, distance in rows)
            text += "    }},\n"
        text += "}};\n"
    return text + "\n} // namespace kxstr::tables\n"


def generate(data):
    tables = {country: read_table(data / "eastasia" / f"forms{country}.txt") for country in COUNTRIES}
    blocks = {}  # block of the index -> its number; equal blocks of all tables are stored once
    text = _emit.header("data/eastasia/forms1.txt to forms4.txt")
    text += '#include "tables/letter_forms.h"\n\nnamespace kxstr::tables {\nnamespace {\n'
    for country, rows in tables.items():
        index = index_of(rows)
        numbers = [
            blocks.setdefault(tuple(index[start : start + BLOCK]), len(blocks)) for start in range(0, 0x10000, BLOCK)
        ]
        text += f"\n// {COUNTRIES[country]}\nconstexpr std::array<LetterFormRow, {len(rows)}> kRows{country}{{{{\n"
        text += _emit.lines_of([f"{{{_emit.hex16(a)}, {_emit.hex16(b)}}}" for a, b in rows], 6)
        text += f"}}}};\n\nconstexpr std::array<std::uint8_t, {len(numbers)}> kBlocks{country}{{\n"
        text += _emit.lines_of([str(number) for number in numbers], 24)
        text += "};\n"
    if len(blocks) > 256:
        raise ValueError(f"{len(blocks)} blocks do not fit block numbers of a byte")
    text += f"\n// {len(blocks)} blocks of {BLOCK} entries, shared by the tables\n"
    text += f"constexpr std::array<std::uint16_t, {len(blocks) * BLOCK}> kEntries{{\n"
    for number, block in enumerate(blocks):
        text += f"    // block {number}\n" + _emit.lines_of([_emit.hex16(entry) for entry in block], 14)
    text += "};\n\n} // namespace\n\nconst std::array<LetterFormTable, 4> kLetterFormTables{{\n"
    text += "".join(
        f"    {{kRows{country}, kBlocks{country}.data(), kEntries.data()}}, // {name}\n"
        for country, name in COUNTRIES.items()
    )
    text += "}};\n\n} // namespace kxstr::tables\n"
    return {"letter_forms.cpp": text, "case_ranges.h": generate_case_ranges(tables)}
