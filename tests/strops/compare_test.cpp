// The comparisons and equality tests against a plain version, over all short texts of a small alphabet: the plain
// version takes the codes out first and knows the alphabet's values by heart.
#include <gtest/gtest.h>
#include <kxstr/strops.h>
#include <string>
#include <vector>

#include "support/coltbl_state.h"
#include "support/process_state.h"

namespace {

using kxstr::test::ColtblAtLoad;

struct Place {
    KxChar ch;
    int offset; // from the start of the text, in its units
};

template <class Unit> struct Text {
    std::vector<Unit> units; // exactly as long as the text with its terminator
    std::vector<Place> chars;
};
using KxText = Text<KxChar>;
using Stream = Text<std::uint8_t>;

template <class Unit> struct Token {
    std::vector<Unit> units;
    KxChar ch; // 0: a code
};

template <class Unit> std::vector<Text<Unit>> all_texts(const std::vector<Token<Unit>> &alphabet, int length) {
    std::vector<Text<Unit>> texts{{{0}, {{0, 0}}}};
    std::size_t first = 0;
    for (; length > 0; --length) {
        const std::size_t last = texts.size();
        for (; first < last; ++first) {
            for (const Token<Unit> &token : alphabet) {
                Text<Unit> text = texts[first];
                text.units.pop_back();
                text.chars.pop_back();
                if (token.ch != 0) text.chars.push_back({token.ch, static_cast<int>(text.units.size())});
                text.units.insert(text.units.end(), token.units.begin(), token.units.end());
                text.chars.push_back({0, static_cast<int>(text.units.size())});
                text.units.push_back(0);
                texts.push_back(text);
            }
        }
    }
    return texts;
}

// a and a with acute share a value; the last two have none.
std::vector<KxText> kx_texts(int length) {
    return all_texts<KxChar>(
        {{{'a'}, 'a'}, {{'A'}, 'A'}, {{0x011B}, 0x011B}, {{0x0201}, 0x0201}, {{0x0200}, 0x0200}, {{0xF909}, 0}},
        length);
}
std::vector<Stream> streams(int length) {
    return all_texts<std::uint8_t>({{{'a'}, 'a'},
                                    {{'A'}, 'A'},
                                    {{0xF0, 'a', 0, 0xF0}, 'a'},
                                    {{0xF0, 0x1B, 1, 0xF0}, 0x011B},
                                    {{0x80}, 0},
                                    {{0xD4, 1, 7, 0, 7, 0, 0xD4}, 0}},
                                   length);
}

KxChar plain_lower(KxChar ch) {
    return ch == 'A' ? 'a' : ch;
}
int plain_value(KxChar ch) {
    return ch >= 0x0200 ? 1000 + ch : 0x6D;
}
int plain_order(KxChar p, KxChar q, bool with_case) {
    const int difference = plain_value(p) - plain_value(q);
    if (difference != 0) return difference < 0 ? -1 : 1;
    return with_case ? (p == 'A') - (q == 'A') : 0;
}

enum class Bound { kNone, kCharacters, kUnits };

int plain_compare(const KxText &a, const KxText &b, bool with_case, Bound bound, int n) {
    for (std::size_t k = 0;; ++k) {
        if (bound == Bound::kUnits && (a.chars[k].offset >= n || b.chars[k].offset >= n)) return 0;
        if (bound == Bound::kCharacters && static_cast<int>(k) == n) return 0;
        const KxChar p = a.chars[k].ch;
        const KxChar q = b.chars[k].ch;
        if (p == 0 || q == 0 || (bound == Bound::kCharacters && n < 0)) return p != 0 ? 1 : -(q != 0);
        if (const int result = plain_order(p, q, with_case); result != 0) return result;
    }
}

// `at_start` and `later`: what reaching the limit gives.
template <class Unit>
int plain_equal(const Text<Unit> &a, const Text<Unit> &b, bool with_case, Bound bound, int n, int at_start, int later) {
    if (bound == Bound::kCharacters && n <= 0) return 1;
    for (std::size_t k = 0;; ++k) {
        const Place p = a.chars[k];
        const Place q = b.chars[k];
        if (bound == Bound::kUnits && (p.offset >= n || q.offset >= n)) return k == 0 ? at_start : later;
        if (bound == Bound::kCharacters && static_cast<int>(k) == n) return 1;
        const bool same_form = sizeof(Unit) == 2 || a.units[static_cast<std::size_t>(p.offset)] ==
                                                        b.units[static_cast<std::size_t>(q.offset)];
        if (with_case ? p.ch != q.ch || !same_form : plain_lower(p.ch) != plain_lower(q.ch)) return 0;
        if (p.ch == 0) return 1;
    }
}

// n equal characters within n units each, or a common end within them.
int plain_nequ(const KxText &a, const KxText &b, int n) {
    for (std::size_t k = 0;; ++k) {
        if (a.chars[k].offset >= n || b.chars[k].offset >= n || a.chars[k].ch != b.chars[k].ch) return 0;
        if (a.chars[k].ch == 0 || static_cast<int>(k) + 1 == n) return 1;
    }
}

template <class Unit> std::string show(const Text<Unit> &a, const Text<Unit> &b, int n) {
    return testing::PrintToString(a.units) + " " + testing::PrintToString(b.units) + " n=" + std::to_string(n);
}

TEST(Compare, AllShortStrings) {
    kxstr::test::run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    const auto texts = kx_texts(3);
    const auto others = kx_texts(2);
    for (const KxText &a : texts) {
        for (const KxText &b : others) {
            const KxChar *s = a.units.data();
            const KxChar *t = b.units.data();
            ASSERT_EQ(W6wstrcmp(s, t), plain_compare(a, b, true, Bound::kNone, 0)) << show(a, b, 0);
            ASSERT_EQ(W6w_stricmp(s, t), plain_compare(a, b, false, Bound::kNone, 0)) << show(a, b, 0);
            ASSERT_EQ(W6wstrcmp(t, s), -W6wstrcmp(s, t)) << show(a, b, 0);
            ASSERT_EQ(W6wstrequ(s, t), plain_equal(a, b, true, Bound::kNone, 0, 0, 0)) << show(a, b, 0);
            ASSERT_EQ(W6wstriequ(s, t), plain_equal(a, b, false, Bound::kNone, 0, 0, 0)) << show(a, b, 0);
            for (int n = -1; n <= 4; ++n) {
                ASSERT_EQ(W6wstrccmp(s, t, n), plain_compare(a, b, true, Bound::kCharacters, n)) << show(a, b, n);
                ASSERT_EQ(W6wstrcicmp(s, t, n), plain_compare(a, b, false, Bound::kCharacters, n)) << show(a, b, n);
                ASSERT_EQ(W6wstrncmp(s, t, n), plain_compare(a, b, true, Bound::kUnits, n)) << show(a, b, n);
                ASSERT_EQ(W6wstrnicmp(t, s, n), plain_compare(b, a, false, Bound::kUnits, n)) << show(b, a, n);
                ASSERT_EQ(W6wstrnequ(s, t, n), plain_nequ(a, b, n)) << show(a, b, n);
                ASSERT_EQ(W6wstrnequ(t, s, n), plain_nequ(b, a, n)) << show(b, a, n);
                ASSERT_EQ(W6wstrniequ(s, t, n), plain_equal(a, b, false, Bound::kUnits, n, 0, 1)) << show(a, b, n);
                ASSERT_EQ(W6wstrniequ(t, s, n), plain_equal(b, a, false, Bound::kUnits, n, 0, 1)) << show(b, a, n);
            }
        }
    }
}

TEST(Compare, AllShortStreams) {
    kxstr::test::run_on(kxstr::test::kWestern);
    const auto texts = streams(3);
    const auto others = streams(2);
    for (const Stream &a : texts) {
        for (const Stream &b : others) {
            const std::uint8_t *s = a.units.data();
            const std::uint8_t *t = b.units.data();
            ASSERT_EQ(W6dstrequ(s, t), plain_equal(a, b, true, Bound::kNone, 0, 0, 0)) << show(a, b, 0);
            ASSERT_EQ(W6dstriequ(s, t), plain_equal(a, b, false, Bound::kNone, 0, 0, 0)) << show(a, b, 0);
            for (int n : {-1, 0, 1, 2, 4, 5, 8, 9}) {
                ASSERT_EQ(W6dstrnequ(s, t, n), plain_equal(a, b, true, Bound::kUnits, n, 1, 1)) << show(a, b, n);
                ASSERT_EQ(W6dstrniequ(t, s, n), plain_equal(b, a, false, Bound::kUnits, n, 1, 1)) << show(b, a, n);
                ASSERT_EQ(W6dstrcequ(s, t, n), plain_equal(a, b, true, Bound::kCharacters, n, 1, 1)) << show(a, b, n);
                ASSERT_EQ(W6dstrciequ(t, s, n), plain_equal(b, a, false, Bound::kCharacters, n, 1, 1)) << show(b, a, n);
            }
        }
    }
}

TEST(Compare, AnExtendedCharacterZeroEndsTheComparisonWithoutCase) {
    const std::vector<std::uint8_t> zero{'a', 0xF0, 0, 0, 0xF0, 'b', 0};
    const std::vector<std::uint8_t> end{'A', 0};
    EXPECT_EQ(W6dstriequ(zero.data(), end.data()), 1);
    EXPECT_EQ(W6dstriequ(end.data(), zero.data()), 1);
    EXPECT_EQ(W6dstrequ(zero.data(), end.data()), 0);
}

TEST(Compare, CollatesOneCharacterInTheCurrentLanguage) {
    const ColtblAtLoad at_load;
    EXPECT_EQ(W6wstrCollateCh(0), 0);
    EXPECT_EQ(W6wstrCollateCh('A'), 0x6D);
    EXPECT_EQ(W6wstrCollateCh(0x0200), 0xFF);
    VaskSetLanguage("DK");
    EXPECT_EQ(W6wstrCollateCh(0), 0); // not even the language is looked at
    EXPECT_EQ(xch2col(0x011E), 0x6D);
    EXPECT_EQ(W6wstrCollateCh(0xABCD011E), 0xBB);
    const KxChar a_umlaut[] = {0x011E, 0};
    const KxChar z[] = {'z', 0};
    EXPECT_EQ(W6wstrcmp(a_umlaut, z), 1);
    VaskSetLanguage("EN");
    EXPECT_EQ(W6wstrccmp(a_umlaut, z, 0), 0); // sets up for the language even when it compares nothing
    EXPECT_EQ(xch2col(0x011E), 0x6D);
}

} // namespace
