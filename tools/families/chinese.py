"""The tables between the two Chinese character sets: data/eastasia/big5gb.txt and gbbig5.txt."""
from families import _emit

PER_SET = 255  # characters to a KX set
BIG5_SET, BIG5_SIZE = 0xA5, 13939
GB_SET, GB_SIZE = 0x82, 8177


def read_table(path, first_set, size):
    table = [0] * size
    for key, value in _emit.read_rows(path, 2):
        ch = int(key, 16)
        ordinal = ((ch >> 8) - first_set) * PER_SET + (ch & 0xFF)
        if table[ordinal] != 0:
            raise ValueError(f"{path.name}: {key} stands twice")
        table[ordinal] = int(value, 16)
    return table


def definition(name, table):
    return (
        f"const std::array<KxChar, {len(table)}> {name}{{\n"
        + _emit.lines_of([_emit.hex16(ch) if ch else "0" for ch in table], 14)
        + "};\n"
    )


def generate(data):
    text = _emit.header("data/eastasia/big5gb.txt and gbbig5.txt")
    text += '#include "tables/chinese.h"\n\nnamespace kxstr::tables {\n\n'
    text += definition("kBig5ToGb", read_table(data / "eastasia" / "big5gb.txt", BIG5_SET, BIG5_SIZE)) + "\n"
    text += definition("kGbToBig5", read_table(data / "eastasia" / "gbbig5.txt", GB_SET, GB_SIZE))
    return {"chinese.cpp": text + "\n} // namespace kxstr::tables\n"}
