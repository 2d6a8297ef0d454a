#include "text/exact.h"

#include "core/kx_char.h"
#include "core/map_cache.h"
#include "tables/windows_pages.h"
#include "text/scalars.h"

namespace kxstr::text {
namespace {

// Windows has a page of this number, but nobody published its mapping.
constexpr std::uint32_t kUnpublished = 708;

// The page's table, or null for one without a published mapping.
const tables::WindowsPage *published(const CodePage &page) noexcept {
    if (page.own != nullptr || page.windows_number == kUnpublished) return nullptr;
    // 10001 is one page under both numbers; 874 has no KX number.
    return tables::find_windows_page(page.windows_number);
}

constexpr std::size_t kDoubleBytePages = 4;
constinit MapCache<std::uint32_t, kDoubleBytePages> unit_maps{};
constinit MapCache<std::uint32_t, kDoubleBytePages> code_maps{};

std::uint16_t unit_of_pair(const tables::WindowsPage &page, std::uint16_t code) noexcept {
    const auto lead = static_cast<std::uint8_t>(code >> 8);
    const auto trail = static_cast<std::uint8_t>(code);
    const std::uint16_t *const row = tables::find_row(page, lead);
    if (row == nullptr || trail < tables::kFirstTrailByte) return kNone;
    const std::uint16_t unit = row[trail - tables::kFirstTrailByte];
    // The mark for codes that no character has is a character of its own only at its own code.
    return unit == page.default_unit && tables::find_code(page, unit) != code ? kNone : unit;
}

} // namespace

bool has_published_mapping(const CodePage &page) noexcept {
    return published(page) != nullptr;
}

std::uint16_t unit_of_code(const CodePage &page, std::uint16_t code) noexcept {
    if (code < 0x20 || code == 0x7F) return code;
    const tables::WindowsPage *const table = published(page);
    if (table == nullptr) {
        const KxChar ch = kx_of_code(page, code);
        return ch == kNone ? kNone : unicode_of_kx(page, ch);
    }
    if (code < tables::kFirstHighByte) return code;
    if (code > 0xFF) return unit_of_pair(*table, code);
    const auto byte = static_cast<std::uint8_t>(code);
    if (tables::find_row(*table, byte) != nullptr) return kNone;
    for (const tables::PublishedUnit &entry : tables::kPublishedUnits)
        if (entry.page == table->number && entry.byte == byte) return entry.unit;
    const std::uint16_t unit = table->units()[byte - tables::kFirstHighByte];
    const bool is_mark = table->rows() != nullptr && unit == table->default_unit;
    return is_mark && tables::find_code(*table, unit) != code ? kNone : unit;
}

std::uint16_t double_byte_code_of(const CodePage &page, std::uint16_t unit) noexcept {
    if (unit < tables::kFirstHighByte) return unit;
    const tables::WindowsPage *const table = published(page);
    const std::uint16_t code = table == nullptr ? std::uint16_t{0} : tables::find_code(*table, unit);
    return code == 0 ? kNone : code;
}

void fill_leads(const CodePage &page, std::uint8_t *leads) noexcept {
    const tables::WindowsPage *const table = is_double_byte(page) ? published(page) : nullptr;
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        const bool lead = table != nullptr && tables::find_row(*table, static_cast<std::uint8_t>(byte)) != nullptr;
        leads[byte] = lead ? 0x80 : 0;
    }
}

const std::uint16_t *units_of_codes(const CodePage &page) noexcept {
    return unit_maps.find(
        page.windows_number, [&] { return published(page) != nullptr; },
        [&](UnitMap &map) {
            map.values.fill(kNone);
            for (unsigned code = 0; code < 0x10000; ++code)
                map.values[code] = unit_of_code(page, static_cast<std::uint16_t>(code));
        });
}

const std::uint16_t *codes_of_units(const CodePage &page) noexcept {
    return code_maps.find(
        page.windows_number, [&] { return published(page) != nullptr; },
        [&](UnitMap &map) {
            map.values.fill(kNone);
            for (unsigned unit = 0; unit < 0x10000; ++unit)
                map.values[unit] = double_byte_code_of(page, static_cast<std::uint16_t>(unit));
        });
}

void fill_units(const CodePage &page, simd::MapPage &units) noexcept {
    for (unsigned byte = 0; byte <= 0xFF; ++byte)
        units.set(byte, byte < 0x80 ? static_cast<std::uint16_t>(byte)
                                    : unit_of_code(page, static_cast<std::uint16_t>(byte)));
}

