#include <algorithm>
#include <gtest/gtest.h>
#include <kxstr/prim.h>
#include <set>

#include "codepage/double_byte.h"
#include "tables/chinese.h"

namespace {

using kxstr::tables::kBig5ToGb;
using kxstr::tables::kGbToBig5;

TEST(Chinese, TablesHoldWhatIsKnownOfThem) {
    const auto filled = [](KxChar ch) { return ch != 0; };
    EXPECT_EQ(std::ranges::count_if(kBig5ToGb, filled), 7468);
    EXPECT_EQ(std::ranges::count_if(kGbToBig5, filled), 6906);
    for (const KxChar ch : kBig5ToGb) {
        if (ch == 0) continue;
        EXPECT_TRUE(ch >= 0x8200 && ch <= 0xA210) << ch;
        EXPECT_NE(kxstr::codepage::kx_to_double_byte(936, ch), kxstr::kNone) << ch;
    }
    for (const KxChar ch : kGbToBig5) {
        if (ch == 0) continue;
        EXPECT_TRUE(ch >= 0xA500 && ch <= 0xDBA4) << ch;
        EXPECT_NE(kxstr::codepage::kx_to_double_byte(950, ch), kxstr::kNone) << ch;
    }
    EXPECT_EQ(std::ranges::max(kBig5ToGb), 0xA210);
    EXPECT_EQ(std::ranges::max(kGbToBig5), 0xDBA4);
    EXPECT_EQ(kBig5ToGb[15], 0x8203);
    EXPECT_EQ(kBig5ToGb[16], 0x8203);
}

TEST(Chinese, CharactersAndTheEdgesOfTheSets) {
    const struct {
        const char *why;
        std::uint32_t ch;
        KxChar gb, big5;
    } cases[] = {
        {"ideographic space of Big5", 0xA500, 0x8200, 0xA500},
        {"ideographic space of GB", 0x8200, 0x8200, 0xA500},
        {"comma", 0xA501, 0x82C7, 0xA501},
        {"ideographic comma", 0xABCDA502, 0x8201, 0xA502},
        {"ideographic comma of GB", 0xABCD8201, 0x8201, 0xA502},
        {"middle dot", 0xA510, 0x8203, 0xA510},
        {"closing quotation mark", 0x8210, 0x8210, 0xA546},
        {"ASCII", 0x0041, 0x0041, 0x0041},
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
    int converted_to_big5 = 0, back_to_gb = 0, converted_to_gb = 0, back_to_big5 = 0, untouched = 0;
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch) {
        const KxChar gb = big5togb(ch), big5 = gbtobig5(ch);
        if (gb != ch || big5 != ch) {
            // Each direction knows one half of the range, and leads into the other.
            EXPECT_NE(gb == ch, big5 == ch);
            EXPECT_EQ(ch < 0xA500, big5 != ch) << ch;
        } else {
            ++untouched;
        }
        if ((ch & 0xFF) == 0xFF) continue; // no character
        converted_to_big5 += big5 != ch;
        back_to_gb += big5 != ch && big5togb(big5) == ch;
        converted_to_gb += gb != ch;
        back_to_big5 += gb != ch && gbtobig5(gb) == ch;
    }
    EXPECT_EQ(converted_to_big5, 6906);
    EXPECT_EQ(back_to_gb, 6749);
    EXPECT_EQ(converted_to_gb, 7468);
    EXPECT_EQ(back_to_big5, 6749);
    EXPECT_GT(untouched, 0x10000 - 6906 - 7468 - 256);
}

} // namespace
