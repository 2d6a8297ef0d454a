#include "codepage/page_maps.h"

#include <algorithm>
#include <array>
#include <span>

#include "codepage/convert.h"
#include "codepage/descriptor.h"
#include "core/kx_char.h"
#include "platform/bytes.h"
#include "platform/system.h"

namespace kxstr::codepage {
namespace {

// Which values are put together of their unit's bytes. The rule of a page numbers codes and characters alike for most
// high bytes: what the first one says that has pairs alone of one high byte holds for all that say the same.
void find_pairs(simd::PairMap &map) noexcept {
    using Row = std::span<const std::uint16_t, 0x100>;
    simd::PairValues &pairs = map.pairs;
    const auto row_of = [&](unsigned high) { return Row(map.values.data() + 0x100 * std::size_t{high}, 0x100); };
    const auto is_pair = [](std::uint16_t value) { return value > 0xFF && value != kNone; };
    std::ranges::fill(pairs.high, simd::PairValues::kAskHigh);
    std::ranges::fill(pairs.low, simd::PairValues::kAskLow);
    bool is_known = false;
    for (unsigned high = 1; high < 0x100; ++high) {
        const Row row = row_of(high);
        const auto first = std::ranges::find_if(row, is_pair);
        if (first == row.end()) continue;
        const unsigned value_high = *first >> 8;
        const auto is_of_row = [&](std::uint16_t value) { return is_pair(value) && value >> 8 == value_high; };
        if (!is_known) {
            is_known =
                std::ranges::all_of(row, [&](std::uint16_t value) { return value == kNone || is_of_row(value); });
            if (!is_known) continue;
            for (unsigned low = 0; low < 0x100; ++low)
                pairs.low[low] = static_cast<std::uint8_t>(row[low]);
        }
        bool is_alike = true;
        for (unsigned low = 0; low < 0x100; ++low)
            is_alike = is_alike &&
                       (pairs.low[low] == simd::PairValues::kAskLow || row[low] == (value_high << 8 | pairs.low[low]));
        if (is_alike) pairs.high[high] = static_cast<std::uint8_t>(value_high);
    }
    for (unsigned unit = 0; unit < 0x100; ++unit) {
        pairs.single_high[unit] = static_cast<std::uint8_t>(map.values[unit] >> 8);
        pairs.single_low[unit] = static_cast<std::uint8_t>(map.values[unit]);
    }
}

} // namespace

constinit PageMapCache to_kx_cache{}, from_kx_cache{};
constinit MapCache<std::uint32_t, kPageMaps, ByteMap> lead_byte_cache{};

void fill_to_kx_map(simd::PairMap &map, const KxCodePage &page, bool double_byte_system) noexcept {
    // Without double-byte codes nothing lies above the bytes.
    map.values.fill(kNone);
    const unsigned codes = double_byte_system ? 0x10000 : 0x100;
    for (unsigned code = 0; code < codes; ++code)
        map.values[code] = to_kx(page, static_cast<std::uint16_t>(code), double_byte_system);
    find_pairs(map);
}

void fill_from_kx_map(simd::PairMap &map, const KxCodePage &page, bool double_byte_system) noexcept {
    // All other sets have nothing: those of ASCII, native bytes, line ends and currency signs are always there.
    std::array<bool, 0x100> sets{};
    sets[kAsciiSet] = sets[kNativeByteSet] = sets[set_of(KX_LINE_FEED)] = sets[0x04] = true;
    if (page.reverse_table != nullptr)
        for (unsigned i = 0; i < load_u16le(page.reverse_table); ++i)
            sets[page.reverse_table[2 + 3 * i + 1]] = true;
    for (unsigned set = kFirstDoubleByteSet; double_byte_system && set <= kLastDoubleByteSet; ++set)
        sets[set] = true;
    map.values.fill(kNone);
    for (unsigned ch = 0; ch < 0x10000; ++ch)
        if (sets[ch >> 8]) map.values[ch] = from_kx(page, static_cast<KxChar>(ch), double_byte_system);
    find_pairs(map);
}

const std::uint16_t *to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return to_kx_cache.find(
        to_kx_key(page, double_byte_system),
        [&] {
            const tables::CodePage entry = code_page_or_none(page.input_code_page);
            return entry.low() == page.low_table && entry.high() == page.high_table;
        },
        [&](simd::PairMap &map) { fill_to_kx_map(map, page, double_byte_system); });
}

const std::uint16_t *from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return from_kx_cache.find(
        from_kx_key(page, double_byte_system),
        [&] { return code_page_or_none(page.output_code_page).reverse() == page.reverse_table; },
        [&](simd::PairMap &map) { fill_from_kx_map(map, page, double_byte_system); });
}

const std::uint8_t *lead_byte_map(std::uint32_t ansi_code_page) noexcept {
    return lead_byte_cache.find(
        ansi_code_page, [] { return true; },
        [&](ByteMap &map) {
            for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
                if (platform::is_lead_byte_of(ansi_code_page, static_cast<std::uint8_t>(byte))) map.values[byte] = 0x80;
        });
}

} // namespace kxstr::codepage
