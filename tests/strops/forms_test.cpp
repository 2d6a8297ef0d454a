// Case, width and kana of every 16-bit value in every country: against the plain reference, by what must hold whatever
// the tables say, and by single characters.
#include <gtest/gtest.h>
#include <kxstr/strops.h>

#include "reference/forms.h"
#include "strops/form_tables.h"
#include "support/countries.h"

namespace {

using kxstr::set_of;
using kxstr::test::kCountries;
using kxstr::test::run_on;
using kxstr::test::runs_on;

constexpr KxChar kVoicing = 0x0B3D;
constexpr KxChar kHalfVoicing = 0x0B3E;

// The half-width katakana and mark that a combined code stands for.
std::pair<KxChar, KxChar> taken_apart(KxChar ch) {
    if (set_of(ch) != 11) return {ch, 0};
    const KxChar mark = (ch & 0x40) != 0 ? kVoicing : (ch & 0x80) != 0 ? kHalfVoicing : KxChar{0};
    return {static_cast<KxChar>(ch & 0xFF3F), mark};
}

class Forms : public testing::TestWithParam<int> {
  protected:
    void SetUp() override { run_on(kCountries[static_cast<std::size_t>(GetParam())]); }

    template <class Check> static void for_all_characters(Check check) {
        for (std::uint32_t ch = 0; ch <= 0xFFFF && !HasFailure(); ++ch) {
            SCOPED_TRACE(ch);
            check(static_cast<KxChar>(ch));
        }
    }
};

TEST_P(Forms, SearchAndFunctionsFollowThePlainReference) {
    const kxstr::reference::Forms reference(GetParam());
    for_all_characters([&](KxChar ch) {
        const auto found = kxstr::strops::find_form(ch);
        const auto row = reference.search(ch);
        ASSERT_EQ(found.has_value(), row.has_value());
        EXPECT_TRUE(!found || (found->row == row->row && found->column == row->column &&
                               static_cast<unsigned>(found->group) == row->group));
        for (std::uint16_t mode = 0; mode <= 7; ++mode)
            EXPECT_EQ(wtoall(mode, ch), reference.all(mode, ch)) << mode;
        EXPECT_EQ(wtoall(0x0103, ch), ch) << "the whole mode counts";
        EXPECT_EQ(wtolower(ch), reference.lower(ch));
        EXPECT_EQ(wtoupper(ch), reference.upper(ch));
        EXPECT_EQ(wtohiragana(ch), reference.hiragana(ch));
        EXPECT_EQ(wtokatakana(ch), reference.all(6, ch));
        EXPECT_EQ(wisupper(ch), reference.is_upper(ch) ? 1u : 0u);
        EXPECT_EQ(wtodouble(ch, nullptr), reference.all(3, ch));
        EXPECT_EQ(wtosingle(ch, nullptr), reference.all(4, ch));

        KxChar mark = 0x1234;
        const auto [single, wanted_mark] = taken_apart(reference.all(4, ch));
        EXPECT_EQ(wtosingle(ch, &mark), single);
        EXPECT_EQ(mark, wanted_mark);

        for (const KxChar following : {kVoicing, kHalfVoicing, KxChar{0x0B3C}, KxChar{0}}) {
            const int bit = following == kVoicing ? 0x40 : following == kHalfVoicing ? 0x80 : 0;
            const bool combines = bit != 0 && set_of(ch) == 11;
            const auto combined = static_cast<KxChar>(ch | (combines ? bit : 0));
            const bool is_one = combines && reference.all(3, combined) != combined;
            KxChar next = following;
            EXPECT_EQ(wtodouble(ch, &next), reference.all(3, combines && !is_one ? combined & 0xFF3F : combined));
            EXPECT_EQ(next, is_one ? 0 : following);
        }
    });
}

TEST_P(Forms, CaseKeepsWidthAndSettles) {
    const auto is_double = [](KxChar ch) { return set_of(ch) >= 36; };
    for_all_characters([&](KxChar ch) {
        const KxChar lower = wtolower(ch), upper = wtoupper(ch);
        EXPECT_EQ(is_double(lower), is_double(ch));
        EXPECT_EQ(is_double(upper), is_double(ch));
        EXPECT_EQ(wtolower(lower), lower);
        EXPECT_TRUE(lower == ch || upper == ch) << "a letter is small or capital";
        EXPECT_EQ(wtoupper(wtolower(upper)), upper);
        EXPECT_TRUE((lower == ch && upper == ch) || (ch != 0 && ch < 0xF900)) << "codes have no case";
    });
}

TEST_P(Forms, WidthComesBack) {
    std::size_t pairs = 0;
    for_all_characters([&](KxChar ch) {
        const auto form = kxstr::strops::find_form(ch);
        if (!form || ch == 0 || ch == 0xFFFF) return;
        // From the first row of both of its characters there and back leads to where it started.
        const KxChar single = form->in_column(0), wide = form->in_column(1);
        if (single == 0 || wide == 0) return;
        const bool first_of_single = kxstr::strops::find_form(single)->row == form->row;
        const bool first_of_wide = kxstr::strops::find_form(wide)->row == form->row;
        if (!first_of_single || !first_of_wide) return;
        EXPECT_EQ(wtoall(KX_FORM_SINGLE, wide), single);
        EXPECT_EQ(wtoall(KX_FORM_DOUBLE, single), wide);
        ++pairs;
        // A katakana with its mark: apart and together again.
        KxChar mark = 0;
        const KxChar base = wtosingle(wide, &mark);
        EXPECT_TRUE(set_of(base) != 11 || (base & 0xC0) == 0);
        EXPECT_EQ(wtodouble(base, &mark), wide);
        EXPECT_EQ(mark, 0);
    });
    EXPECT_EQ(pairs != 0, GetParam() != 0);
}

INSTANTIATE_TEST_SUITE_P(Countries, Forms, testing::Range(0, 5), testing::PrintToStringParamName());

TEST(Form, SingleCharacters) {
    const struct {
        const char *why;
        int country;
        std::uint16_t mode;
        KxChar ch, wanted;
    } cases[] = {
        {"narrow", 1, KX_FORM_SINGLE, 0x2520, 0x0041},
        {"katakana to hiragana", 1, KX_FORM_FIRST_KANA, 0x2600, 0x255E},
        {"hiragana to katakana", 1, KX_FORM_SECOND_KANA, 0x255E, 0x2600},
        {"combined code", 1, KX_FORM_SINGLE, 0x260D, 0x0B56},
        {"first of the rows without a single-width form", 1, KX_FORM_DOUBLE, 0x0000, 0x255E},
        {"the katakana row comes first", 3, KX_FORM_FIRST_KANA, 0xBC4D, 0xBCA0},
        {"no capital of double width", 4, KX_FORM_UPPER, 0x8495, 0x8495},
        {"swapped couple, capital row", 2, KX_FORM_UPPER, 0x570C, 0x570C},
        {"swapped couple, small row", 2, KX_FORM_LOWER, 0x570C, 0x566A},
        {"one character for both cases", 2, KX_FORM_LOWER, 0x5528, 0x5528},
        {"the first of two couples", 2, KX_FORM_DOUBLE, 0x0124, 0x565E},
        {"four rows, the first counts", 3, KX_FORM_DOUBLE, 0x0024, 0xA5A0},
        {"the first separator", 1, KX_FORM_DOUBLE, 0xFFFF, 0xFFFF},
    };
    for (const auto &c : cases) {
        if (!runs_on(kCountries[static_cast<std::size_t>(c.country)])) continue;
        EXPECT_EQ(wtoall(c.mode, 0xABCD0000u | c.ch), c.wanted) << c.why;
    }
}

TEST(Form, SoundMarksAndWidening) {
    run_on(kCountries[1]);
    const struct {
        const char *why;
        KxChar ch, next, wide, left;
    } cases[] = {
        {"combines", 0x0B16, kVoicing, 0x260D, 0},
        {"half-voiced", 0x0B2A, kHalfVoicing, 0x2633, 0},
        {"no such voiced katakana", 0x0B06, kVoicing, 0x2600, kVoicing},
    };
    for (const auto &c : cases) {
        KxChar next = c.next;
        EXPECT_EQ(wtodouble(c.ch, &next), c.wide) << c.why;
        EXPECT_EQ(next, c.left) << c.why;
    }
    EXPECT_EQ(wtohiragana(0x0B00), 0x2402) << "punctuation of set 11 is widened";
    EXPECT_EQ(wtokatakana(0x0B06), 0x0B06);
    EXPECT_EQ(wisupper(0x2520), 1u);
    EXPECT_EQ(wisupper(0x0B06), 0u);
}

TEST(Form, WithoutKana) {
    if (runs_on(kCountries[2])) {
        EXPECT_EQ(wtohiragana(0x0B01), 0x5317) << "widened even without kana couples";
    }
    if (!runs_on(kCountries[0])) return;
    KxChar mark = 0x1234;
    EXPECT_EQ(wtosingle(0x0B40, &mark), 0x0B00) << "the mark bits go, table or not";
    EXPECT_EQ(mark, kVoicing);
}

} // namespace
