"""Code pages that the tool has and the library has not: data/mappings/tool/cpN.txt -> tool_pages.cpp."""
from . import _emit

NONE = 0xFFFD


def generate(data):
    pages = []
    for path in sorted((data / "mappings" / "tool").glob("cp*.txt")):
        characters = {int(byte, 16): int(unicode, 16) for byte, unicode in _emit.read_rows(path, 2)}
        if not all(0x80 <= byte <= 0xFF for byte in characters):
            raise ValueError(f"{path.name}: a byte below 80 or above FF")
        values = [_emit.hex16(characters.get(byte, NONE)) for byte in range(0x80, 0x100)]
        pages.append(f'    {{{path.stem[2:]}, {{{{\n{_emit.lines_of(values, 8, " " * 8)}    }}}}}},\n')
    text = _emit.header("data/mappings/tool/") + (
        '#include "tables/tool_pages.h"\n\n'
        "namespace kxstr::tables {\n\n"
        f"const std::array<ToolPage, {len(pages)}> kToolPages{{{{\n{''.join(pages)}}}}};\n\n"
        "} // namespace kxstr::tables\n")
    return {"tool_pages.cpp": text}
