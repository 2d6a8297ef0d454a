#include <kxstr/forms.h>

#include "support/test.h"

namespace {

using namespace kxstr;
using namespace test;

// The first character with the second in the upper half; what the count does not cover must be left alone.
std::uint32_t both(std::uint32_t ch) {
    constexpr KxChar untouched = 0x5555;
    KxChar first = untouched;
    KxChar second = untouched;
    const std::uint32_t count = WtpiKX5toKX6(ch, &first, &second);
    EXPECT_EQ(count, second == untouched ? 1u : 2u) << std::hex << ch;
    return count == 2 ? first | static_cast<std::uint32_t>(second) << 16 : first;
}

// What becomes of the characters of a set: into KX 5 and back, and from KX 5 there and back.
struct SetSummary {
    unsigned set = 0;
    int changed_to_kx5 = 0, without_kx5 = 0, back_from_kx5 = 0;
    int changed_to_kx6 = 0, with_mark = 0, back_from_kx6 = 0;
    bool operator==(const SetSummary &) const = default;
};

SetSummary summary_of(unsigned set) {
    SetSummary found{.set = set};
    for (std::uint32_t ch = set << 8; ch >> 8 == set; ++ch) {
        const std::uint32_t kx5 = WtpiKX6toKX5(ch | 0xABCD0000);
        found.changed_to_kx5 += kx5 != ch;
        found.without_kx5 += kx5 == KX_NONE;
        found.back_from_kx5 += kx5 != KX_NONE && both(kx5) == ch;
        const std::uint32_t kx6 = both(ch | 0xABCD0000);
        found.changed_to_kx6 += kx6 != ch;
        found.with_mark += kx6 > 0xFFFF;
        found.back_from_kx6 += kx6 <= 0xFFFF && WtpiKX6toKX5(kx6) == ch;
    }
    return found;
}

TEST(Kx5Characters, EverySetAsTheGenerationsDiffer) {
    const SetSummary differing[] = {
        {1, 23, 22, 234, 1, 0, 233},     {2, 41, 14, 242, 28, 0, 243},   {5, 16, 7, 249, 9, 0, 249},
        {8, 204, 0, 210, 158, 0, 210},   {9, 200, 0, 252, 204, 0, 252},  {10, 128, 44, 212, 84, 0, 212},
        {11, 256, 193, 62, 185, 52, 62}, {13, 159, 0, 239, 157, 0, 239},
    };
    for (const test::System &system : {test::kWestern, test::kJapanese, test::kKorean}) {
        if (!runs_on(system)) continue;
        for (unsigned set = 0; set <= 0xFE; ++set) { // the last set holds KX_NONE
            SetSummary wanted{set, 0, 0, 256, 0, 0, 256};
            const bool same_katakana = set == 11 && system.language == test::kJapanese.language;
            for (const SetSummary &row : differing)
                if (row.set == set && !same_katakana) wanted = row;
            EXPECT_TRUE(summary_of(set) == wanted) << set << " on " << system.ansi;
        }
    }
}

TEST(Kx5Characters, TellingCharacters) {
    run_on(test::kWestern);
    const struct {
        const char *why;
        std::uint32_t kx6, kx5;
    } there_and_back[] = {
        {"a letter that moved to another set", 0x0118, 0x0208},
        {"the first of a direct table", 0x0200, 0x021A},
        {"a pair", 0x05AA, 0x0500},
        {"a later pair of them", 0x0533, 0x0517},
        {"Greek above the last step", 0x08D8, 0x08C5},
        {"Hebrew: a pair and a step", 0x0934, 0x0975},
        {"Hebrew: the last step", 0x0974, 0x0970},
        {"Cyrillic: an even pair out of order", 0x0A44, 0x0A46},
        {"Cyrillic: a step", 0x0AA8, 0x0A74},
        {"katakana", 0x0B07, 0x0B65},
        {"Arabic wraps round", 0x0D2A, 0x0DBD},
    };
    for (const auto &c : there_and_back) {
        EXPECT_EQ(WtpiKX6toKX5(c.kx6), c.kx5) << c.why;
        EXPECT_EQ(both(c.kx5), c.kx6) << c.why;
    }
    for (std::uint32_t katakana = 0x0B00; katakana <= 0x0B52; ++katakana)
        EXPECT_EQ(both(katakana), both(katakana + 100)) << "KX 5 has them twice; " << std::hex << katakana;
    EXPECT_EQ(both(0x0B09), 0x0B3D0B08u);
    EXPECT_EQ(both(0x0B3E), 0x0B3E0B29u);
    EXPECT_EQ(both(0x0B53), 0x0028u);
}

} // namespace
