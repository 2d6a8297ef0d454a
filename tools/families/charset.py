"""The KX character set: its Unicode tables for the library, its character names for the tool."""
from . import _emit

SETS = 15
PER_LINE = 8


def read_characters(data):
    """KX character -> (Unicode value, name)."""
    rows = _emit.read_rows(data / "charset" / "kxset.txt")
    characters = {int(kx, 16): (int(unicode, 16), " ".join(name)) for kx, unicode, *name in rows}
    if len(characters) != len(rows) or list(characters) != sorted(characters):
        raise ValueError("kxset.txt: the characters do not ascend")
    for kx in characters:
        # The tables are plain arrays by index, so a gap would shift all that follow.
        if kx & 0xFF and kx - 1 not in characters:
            raise ValueError(f"kxset.txt: {kx:04X} follows a gap")
    return characters


def read_pairs(data):
    """Unicode value -> KX character."""
    rows = _emit.read_rows(data / "charset" / "unicode_to_kx.txt", 2)
    pairs = {int(unicode, 16): int(kx, 16) for unicode, kx in rows}
    if len(pairs) != len(rows) or list(pairs) != sorted(pairs):
        raise ValueError("unicode_to_kx.txt: the Unicode values do not ascend")
    return pairs


def by_set(characters):
    """For each set the KX characters it has in the table."""
    return [[kx for kx in characters if kx >> 8 == number] for number in range(SETS)]


def unicode_map(characters, pairs):
    text = _emit.header("data/charset/kxset.txt and data/charset/unicode_to_kx.txt")
    text += '#include "tables/unicode_map.h"\n\nnamespace kxstr::tables {\n\n'
    text += f"constinit const std::array<std::uint16_t, {len(characters)}> kUnicodeOfKx{{\n"
    starts = [0]
    for members in by_set(characters):
        starts.append(starts[-1] + len(members))
        for i in range(0, len(members), PER_LINE):
            line = members[i : i + PER_LINE]
            values = ", ".join(_emit.hex16(characters[kx][0]) for kx in line)
            text += f"    {values}, // {line[0]:04X}\n"
    text += "};\n\n"
    text += f"constinit const std::array<UnicodePair, {len(pairs)}> kUnicodeToKx{{{{\n"
    items = [f"{{{_emit.hex16(unicode)}, {_emit.hex16(kx)}}}" for unicode, kx in pairs.items()]
    text += _emit.lines_of(items, 6) + "}};\n\n"
    text += "constinit const KxToUnicode kKxToUnicode{{\n"
    text += _emit.lines_of([str(start) for start in starts], 16)
    return text + "}};\n\n} // namespace kxstr::tables\n"


def read_compositions(data, pairs):
    """(letter, mark, character), in Unicode."""
    rows = [tuple(int(field, 16) for field in row[:3]) for row in _emit.read_rows(data / "charset" / "compositions.txt")]
    if rows != sorted(set(rows)) or any(character not in pairs for _, _, character in rows):
        raise ValueError("compositions.txt: a row does not ascend, or makes no character of the KX set")
    return rows


def compositions(rows):
    text = _emit.header("data/charset/compositions.txt")
    text += '#include "tables/compositions.h"\n\nnamespace kxstr::tables {\n\n'
    text += f"constinit const std::array<Composition, {len(rows)}> kCompositions{{{{\n"
    items = [f"{{{', '.join(map(_emit.hex16, row))}}}" for row in rows]
    return text + _emit.lines_of(items, 4) + "}};\n\n} // namespace kxstr::tables\n"


def kx_names(characters):
    """The names lie in one string for each set, in the order of the characters, each up to the next one's offset."""
    names = [name for _, name in characters.values()]
    offsets = [0]
    for name in names:
        offsets.append(offsets[-1] + len(name))
    starts = [0]
    for members in by_set(characters):
        starts.append(starts[-1] + len(members))
    text = _emit.header("data/charset/kxset.txt")
    text += '#include "tables/kx_names.h"\n\nnamespace kxstr::tables {\n\n'
    text += f"const std::array<std::uint16_t, {len(starts)}> kKxNameStarts{{\n"
    text += _emit.lines_of([str(start) for start in starts], 16) + "};\n\n"
    text += f"const std::array<std::uint32_t, {len(offsets)}> kKxNameOffsets{{\n"
    text += _emit.lines_of([str(offset) for offset in offsets], 16) + "};\n\n"
    # One string of all names would be longer than compilers have to take (65,536 characters).
    text += f"const std::array<const char *, {len(starts) - 1}> kKxNamePools{{\n"
    for first, last in zip(starts, starts[1:]):
        text += "\n".join(f'    "{name}"' for name in names[first:last] or [""]) + ",\n"
    text += "};\n"
    return text + "\n} // namespace kxstr::tables\n"


def generate(data):
    characters, pairs = read_characters(data), read_pairs(data)
    return {
        "unicode_map.cpp": unicode_map(characters, pairs),
        "compositions.cpp": compositions(read_compositions(data, pairs)),
        "kx_names.cpp": kx_names(characters),
    }
