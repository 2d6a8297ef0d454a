#include <kxstr/collate.h>
#include <kxstr/letters.h>

#include "collate/values.h"
#include "support/coltbl_state.h"
#include "support/test.h"

namespace {

using namespace kxstr::collate;
using kxstr::test::ColtblAtLoad;

std::uint16_t secondary(KxChar ch, std::uint16_t language) {
    return secondary_value(ch, primary_value(ch, rules_of(language)), rules_of(language));
}

TEST(Values, EastAsianLettersHaveNoCase) {
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch)
        ASSERT_EQ(f_wislower(ch), ch < 0x1000 && wtoupper(ch) != ch ? 0 : 1) << std::hex << ch;
}

TEST(Values, KnownOnes) {
    const auto rows = kxstr::reference::read_rows("../tests/collate/single_values.txt");
    EXPECT_EQ(rows.size(), 29u);
    for (const auto &row : rows) {
        const auto number = [&row](std::size_t at) {
            return static_cast<std::uint32_t>(std::stoul(row.at(at), nullptr, 16));
        };
        const auto value = row[0] == "primary" ? f_KX60ColVal(number(1), number(2))
                                               : secondary(kxstr::low16(number(1)), kxstr::low16(number(2)));
        EXPECT_EQ(value, number(3)) << row[0] << ' ' << row[1] << ' ' << row[2];
    }
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
