#include "codepage/page_maps.h"

#include <array>

#include "codepage/convert.h"
#include "codepage/descriptor.h"
#include "core/kx_char.h"
#include "platform/bytes.h"
#include "platform/system.h"

namespace kxstr::codepage {
namespace {

constinit MapCache<std::uint32_t, kPageMaps, ByteMap> lead_bytes{};

} // namespace

constinit PageMapCache to_kx_cache{}, from_kx_cache{};

void fill_to_kx_map(MapValues &values, const KxCodePage &page, bool double_byte_system) noexcept {
    // Without double-byte codes nothing lies above the bytes.
    values.fill(kNone);
    const unsigned codes = double_byte_system ? 0x10000 : 0x100;
    for (unsigned code = 0; code < codes; ++code)
        values[code] = to_kx(page, static_cast<std::uint16_t>(code), double_byte_system);
}

void fill_from_kx_map(MapValues &values, const KxCodePage &page, bool double_byte_system) noexcept {
    // All other sets have nothing: those of ASCII, native bytes, line ends and currency signs are always there.
    std::array<bool, 0x100> sets{};
    sets[kAsciiSet] = sets[kNativeByteSet] = sets[set_of(KX_LINE_FEED)] = sets[0x04] = true;
    if (page.reverse_table != nullptr)
        for (unsigned i = 0; i < load_u16le(page.reverse_table); ++i)
            sets[page.reverse_table[2 + 3 * i + 1]] = true;
    for (unsigned set = kFirstDoubleByteSet; double_byte_system && set <= kLastDoubleByteSet; ++set)
        sets[set] = true;
    values.fill(kNone);
    for (unsigned ch = 0; ch < 0x10000; ++ch)
        if (sets[ch >> 8]) values[ch] = from_kx(page, static_cast<KxChar>(ch), double_byte_system);
}

const std::uint16_t *to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return to_kx_cache.find(
        to_kx_key(page, double_byte_system),
        [&] {
            const tables::CodePage entry = code_page_or_none(page.input_code_page);
            return entry.low() == page.low_table && entry.high() == page.high_table;
        },
        [&](MapValues &values) { fill_to_kx_map(values, page, double_byte_system); });
}

const std::uint16_t *from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return from_kx_cache.find(
        from_kx_key(page, double_byte_system),
        [&] { return code_page_or_none(page.output_code_page).reverse() == page.reverse_table; },
        [&](MapValues &values) { fill_from_kx_map(values, page, double_byte_system); });
}

const std::uint8_t *lead_byte_map(std::uint32_t ansi_code_page) noexcept {
    return lead_bytes.find(
        ansi_code_page, [] { return true; },
        [&](auto &values) {
            for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
                if (platform::is_lead_byte_of(ansi_code_page, static_cast<std::uint8_t>(byte))) values[byte] = 0x80;
        });
}

} // namespace kxstr::codepage
