#include <array>
#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <span>

#include "support/process_state.h"

namespace {

using kxstr::test::kJapanese;
using kxstr::test::kTraditionalChinese;
using kxstr::test::kWestern;
using kxstr::test::run_on;
using kxstr::test::runs_on;
using kxstr::test::System;

// Primary and secondary value, flags, result.
using Values = std::array<unsigned, 4>;

Values values_of(std::uint32_t ch, std::uint32_t next = 0, std::uint32_t previous = 0, std::uint32_t case_off = 0) {
    std::uint16_t primary = 0;
    std::uint16_t secondary = 0;
    std::uint8_t flags = 0;
    const auto result = AsiaGetColValues(ch, next, previous, &primary, &secondary, &flags, case_off);
    return {primary, secondary, flags, result};
}

struct Case {
    const char *why;
    KxChar ch, next, previous;
    Values values;
};

void expect_all(const System &system, std::span<const Case> cases) {
    if (!runs_on(system)) return;
    for (const Case &c : cases)
        EXPECT_EQ(values_of(c.ch, c.next, c.previous), c.values) << c.why;
}

TEST(EastAsian, KanaAndTheirMarks) {
    const Case cases[] = {
        {"hiragana a", 0x255F, 0, 0, {0x100, 1, 0, 1}},
        {"katakana ga", 0x260B, 0, 0, {0x105, 3, 1, 1}},
        {"hiragana pa", 0x258E, 0, 0, {0x119, 5, 0, 1}},
        {"last position", 0x2655, 0, 0, {0x108, 0, 1, 1}},
        {"behind the hiragana", 0x25B6, 0, 0, {0xFFFF, 0x25B6, 0, 0}},
        {"iteration mark", 0x2412, 0, 0x105, {0x105, 1, 0, 1}},
        {"voiced iteration mark", 0x2415, 0, 0x105, {0x105, 3, 0, 1}},
        {"iteration mark after an ideograph", 0x2413, 0, 0x0200, {0xFFFF, 0x2413, 0, 0}},
        {"iteration mark after the last of the kana values", 0x2414, 0, 0x1FF, {0x1FF, 1, 0, 1}},
        {"prolonged sound of ka", 0x241B, 0, 0x105, {0x100, 1, 0, 1}},
        {"prolonged sound of the last value", 0x241B, 0, 0x13F, {0x100, 1, 0, 1}},
        {"prolonged sound of nothing", 0x241B, 0, 0, {0xFFFF, 0x241B, 0, 0}},
        {"ditto of anything", 0x2418, 0, 0x4321, {0x4321, 0, 0, 1}},
        {"ditto of a character without value", 0x2418, 0, 0xFFFF, {0xFFFF, 0, 0, 1}},
    };
    expect_all(kJapanese, cases);
}

TEST(EastAsian, HalfWidthKatakana) {
    const Case cases[] = {
        {"ka", 0x0B15, 0, 0, {0x105, 1, 3, 1}},
        {"ka with the voicing mark is ga", 0x0B15, 0x0B3D, 0, {0x105, 3, 3, 2}},
        {"ha with the half-voicing mark is pa", 0x0B29, 0x0B3E, 0, {0x119, 5, 3, 2}},
        {"ka has no half-voiced form", 0x0B15, 0x0B3E, 0, {0x105, 1, 3, 1}},
        {"a mark of its own", 0x0B3D, 0, 0, {0x140, 0, 2, 1}},
        {"the prolonged sound", 0x0B0F, 0, 0x105, {0x100, 1, 2, 1}},
        {"combined bits without a mark behind", 0x0B55, 0x0B15, 0, {0x105, 1, 3, 1}},
    };
    expect_all(kJapanese, cases);
    // Without a table of forms there is no double-width form to take the values from.
    const Case elsewhere[] = {{"ka", 0x0B15, 0x0B3D, 0, {0xFFFF, 0x0B15, 3, 0}}};
    expect_all(kWestern, elsewhere);
}

TEST(EastAsian, WidthSymbolsAndIdeographs) {
    const Case cases[] = {
        {"double-width A", 0x2520, 0, 0, {0x80, 0, 3, 1}},
        {"double-width a", 0x2540, 0, 0, {0x80, 0, 2, 1}},
        {"double-width Greek alpha", 0x265E, 0, 0, {0x5D, 0, 3, 1}},
        {"ideographic full stop", 0x2402, 0, 0, {0x21, 2, 0, 1}},
        {"last symbol", 0x243A, 0, 0, {0x31, 17, 0, 1}},
        {"a symbol without a rule", 0x24F0, 0, 0, {0xFFFF, 0x24F0, 0, 0}},
        {"first ideograph", 0x2B00, 0x0B3D, 5, {0x0200, 0, 0, 1}},
        {"tab", 0xF909, 0, 0, {0, 0, 0, 1}},
        {"a with acute", 0x011B, 0, 0, {0x80, 1, 0, 1}},
        {"Greek accented letter", 0x0835, 0, 0, {0x5D, 0x0834, 0, 1}},
        {"symbol of set 4", 0x040B, 0, 0, {0x36, 0, 1, 1}},
        {"no value", 0x0200, 0, 0, {0xFFFF, 0x0200, 1, 0}},
        {"no value, lowercase", 0x0A43, 0, 0, {0xFFFF, 0x0A42, 0, 0}},
    };
    expect_all(kJapanese, cases);
    // Without the form tables double-width letters are symbols like others, told by their index.
    const Case elsewhere[] = {{"double-width A", 0x2520, 0, 0, {0xFFFF, 0x2520, 0, 0}}};
    expect_all(kWestern, elsewhere);
    // In Chinese text the kana lie above the first ideograph, and half-width ones lead there.
    const Case chinese[] = {{"hiragana", 0xBC4D, 0, 0, {0xBC4D - 0x2900, 0, 0, 1}},
                            {"half-width katakana", 0x0B06, 0, 0, {0xFFFF, 0xBCA0, 2, 0}}};
    expect_all(kTraditionalChinese, chinese);
}

TEST(EastAsian, CaseOffMarksEveryLetter) {
    run_on(kJapanese);
    EXPECT_EQ(values_of('a', 0, 0, 1)[2], 1u);
    EXPECT_EQ(values_of('a', 0, 0, 0x10000)[2], 0u) << "only the low half counts";
    EXPECT_EQ(values_of(0x2540, 0, 0, 1)[2], 3u);
    EXPECT_EQ(values_of(0x255F, 0, 0, 1)[2], 0u) << "kana have no case";
}

} // namespace
