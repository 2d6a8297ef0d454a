#include "reference/kx5_characters.h"

#include <gtest/gtest.h>
#include <kxstr/forms.h>

#include "support/process_state.h"

namespace {

using namespace kxstr;
using test::run_on;
using test::runs_on;

// The first character with the second in the upper half; what the count does not cover must be left alone.
std::uint32_t both(std::uint32_t ch) {
    constexpr KxChar untouched = 0x5555;
    KxChar first = untouched;
    KxChar second = untouched;
    const std::uint32_t count = WtpiKX5toKX6(ch, &first, &second);
    EXPECT_EQ(count, second == untouched ? 1u : 2u) << std::hex << ch;
    return count == 2 ? first | static_cast<std::uint32_t>(second) << 16 : first;
}

TEST(Kx5Characters, EveryCharacterGoesByTheRulesOfItsSet) {
    for (const test::System &system : {test::kWestern, test::kJapanese, test::kKorean}) {
        const bool japan = system.language == test::kJapanese.language;
        if (!runs_on(system)) continue;
        for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch) {
            ASSERT_EQ(WtpiKX6toKX5(ch), reference::kx6_to_kx5(ch, japan)) << std::hex << ch;
            ASSERT_EQ(both(ch | 0xABCD0000), reference::kx5_to_kx6(ch, japan)) << std::hex << ch;
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
        {"Greek above the last step", 0x08D8, 0x08C5},
        {"Hebrew: a pair and a step", 0x0934, 0x0975},
        {"Hebrew: the last step", 0x0974, 0x0970},
        {"Cyrillic: an even pair out of order", 0x0A44, 0x0A46},
        {"Arabic wraps round", 0x0D2A, 0x0DBD},
    };
    for (const auto &c : there_and_back) {
        EXPECT_EQ(WtpiKX6toKX5(c.kx6), c.kx5) << c.why;
        EXPECT_EQ(both(c.kx5), c.kx6) << c.why;
    }
    EXPECT_EQ(both(0x0B09), 0x0B3D0B08u);
    EXPECT_EQ(both(0x0B3E), 0x0B3E0B29u);
    EXPECT_EQ(both(0x0B53), 0x0028u);
}

} // namespace
