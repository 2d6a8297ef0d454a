#include <gtest/gtest.h>
#include <kxstr/frame.h>

#include "support/process_state.h"

namespace {

using kxstr::test::kJapanese;
using kxstr::test::kWestern;
using kxstr::test::runs_on;

TEST(Validity, EdgesOfTheSets) {
    const struct {
        const char *why;
        std::uint32_t ch;
        bool single, dbcs;
    } cases[] = {
        {"A", 0x0041, true, true},
        {"below the space", 0x001F, false, false},
        {"space", 0x0020, true, true},
        {"tilde", 0x007E, true, true},
        {"DEL", 0x007F, false, false},
        {"index FF counts as 0, below the space", 0x00FF, false, false},
        {"index FF counts as 0 of set 1", 0x01FF, true, true},
        {"last of set 1", 0x01F1, true, true},
        {"past the last of set 1", 0x01F2, false, false},
        {"set FF counts as set 0", 0xFF41, true, true},
        {"both count as 0", 0xFFFF, false, false},
        {"last of set 11", 0x0B3E, true, true},
        {"past set 11", 0x0BE0, false, false},
        {"last of set 14", 0x0EDB, true, true},
        {"set 15", 0x0F00, false, false},
        {"before the double-byte sets", 0x2300, false, false},
        {"first double-byte character", 0x2400, false, true},
        {"last double-byte character", 0xDFFF, false, true},
        {"after the double-byte sets", 0xE000, false, false},
        {"tab code", 0xF909, false, false},
        {"only the low half counts", 0xABCD0041, true, true},
    };
    for (const auto &c : cases) {
        if (runs_on(kWestern)) {
            EXPECT_EQ(ValidKxCharacter(c.ch), c.single ? 1u : 0u) << c.why;
        }
        if (runs_on(kJapanese)) {
            EXPECT_EQ(ValidKxCharacter(c.ch), c.dbcs ? 1u : 0u) << c.why;
        }
    }
}

TEST(Validity, CountsOverAllValues) {
    const auto count = [] {
        int valid = 0;
        for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch)
            valid += static_cast<int>(ValidKxCharacter(ch));
        return valid;
    };
    // The characters of the sets; index FF once more in every set that has an index 0; set FF like set 0.
    const int table_driven = 95 + 242 + 145 + 88 + 102 + 255 + 238 + 229 + 219 + 123 + 250 + 63 + 255 + 196 + 220;
    if (runs_on(kWestern)) {
        EXPECT_EQ(count(), table_driven + 14 + 95);
    }
    if (runs_on(kJapanese)) {
        EXPECT_EQ(count(), table_driven + 14 + 95 + 188 * 256);
    }
}

} // namespace
