"""Names of Unicode characters that are no KX characters of a table: data/names/unicode.txt -> unicode_names.cpp."""
from . import _emit


def generate(data):
    rows = [(int(unicode, 16), " ".join(name)) for unicode, *name in _emit.read_rows(data / "names" / "unicode.txt")]
    if any(a >= b for (a, _), (b, _) in zip(rows, rows[1:])):
        raise ValueError("unicode.txt: the characters do not ascend")
    items = [f'{{{_emit.hex16(unicode)}, "{name}"}}' for unicode, name in rows]
    text = _emit.header("data/names/unicode.txt") + (
        '#include "tables/unicode_names.h"\n\n'
        "namespace kxstr::tables {\n\n"
        f"const std::array<UnicodeName, {len(items)}> kUnicodeNames{{{{\n{_emit.lines_of(items, 1)}}}}};\n\n"
        "} // namespace kxstr::tables\n")
    return {"unicode_names.cpp": text}
