// Case, width and kana of every 16-bit value in every country against the plain reference, and by single characters.
#include <kxstr/letters.h>

#include "core/kx_char.h"
#include "reference/forms.h"
#include "support/test.h"

namespace {

using kxstr::set_of;
using namespace kxstr::test;

constexpr KxChar kVoicing = 0x0B3D;
constexpr KxChar kHalfVoicing = 0x0B3E;

// The half-width katakana and mark that a combined code stands for.
std::pair<KxChar, KxChar> taken_apart(KxChar ch) {
    if (set_of(ch) != 11) return {ch, 0};
    const KxChar mark = (ch & 0x40) != 0 ? kVoicing : (ch & 0x80) != 0 ? kHalfVoicing : KxChar{0};
    return {static_cast<KxChar>(ch & 0xFF3F), mark};
}

// By rule below the sets of the form tables: even the capital, odd the small letter.
bool in_case_range(KxChar ch) {
    return (ch >= 0x011A && ch <= 0x01F1) || (ch >= 0x0800 && ch <= 0x0845) || (ch >= 0x0A00 && ch <= 0x0AC7);
}

KxChar plain_lower(KxChar ch) {
    if (ch >= 'A' && ch <= 'Z') return static_cast<KxChar>(ch + 32);
    return in_case_range(ch) && ch % 2 == 0 ? static_cast<KxChar>(ch + 1) : ch;
}

KxChar plain_upper(KxChar ch) {
    if (ch >= 'a' && ch <= 'z') return static_cast<KxChar>(ch - 32);
    return in_case_range(ch) && ch % 2 != 0 ? static_cast<KxChar>(ch - 1) : ch;
}

class Forms : public testing::TestWithParam<unsigned> {};

TEST_P(Forms, FollowThePlainReference) {
    run_on(kCountries[GetParam()]);
    const kxstr::reference::Forms reference(GetParam());
    for (std::uint32_t value = 0; value <= 0xFFFF && !HasFailure(); ++value) {
        SCOPED_TRACE(testing::Message() << std::hex << value);
        const auto ch = static_cast<KxChar>(value);
        for (std::uint16_t mode = 0; mode <= 7; ++mode)
            EXPECT_EQ(wtoall(mode, 0xABCD0000u | ch), reference.all(mode, ch)) << mode;
        EXPECT_EQ(wtoall(0x0103, ch), ch) << "the whole mode counts";
        EXPECT_EQ(wtolower(ch), ch < 0x1000 ? plain_lower(ch) : reference.all(1, ch));
        EXPECT_EQ(wtoupper(ch), ch < 0x1000 ? plain_upper(ch) : reference.all(2, ch));
        const KxChar narrow = ch < 0x1000 ? ch : reference.all(4, ch);
        EXPECT_EQ(wisupper(ch), ((narrow != ch || ch < 0x1000) && plain_lower(narrow) != narrow) ? 1u : 0u);
        EXPECT_EQ(wtohiragana(ch), reference.all(5, set_of(ch) == 11 ? reference.all(3, ch) : ch));
        EXPECT_EQ(wtokatakana(ch), reference.all(6, ch));
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
    }
}

INSTANTIATE_TEST_SUITE_P(Countries, Forms, testing::Range(0u, 5u), testing::PrintToStringParamName());

TEST(Form, SingleCharacters) {
    const struct {
        const char *why;
        int country;
        std::uint16_t mode;
        KxChar ch, wanted;
    } cases[] = {
        {"katakana to hiragana", 1, KX_FORM_FIRST_KANA, 0x2600, 0x255E},
        {"combined code", 1, KX_FORM_SINGLE, 0x260D, 0x0B56},
        {"first of the rows without a single-width form", 1, KX_FORM_DOUBLE, 0x0000, 0x255E},
        {"the katakana row comes first", 3, KX_FORM_FIRST_KANA, 0xBC4D, 0xBCA0},
        {"no capital of double width", 4, KX_FORM_UPPER, 0x8495, 0x8495},
        {"swapped couple, small row", 2, KX_FORM_LOWER, 0x570C, 0x566A},
        {"four rows, the first counts", 3, KX_FORM_DOUBLE, 0x0024, 0xA5A0},
        {"the first separator", 1, KX_FORM_DOUBLE, 0xFFFF, 0xFFFF},
    };
    for (const auto &c : cases) {
        if (!runs_on(kCountries[static_cast<std::size_t>(c.country)])) continue;
        EXPECT_EQ(wtoall(c.mode, c.ch), c.wanted) << c.why;
    }
}

} // namespace
