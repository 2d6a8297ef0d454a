#include "tables/letter_forms.h"

#include "codepage/double_byte.h"
#include "core/kx_char.h"
#include "support/test.h"

namespace {

using kxstr::set_of;
using kxstr::tables::kLetterFormTables;
using kxstr::tables::LetterFormRow;

constexpr LetterFormRow kSeparator{0xFFFF, 0xFFFF};

TEST(FormTables, HoldTheRowsThatTheDocumentFormatFixes) {
    const auto fixed = kxstr::reference::read_rows("../tests/tables/form_rows.txt");
    EXPECT_EQ(fixed.size(), 353u);
    for (const auto &fields : fixed) {
        const auto number = [&](std::size_t column, int base, unsigned otherwise = 0) {
            return column < fields.size() ? static_cast<unsigned>(std::stoul(fields[column], nullptr, base))
                                          : otherwise;
        };
        for (unsigned k = 0; k < number(4, 10, 1); ++k) {
            const unsigned row = number(1, 10) + k * number(5, 10);
            const LetterFormRow wanted{static_cast<KxChar>(number(2, 16) + k * number(6, 10)),
                                       static_cast<KxChar>(number(3, 16) + k * number(7, 10))};
            EXPECT_EQ(kLetterFormTables.at(number(0, 10) - 1).rows[row], wanted) << fields[0] << ' ' << row;
        }
    }
}

TEST(FormTables, FourGroupsOfWhichTheLastAscends) {
    constexpr std::uint32_t code_pages[] = {932, 949, 950, 936};
    for (std::size_t country = 0; country < kLetterFormTables.size(); ++country) {
        std::size_t group = 0;
        KxChar last = 0;
        for (const LetterFormRow &row : kLetterFormTables[country].rows) {
            if (row == kSeparator) {
                ++group;
                continue;
            }
            const auto [single, wide] = row;
            ASSERT_TRUE(group == 0 || group == 2 || group == 3) << single;
            EXPECT_TRUE(single < 0x0C00 && (wide == 0 || wide >= 0x2400)) << single;
            if (group < 3) continue;
            EXPECT_GE(single, last);
            last = single;
            EXPECT_NE(kxstr::codepage::kx_to_double_byte(code_pages[country], wide), kxstr::kNone) << wide;
            EXPECT_TRUE(set_of(single) <= 6 || set_of(single) == 11) << single;
            EXPECT_TRUE(set_of(single) != 2 || country < 2) << single;
        }
        EXPECT_EQ(group, 4u);
        EXPECT_EQ(kLetterFormTables[country].rows.back(), kSeparator);
    }
}

} // namespace
