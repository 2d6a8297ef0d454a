"""The Windows code pages of the platform layer, both ways, and the languages and locales with their code pages."""
from . import _emit
from .codepages import read_bytes

UNITS = 0x10000
FIRST_BYTE = 0x80  # the bytes below are ASCII in every page
FIRST_TRAIL = 0x40
PER_LINE = 16


class Page:
    """units: code -> unit. leads: lead bytes. one_way: codes that no unit goes back to."""

    def __init__(self, number):
        self.number = number
        self.units = {byte: byte for byte in range(FIRST_BYTE)}
        self.leads = set()
        self.one_way = set()
        self.default = ord("?")
        self.published = {}  # what the published mapping has for a byte where Windows has another unit

    def add(self, code, unit):
        if code in self.units:
            raise ValueError(f"page {self.number}: {code:X} occurs twice")
        if code > 0xFF and (code >> 8 not in self.leads or code & 0xFF < FIRST_TRAIL):
            raise ValueError(f"page {self.number}: {code:X} is no pair")
        self.units[code] = unit

    def codes(self):
        """unit -> code: the lowest that may be gone back to."""
        back = {}
        for code in sorted(self.units.keys() - self.one_way):
            back.setdefault(self.units[code], code)
        return back


def read_single_byte_page(data, fields):
    number, base, private, *exceptions = fields
    page = Page(int(number))
    units = read_bytes(data / "mappings" / f"{base}.txt") or read_bytes(data / "windows" / f"{base}.txt")
    published = dict(units)
    for exception in exceptions:
        byte, _, unit = exception.partition("=")
        if unit:
            units[int(byte, 16)] = int(unit, 16)
        else:
            del units[int(byte, 16)]
    for byte in range(FIRST_BYTE, 0x100):
        if byte in units:
            page.add(byte, units[byte])
        elif byte < 0xA0:
            page.add(byte, byte)
        else:
            page.add(byte, int(private, 16))
            private = f"{int(private, 16) + 1:04X}"
    page.published = {byte: unit for byte, unit in sorted(published.items()) if page.units[byte] != unit}
    return page


def spans(text):
    """'40-7E,80' -> the numbers."""
    for part in text.split(","):
        first, _, last = part.partition("-")
        yield from range(int(first, 16), int(last or first, 16) + 1)


def read_double_byte_page(path):
    page = Page(int(path.stem))
    for key, *fields in _emit.read_rows(path):
        if key == "default":
            page.default = int(fields[0], 16)
        elif key == "leads":
            page.leads.update(spans(fields[0]))
        elif key == "oneway":
            page.one_way.update(spans(fields[0]))
        elif key == "run":
            trails, unit = set(spans(fields[1])), int(fields[2], 16)
            for code in spans(fields[0]):
                if code & 0xFF in trails:
                    page.add(code, unit)
                    unit += 1
        else:
            for code, unit in enumerate(fields, int(key, 16)):
                if unit != "----":
                    page.add(code, int(unit, 16))
    return page


class Blocks:
    """Equal blocks are kept once."""

    def __init__(self):
        self.numbers = {}

    def add(self, values):
        return self.numbers.setdefault(tuple(values), len(self.numbers))


def number_lines(values):
    return _emit.lines_of([str(value) if value < 10 else f"0x{value:X}" for value in values], PER_LINE)


def array(kind, name, values):
    return f"{kind} {name}[] = {{\n{number_lines(values)}}};\n\n"


def pages_text(pages):
    rows, blocks = Blocks(), Blocks()
    blocks.add([0] * 0x100)  # number 0: no unit of the block has a code
    text = _emit.header("data/windows/*.txt and data/mappings/*.txt")
    text += '#include "tables/windows_pages.h"\n\nnamespace kxstr::tables {\n\n'
    index, data, size = "", "", 0
    for page in pages:
        codes = page.codes()
        high_bytes = [page.units.get(byte, page.default) for byte in range(FIRST_BYTE, 0x100)]
        lead_rows = [
            rows.add(page.units.get(lead << 8 | trail, page.default) for trail in range(FIRST_TRAIL, 0x100)) + 1
            if lead in page.leads else 0
            for lead in range(FIRST_BYTE, 0x100)
        ]  # fmt: skip
        unit_blocks = [
            blocks.add(codes.get(unit, 0) for unit in range(first, first + 0x100)) for first in range(0, UNITS, 0x100)
        ]
        places = []
        parts = {"units": high_bytes, "rows": lead_rows if page.leads else [], "blocks": unit_blocks}
        for name, part in parts.items():
            places.append(size if part else 0)
            size += len(part)
            if part:
                data += f"    // {page.number}: {name}\n{number_lines(part)}"
        index += f"    {{{page.number}, {_emit.hex16(page.default)}, {', '.join(map(str, places))}}},\n"
    text += f"const std::uint16_t kWindowsPageData[] = {{\n{data}}};\n\n"
    text += f"constinit const std::array<WindowsPage, kWindowsPageCount> kWindowsPages{{{{\n{index}}}}};\n\n"
    published = "".join(f"    {{{page.number}, 0x{byte:X}, {_emit.hex16(unit)}}},\n"
                        for page in pages for byte, unit in page.published.items())
    text += f"constinit const std::array<PublishedUnit, kPublishedUnitCount> kPublishedUnits{{{{\n{published}}}}};\n\n"
    for name, kept in (("kWindowsRows", rows), ("kWindowsBlocks", blocks)):
        values = [value for block in kept.numbers for value in block]
        text += array("const std::uint16_t", name, values)
    return text + "} // namespace kxstr::tables\n"


def read_locales(path):
    """(language identifier, ANSI code page, OEM code page, locale names), by language identifier."""
    locales = []
    for language, ansi, oem, *names in _emit.read_rows(path):
        locales.append((int(language, 16), int(ansi), int(oem), names))
    identifiers = [locale[0] for locale in locales]
    if identifiers != sorted(set(identifiers)):
        raise ValueError("locales.txt: the language identifiers do not ascend")
    return locales


def locales_text(locales):
    text = _emit.header("data/locales.txt")
    text += '#include "tables/windows_locales.h"\n\nnamespace kxstr::tables {\nnamespace {\n\n'
    text += "constexpr Language kLanguageRows[] = {\n"
    text += "".join(f"    {{{_emit.hex16(number)}, {ansi}, {oem}}},\n" for number, ansi, oem, _ in locales)
    text += "};\n\nconstexpr LocaleName kNameRows[] = {\n"
    names = sorted((name, number) for number, _, _, names in locales for name in names)
    if len({name for name, _ in names}) != len(names):
        raise ValueError("locales.txt: a name occurs twice")
    text += "".join(f'    {{"{name}", {_emit.hex16(number)}}},\n' for name, number in names)
    text += "};\n\n} // namespace\n\n"
    text += "constinit const std::span<const Language> kLanguages{kLanguageRows};\n"
    text += "constinit const std::span<const LocaleName> kLocaleNames{kNameRows};\n\n"
    return text + "} // namespace kxstr::tables\n"


def generate(data):
    folder = data / "windows"
    pages = [read_single_byte_page(data, fields) for fields in _emit.read_rows(folder / "single_byte.txt")]
    pages += [read_double_byte_page(path) for path in folder.glob("[0-9]*.txt")]
    pages.sort(key=lambda page: page.number)
    return {
        "windows_pages.cpp": pages_text(pages),
        "windows_locales.cpp": locales_text(read_locales(data / "locales.txt")),
    }
