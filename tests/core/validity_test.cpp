#include <kxstr/core.h>

#include "support/test.h"

namespace {

using namespace kxstr::test;

TEST(Validity, EdgesOfTheSets) {
    const struct {
        const char *why;
        std::uint32_t ch;
        bool single, dbcs;
    } cases[] = {
        {"below the space", 0x001F, false, false},
        {"space", 0x0020, true, true},
        {"DEL", 0x007F, false, false},
        {"index FF counts as 0, below the space", 0x00FF, false, false},
        {"index FF counts as 0 of set 1", 0x01FF, true, true},
        {"last of set 1", 0x01F1, true, true},
        {"past the last of set 1", 0x01F2, false, false},
        {"set FF counts as set 0", 0xFF41, true, true},
        {"both count as 0", 0xFFFF, false, false},
        {"past set 11", 0x0BE0, false, false},
        {"last of set 14", 0x0EDB, true, true},
        {"before the double-byte sets", 0x2300, false, false},
        {"first double-byte character", 0x2400, false, true},
        {"last double-byte character", 0xDFFF, false, true},
        {"after the double-byte sets", 0xE000, false, false},
        {"tab code", 0xF909, false, false},
        {"only the low half counts", 0xABCD0041, true, true},
    };
    for (const bool double_byte : {false, true}) {
        if (!runs_on(double_byte ? kJapanese : kWestern)) continue;
        for (const auto &c : cases)
            EXPECT_EQ(ValidKxCharacter(c.ch) != 0, double_byte ? c.dbcs : c.single) << c.why;
        // The characters of the sets; index FF once more in every set that has an index 0; set FF like set 0.
        int valid = 95 + 242 + 145 + 88 + 102 + 255 + 238 + 229 + 219 + 123 + 250 + 63 + 255 + 196 + 220 + 14 + 95;
        if (double_byte) valid += 188 * 256;
        for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch)
            valid -= static_cast<int>(ValidKxCharacter(ch));
        EXPECT_EQ(valid, 0) << "as many as there are";
    }
}

} // namespace
