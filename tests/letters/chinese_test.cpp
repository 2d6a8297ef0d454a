#include <gtest/gtest.h>
#include <kxstr/letters.h>

#include "codepage/double_byte.h"

namespace {

TEST(Chinese, CharactersAndTheEdgesOfTheSets) {
    const struct {
        const char *why;
        std::uint32_t ch;
        KxChar gb, big5;
    } cases[] = {
        {"ideographic space of Big5", 0xA500, 0x8200, 0xA500},
        {"ideographic comma of GB", 0xABCD8201, 0x8201, 0xA502},
        {"middle dot", 0xA510, 0x8203, 0xA510},
        {"before the GB sets", 0x81FF, 0x81FF, 0x81FF},
        {"after the GB characters", 0xA211, 0xA211, 0xA211},
        {"before the Big5 sets", 0xA4FF, 0xA4FF, 0xA4FF},
        {"after the Big5 characters", 0xDBA9, 0xDBA9, 0xDBA9},
        {"without a counterpart", 0x8206, 0x8206, 0x8206},
        {"index FF is the next set's index 0", 0xA6FF, 0x9258, 0xA6FF},
        {"index FF of GB", 0x82FF, 0x82FF, 0xA628},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(big5togb(c.ch), c.gb) << c.why;
        EXPECT_EQ(gbtobig5(c.ch), c.big5) << c.why;
    }
}

TEST(Chinese, ThereAndBackOverAllCharacters) {
    int to_big5 = 0, back_to_gb = 0, to_gb = 0, back_to_big5 = 0;
    KxChar last_gb = 0, last_big5 = 0;
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch) {
        if ((ch & 0xFF) == 0xFF) continue; // no character
        const KxChar gb = big5togb(ch), big5 = gbtobig5(ch);
        if (gb != ch) {
            ++to_gb;
            back_to_big5 += gbtobig5(gb) == ch;
            last_gb = std::max(last_gb, gb);
            EXPECT_TRUE(ch >= 0xA500 && gb >= 0x8200) << ch;
            EXPECT_NE(kxstr::codepage::kx_to_double_byte(936, gb), kxstr::kNone) << ch;
        }
        if (big5 != ch) {
            ++to_big5;
            back_to_gb += big5togb(big5) == ch;
            last_big5 = std::max(last_big5, big5);
            EXPECT_TRUE(ch >= 0x8200 && ch < 0xA500 && big5 >= 0xA500) << ch;
            EXPECT_NE(kxstr::codepage::kx_to_double_byte(950, big5), kxstr::kNone) << ch;
        }
    }
    EXPECT_EQ(to_gb, 7468);
    EXPECT_EQ(back_to_big5, 6749);
    EXPECT_EQ(last_gb, 0xA210);
    EXPECT_EQ(to_big5, 6906);
    EXPECT_EQ(back_to_gb, 6749);
    EXPECT_EQ(last_big5, 0xDBA4);
}

} // namespace
