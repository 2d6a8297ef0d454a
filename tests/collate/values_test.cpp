#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <kxstr/letters.h>

#include "collate/values.h"
#include "support/coltbl_state.h"
#include "support/process_state.h"

namespace {

using kxstr::collate::primary_value;
using kxstr::collate::rules_of;
using kxstr::collate::secondary_value;
using kxstr::test::ColtblAtLoad;

std::uint16_t secondary(KxChar ch, std::uint16_t language) {
    return secondary_value(ch, primary_value(ch, rules_of(language)), rules_of(language));
}

TEST(Values, EastAsianLettersHaveNoCase) {
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch)
        ASSERT_EQ(f_wislower(ch), ch < 0x1000 && wtoupper(ch) != ch ? 0 : 1) << std::hex << ch;
}

TEST(Values, PrimaryOfWhatNoSequenceHolds) {
    const struct {
        const char *why;
        std::uint32_t ch, language, value;
    } cases[] = {
        {"Cyrillic in Arabic", 0x0A00, 2, 0xFF},
        {"tab", 0xF909, 0, 0},
        {"tab in Japanese", 0xF909, 34, 0},
        {"the end of a sequence is no set", 0xFF41, 0, 0xFF},
        {"only the low half counts", 0xABCD0041, 0xABCD0000, 0x80},
        {"numbers without a language have the default values", 0x0124, 40, 0x81},
    };
    for (const auto &c : cases)
        EXPECT_EQ(f_KX60ColVal(c.ch, c.language), c.value) << c.why;
}

TEST(Values, SecondLevel) {
    const struct {
        const char *why;
        KxChar ch;
        std::uint16_t language, value;
    } cases[] = {
        {"set 0", 'a', 0, 0},
        {"diaeresis", 0x011E, 0, 6},
        {"diaeresis, late in Swedish", 0x011E, 30, 9},
        {"no composite: the code of the uppercase", 0x0125, 0, 0x0124},
        {"sharp s has no case", 0x0117, 0, 0x0117},
        {"Greek beta variant", 0x0804, 0, 0x0804},
        {"Greek final sigma", 0x0826, 0, 0x0826},
        {"Greek last plain letter", 0x0833, 0, 0},
        {"first Greek accented letter", 0x0835, 0, 0x0834},
        {"Hebrew letter with point", 0x0954, 19, 0x0954},
        {"Cyrillic accented letter", 0x0A9F, 0, 0x0A9E},
        {"plain alef ranks behind the carriers of hamza", 0x0D3A, 2, 7},
        {"alef with hamza below", 0x0DA7, 2, 3},
        {"teh", 0x0D40, 2, 8},
        {"lam with alef", 0x0DB5, 2, 0x0DB5},
        {"first letter apart", 0x0E40, 2, 0x0E40},
        {"last of set 14", 0x0EDB, 2, 0x0EDB},
        {"not apart within the last bits", 0x0ED5, 2, 0},
        {"ignorable", 0x0930, 19, 0x8930},
        {"ignorable tatweel", 0x0DC2, 2, 0},
        {"its other form", 0x0DC3, 2, 0},
        {"no value: its code", 0x0200, 0, 0x0200},
        {"no value, lowercase: the code of the uppercase", 0x0A43, 0, 0x0A42},
    };
    for (const auto &c : cases)
        EXPECT_EQ(secondary(c.ch, c.language), c.value) << c.why;
}

TEST(Values, DefaultSequenceWithoutLanguage) {
    EXPECT_EQ(KxCh6Cmpcoll('A', 'a'), 4);
    EXPECT_EQ(KxCh6Cmpcoll('A', 'B'), 8);
    EXPECT_EQ(KxCh6Cmpcoll(0x0200, 0x0201), 8);
    EXPECT_EQ(KxCh6Cmpcoll(0x0200, 0x0200), 4);
    EXPECT_EQ(KxCh6Cmpcoll(0x0200, 'z'), 2);
    EXPECT_EQ(KxCh6Cmpcoll(0x0A00, 0x0200), 8) << "no value sorts last, whatever the codes";
    EXPECT_EQ(KxCh6Getcoll(0xF909), 0xFF); // no rule for the tab here
    EXPECT_EQ(KxCh6Getcoll(0x0900), 0xFF);
}

TEST(Values, KnownCharacters) {
    const std::uint32_t counts[] = {95, 242, 145, 88, 102, 255, 238, 229, 219, 123, 250, 63, 255, 196, 220};
    for (std::uint32_t set = 0; set < 256; ++set) {
        std::uint32_t known = 0;
        for (std::uint32_t index = 0; index < 256; ++index)
            known += KxCh6Iskxc(set << 8 | index);
        EXPECT_EQ(known, set < 15 ? counts[set] : set >= 36 && set <= 223 ? 255u : 0u) << set;
    }
    for (const std::uint32_t ch : {0x0020u, 0x0C00u, 0x0CFFu, 0x01F1u})
        EXPECT_EQ(KxCh6Iskxc(ch), 1u) << std::hex << ch;
    for (const std::uint32_t ch : {0x001Fu, 0x0C1Fu, 0x24FFu, 0x01F2u})
        EXPECT_EQ(KxCh6Iskxc(ch), 0u) << std::hex << ch;
}

TEST(Values, CharactersByColtbl) {
    const ColtblAtLoad at_load;
    const struct {
        const char *why;
        std::uint32_t a, b;
        std::uint8_t case_flag;
        int result;
    } cases[] = {
        {"case", 'a', 'A', 1, -1},
        {"case ignored", 'a', 'A', 0, 0},
        {"difference of the values", 'A', 'B', 0, -3},
        {"same value, same case", 'a', 0x011B, 1, 0},
        {"same value, other case", 'A', 0x011B, 1, 1},
        {"no value: difference of the codes", 0x0201, 0x0200, 0, 1},
        {"no value in its block, lowercase codes", 0x0A42, 0x0A49, 1, 0x0A43 - 0x0A49},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(xchcmp(c.a, c.b, c.case_flag), c.result) << c.why;
        EXPECT_EQ(xchcmp(c.b, c.a, c.case_flag), -c.result) << c.why;
    }
    std::uint8_t *out = nullptr;
    EXPECT_EQ(fndcolv(0x0421, &out), 1u);        // one past the block of its set
    const std::uint8_t *block = coltbl[2].block; // a copy: the field itself lies at an odd address
    EXPECT_EQ(out, block);
    EXPECT_EQ(fndcolv(0x0200, &out), 1u); // no entry
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(fndcolv(0xFF20, &out), 1u); // the end mark is no set
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(fndcolv(0xABCD0041, &out), 0u);
    *out = 0x77;
    EXPECT_EQ(xch2col('A'), 0x77);
}

} // namespace
