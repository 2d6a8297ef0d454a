#include "codepage/page_maps.h"

#include <memory>

#include "codepage/convert.h"
#include "codepage/descriptor.h"
#include "support/test.h"

namespace {

using namespace kxstr::codepage;

// A process has maps for a few descriptors only: this fills those of all.
TEST(PageMaps, HoldWhatSingleCharactersConvertTo) {
    std::vector<std::uint32_t> numbers{934, 936, 938, 949, 950, 12345};
    for (const auto &entry : kxstr::tables::kCodePages)
        numbers.push_back(entry.kx_number);
    const auto map = std::make_unique<kxstr::simd::PairMap>();
    for (const std::uint32_t number : numbers) {
        for (const bool double_byte : {false, true}) {
            SCOPED_TRACE(testing::Message() << number << ' ' << double_byte);
            KxCodePage page{};
            set_code_page(page, number, kBothDirections);
            fill_to_kx_map(*map, page, double_byte);
            for (unsigned code = 0; code <= 0xFFFF; ++code)
                ASSERT_EQ(map->values[code], to_kx(page, static_cast<std::uint16_t>(code), double_byte)) << code;
            fill_from_kx_map(*map, page, double_byte);
            for (unsigned ch = 0; ch <= 0xFFFF; ++ch)
                ASSERT_EQ(map->values[ch], from_kx(page, static_cast<KxChar>(ch), double_byte)) << ch;
        }
    }
}

// All pairs but those of the user-defined rows are told by their bytes, and what the bytes tell is right.
TEST(PageMaps, PairsOfJapanese) {
    const auto map = std::make_unique<kxstr::simd::PairMap>();
    KxCodePage page{};
    set_code_page(page, 932, kBothDirections);
    for (const auto fill : {fill_to_kx_map, fill_from_kx_map}) {
        fill(*map, page, true);
        const auto &[high, low, single_high, single_low] = map->pairs;
        unsigned told = 0;
        for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
            if (high[unit >> 8] == 0 || low[unit & 0xFF] == 0xFF) continue;
            ASSERT_EQ(map->values[unit], high[unit >> 8] << 8 | low[unit & 0xFF]) << unit;
            ++told;
        }
        EXPECT_EQ(told, 47 * 188U);
        for (unsigned unit = 0; unit <= 0xFF; ++unit)
            ASSERT_EQ(map->values[unit], single_high[unit] << 8 | single_low[unit]) << unit;
    }
}

TEST(PageMaps, TablesOfTheCallersOwnHaveNone) {
    const std::vector<std::uint8_t> high{0xFF, 0xFF, 0x34, 0x12}, reverse{1, 0, 0x34, 0x12, 0xFF};
    const KxCodePage page{1252, 1252, nullptr, high.data(), reverse.data()};
    EXPECT_EQ(to_kx_map(page, false), nullptr);
    EXPECT_EQ(from_kx_map(page, false), nullptr);
}

} // namespace
