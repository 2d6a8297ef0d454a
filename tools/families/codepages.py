"""The code page table with its range and reverse tables."""
import itertools

from . import _emit
from .charset import read_pairs

BROKEN_BAR, SOFT_HYPHEN = 0x00A6, 0x00AD
HOUSE = 0x050C  # what DOS shows for byte 7F
ASCII_SET, NATIVE_BYTE_SET = 0, 12
PER_LINE = 8
ENTRY_SIZES = {"range_table": 2, "reverse_table": 3}  # in bytes; two bytes stand in front


def read_bytes(path):
    """Byte -> value; empty for a file that does not exist."""
    if not path.exists():
        return {}
    rows = _emit.read_rows(path, 2)
    values = {int(byte, 16): int(value, 16) for byte, value in rows}
    if len(values) != len(rows):
        raise ValueError(f"{path.name}: a byte occurs twice")
    return values


def low_table(data, name):
    """Byte -> KX character for the bytes below 32, or nothing."""
    if name == "-":
        return {}
    folder = data / "codepages"
    return read_bytes(folder / "low_common.txt") | read_bytes(folder / f"low_{name}.txt")


def high_table(data, pairs, number, base, byte_range, is_dos):
    """Byte -> KX character, by the rule that data/codepages/index.txt tells."""
    unicode_of = {} if base == "-" else {0x7F: 0x7F} | read_bytes(data / "mappings" / f"{base}.txt")
    table = {}
    for byte in byte_range:
        unicode = unicode_of.get(byte)
        if byte == 0x7F and is_dos:
            table[byte] = HOUSE
        elif unicode == BROKEN_BAR:
            table[byte] = ord("|")
        elif unicode == SOFT_HYPHEN:
            table[byte] = ord("-")
        else:
            table[byte] = pairs.get(unicode, NATIVE_BYTE_SET << 8 | byte)
    exceptions = read_bytes(data / "codepages" / f"{number}.txt")
    if not exceptions.keys() <= table.keys():
        raise ValueError(f"{number}.txt: a byte outside the table's range")
    return table | exceptions


def reverse_table(low, high):
    """KX character -> byte. Bytes ascend, so of two bytes with one character the higher one stays."""
    inverse = {kx: byte for byte, kx in sorted((low | high).items())}
    return {kx: inverse[kx] for kx in sorted(inverse) if kx >> 8 not in (ASCII_SET, NATIVE_BYTE_SET)}


class Tables:
    """The tables written so far; equal ones are written once."""

    def __init__(self):
        self.places = {}
        self.names = []
        self.size = 0
        self.text = ""

    def add(self, name, function, arguments, lines):
        """Writes lines of entries, each followed by its note; returns 1 + the table's place."""
        count = sum(len(entries) for _, entries in lines)
        body = "".join(f"    {', '.join(entries)}, // {note}\n" for note, entries in lines)
        call = f"{function}<{count}>({arguments}{{\n"
        # The notes name the code page, so they do not count.
        key = call + " ".join(entry for _, entries in lines for entry in entries)
        if key not in self.places:
            self.places[key] = 1 + self.size
            self.names.append(name)
            self.size += 2 + count * ENTRY_SIZES[function]
            self.text += f"constexpr auto {name} = {call}{body}}});\n"
        return str(self.places[key])

    def add_range(self, name, page, table):
        if not table:
            return "0"
        rows = itertools.groupby(table.items(), lambda entry: entry[0] // PER_LINE)
        rows = [list(row) for _, row in rows]
        lines = [(f"{page}: {row[0][0]:02X}", [_emit.hex16(kx) for _, kx in row]) for row in rows]
        return self.add(name, "range_table", f"{_emit.hex8(min(table))}, ", lines)

    def add_reverse(self, name, page, table):
        entries = list(table.items())
        rows = [entries[i : i + PER_LINE] for i in range(0, len(entries), PER_LINE)]
        lines = [(f"{page}: {row[0][0]:04X}", [f"0x{kx:04X}{byte:02X}" for kx, byte in row]) for row in rows]
        return self.add(name, "reverse_table", "", lines)


def generate(data):
    pairs = read_pairs(data)
    tables = Tables()
    entries = ""
    for number, windows_number, low_name, first, last, base in _emit.read_rows(data / "codepages" / "index.txt", 6):
        low = low_table(data, low_name)
        byte_range = range(int(first, 16), int(last, 16) + 1)
        high = high_table(data, pairs, number, base, byte_range, is_dos=bool(low))
        reverse = reverse_table(low, high)
        names = (
            tables.add_range(f"kLow{low_name.capitalize()}", f"low {low_name}", low),
            tables.add_range(f"kHigh{number}", number, high),
            tables.add_reverse(f"kReverse{number}", number, reverse),
        )
        entries += f"    {{{number}, {windows_number}, {', '.join(names)}}}, // {len(reverse)} reverse entries\n"
    text = _emit.header("data/codepages/, data/mappings/ and data/charset/unicode_to_kx.txt")
    text += '#include "tables/code_pages.h"\n#include "tables/packing.h"\n\nnamespace kxstr::tables {\nnamespace {\n\n'
    text += "// The note behind a line tells the code page and the byte (range tables) or KX character (reverse tables) of\n"
    text += "// its first entry. Reverse entries: KX character in the upper 16 bits of 24, native byte in the lower 8.\n"
    text += tables.text + "\n} // namespace\n\n"
    names = _emit.lines_of(tables.names, PER_LINE // 2).rstrip(",\n")
    text += f"constinit const std::array<std::uint8_t, {tables.size}> kCodePageTables = joined(\n{names});\n\n"
    text += f"constinit const std::array<CodePage, {entries.count(chr(10))}> kCodePages{{{{\n{entries}}}}};\n"
    return {"code_pages.cpp": text + "\n} // namespace kxstr::tables\n"}