bool fill_utf8(const simd::MapPage &units, simd::Utf8Page &utf8) noexcept {
    utf8 = {};
    bool fits = true;
    for (std::size_t i = 0; i < 0x80; ++i) {
        fits = fits && units[i] < 0x80;
        utf8.low[i] = static_cast<std::uint8_t>(units[i]);
        utf8.changes_low = utf8.changes_low || units[i] != i;
        const std::uint16_t unit = units[0x80 + i];
        if (unit == kNone || is_surrogate(unit)) continue;
        const std::size_t length = write_utf8(unit, utf8.entries[i]);
        for (std::size_t k = 0; k < length; ++k)
            utf8.apart[k][i] = utf8.entries[i][k];
        utf8.entries[i][3] = static_cast<std::uint8_t>(length);
    }
    return fits;
}

void fill_bytes(const simd::MapPage &units, simd::ByteOfUnits &bytes) noexcept {
    bytes = {};
    std::size_t tables = 1;
    // Of two bytes with one unit the lower one counts, and ASCII is itself.
    for (unsigned byte = 0xFF; byte > 0; --byte) {
        const std::uint16_t unit = byte < 0x80 ? static_cast<std::uint16_t>(byte) : units[byte];
        if (unit == kNone || unit == 0) continue;
        std::uint8_t &table = bytes.table_of[unit >> 8];
        if (unit > 0xFF && table == 0) {
            if (tables == simd::ByteOfUnits::kTables) continue; // no page has so many
            table = static_cast<std::uint8_t>(tables++);
        }
        bytes.bytes[table][unit & 0xFF] = static_cast<std::uint8_t>(byte);
    }
}

LetterAndTone vietnamese_parts(std::uint16_t unit) noexcept {
    static constexpr std::uint16_t tones[] = {0x0300, 0x0309, 0x0303, 0x0301, 0x0323};
    struct Row {
        char16_t letter;
        char16_t with_tone[6];
    };
    static constexpr Row rows[] = {
        {u'A', u"\u00C0\u1EA2\u00C3\u00C1\u1EA0"},      {u'a', u"\u00E0\u1EA3\u00E3\u00E1\u1EA1"},
        {u'\u0102', u"\u1EB0\u1EB2\u1EB4\u1EAE\u1EB6"}, {u'\u0103', u"\u1EB1\u1EB3\u1EB5\u1EAF\u1EB7"},
        {u'\u00C2', u"\u1EA6\u1EA8\u1EAA\u1EA4\u1EAC"}, {u'\u00E2', u"\u1EA7\u1EA9\u1EAB\u1EA5\u1EAD"},
        {u'E', u"\u00C8\u1EBA\u1EBC\u00C9\u1EB8"},      {u'e', u"\u00E8\u1EBB\u1EBD\u00E9\u1EB9"},
        {u'\u00CA', u"\u1EC0\u1EC2\u1EC4\u1EBE\u1EC6"}, {u'\u00EA', u"\u1EC1\u1EC3\u1EC5\u1EBF\u1EC7"},
        {u'I', u"\u00CC\u1EC8\u0128\u00CD\u1ECA"},      {u'i', u"\u00EC\u1EC9\u0129\u00ED\u1ECB"},
        {u'O', u"\u00D2\u1ECE\u00D5\u00D3\u1ECC"},      {u'o', u"\u00F2\u1ECF\u00F5\u00F3\u1ECD"},
        {u'\u00D4', u"\u1ED2\u1ED4\u1ED6\u1ED0\u1ED8"}, {u'\u00F4', u"\u1ED3\u1ED5\u1ED7\u1ED1\u1ED9"},
        {u'\u01A0', u"\u1EDC\u1EDE\u1EE0\u1EDA\u1EE2"}, {u'\u01A1', u"\u1EDD\u1EDF\u1EE1\u1EDB\u1EE3"},
        {u'U', u"\u00D9\u1EE6\u0168\u00DA\u1EE4"},      {u'u', u"\u00F9\u1EE7\u0169\u00FA\u1EE5"},
        {u'\u01AF', u"\u1EEA\u1EEC\u1EEE\u1EE8\u1EF0"}, {u'\u01B0', u"\u1EEB\u1EED\u1EEF\u1EE9\u1EF1"},
        {u'Y', u"\u1EF2\u1EF6\u1EF8\u00DD\u1EF4"},      {u'y', u"\u1EF3\u1EF7\u1EF9\u00FD\u1EF5"},
    };
    for (const Row &row : rows)
        for (std::size_t tone = 0; tone < std::size(tones); ++tone)
            if (row.with_tone[tone] == unit) return {static_cast<std::uint16_t>(row.letter), tones[tone]};
    return {0, 0};
}

} // namespace kxstr::text
