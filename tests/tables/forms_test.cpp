#include "tables/forms.h"

#include <gtest/gtest.h>

#include "codepage/double_byte.h"
#include "frame/kx_char.h"
#include "tables/form_layouts.h"

namespace {

using kxstr::set_of;
using kxstr::tables::FormRow;
using kxstr::test::FormLayout;
using kxstr::test::kFormLayouts;

constexpr FormRow kSeparator{0xFFFF, 0xFFFF};

class FormTables : public testing::TestWithParam<std::size_t> {
  protected:
    const FormLayout &layout = kFormLayouts[GetParam()];
    std::span<const FormRow> rows = kxstr::tables::kFormTables[GetParam()].rows;
    std::span<const FormRow> group(std::size_t number) const {
        const std::size_t first = number == 0 ? 0 : layout.separators[number - 1] + 1;
        return rows.subspan(first, layout.separators[number] - first);
    }
};

KxChar stepped(KxChar first, unsigned step, unsigned k) {
    return first == 0 ? KxChar{0} : static_cast<KxChar>(first + step * k);
}

TEST_P(FormTables, SeparatorsEndTheFourGroups) {
    std::vector<std::size_t> separators;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row] == kSeparator)
            separators.push_back(row);
        else
            EXPECT_TRUE(rows[row][0] < 0x0C00 && (rows[row][1] == 0 || rows[row][1] >= 0x2400)) << row;
    }
    EXPECT_EQ(separators, layout.separators);
    EXPECT_EQ(rows.size(), layout.separators.back() + 1);
}

TEST_P(FormTables, CaseCouples) {
    std::vector<FormRow> wanted;
    for (const auto &run : layout.case_runs) {
        ASSERT_EQ(wanted.size(), run.row);
        for (unsigned k = 0; k < run.couples; ++k) {
            wanted.push_back({stepped(run.single_upper, run.single_step, k), //
                              stepped(run.double_upper, run.double_step, k)});
            wanted.push_back({stepped(run.single_lower, run.single_step, k), //
                              stepped(run.double_lower, run.double_step, k)});
        }
    }
    EXPECT_EQ(std::vector(group(0).begin(), group(0).end()), wanted);
}

TEST_P(FormTables, KanaCouples) {
    std::vector<FormRow> wanted;
    for (unsigned j = 0; j < 83 && layout.hiragana != 0; ++j) {
        const KxChar single = j == 63 ? layout.single_width_63 : kxstr::test::kHalfWidthKatakana[j];
        const FormRow hiragana{0, static_cast<KxChar>(layout.hiragana + j)};
        const FormRow katakana{single, static_cast<KxChar>(layout.katakana + j)};
        wanted.push_back(layout.hiragana_first ? hiragana : katakana);
        wanted.push_back(layout.hiragana_first ? katakana : hiragana);
    }
    EXPECT_EQ(std::vector(group(2).begin(), group(2).end()), wanted);
}

TEST_P(FormTables, WidthRows) {
    constexpr std::uint32_t kCodePages[] = {932, 949, 950, 936};
    std::vector<std::pair<KxChar, KxChar>> set_0, set_11;
    std::size_t others = 0;
    KxChar last = 0;
    for (const auto &[single, wide] : group(3)) {
        EXPECT_GE(single, last);
        last = single;
        EXPECT_NE(kxstr::codepage::kx_to_double_byte(kCodePages[GetParam()], wide), kxstr::kNone) << wide;
        if (set_of(single) == 0) {
            set_0.emplace_back(single, wide);
        } else if (set_of(single) == 11) {
            set_11.emplace_back(single, wide);
        } else {
            ++others;
            EXPECT_LE(set_of(single), 6);
            EXPECT_TRUE(set_of(single) != 2 || GetParam() < 2) << single;
        }
    }
    EXPECT_EQ(set_0, layout.set_0);
    EXPECT_EQ(others, layout.sets_1_to_6);
    EXPECT_EQ(set_11, layout.set_11);
}

INSTANTIATE_TEST_SUITE_P(Countries, FormTables, testing::Range(std::size_t{0}, std::size_t{4}),
                         testing::PrintToStringParamName());

} // namespace
