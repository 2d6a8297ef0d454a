// The comparisons and equality tests: truth tables, every row in both directions.
#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <kxstr/letters.h>
#include <kxstr/strops.h>
#include <random>
#include <vector>

#include "support/coltbl_state.h"
#include "support/process_state.h"
#include "support/written_by.h"

namespace {

using kxstr::test::ColtblAtLoad;
using kxstr::test::terminated;
using Units = std::vector<KxChar>;
using Bytes = std::vector<std::uint8_t>;

// Results with and without regard to case.
struct Both {
    int with_case, without_case;
    bool operator==(const Both &) const = default;
    Both operator-() const { return {-with_case, -without_case}; }
    friend void PrintTo(const Both &both, std::ostream *out) { *out << both.with_case << '/' << both.without_case; }
};

// A character and one with a diacritic share a value; 0x0200 and 0x0201 have none; the tab is a code.
TEST(Compare, Strings) {
    kxstr::test::run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    const struct {
        const char *why;
        Units a, b;
        Both order, equal;
    } cases[] = {
        {"nothing", {}, {}, {0, 0}, {1, 1}},
        {"case", {'a'}, {'A'}, {-1, 0}, {0, 1}},
        {"the case of a character before the next value", {'A', 'a'}, {'a', 'B'}, {1, -1}, {0, 0}},
        {"same value", {'a'}, {0x011B}, {0, 0}, {0, 0}},
        {"same value, other case", {'A'}, {0x011B}, {1, 0}, {0, 0}},
        {"without value by code", {0x0200}, {0x0201}, {-1, -1}, {0, 0}},
        {"without value last", {'z'}, {0x0200}, {-1, -1}, {0, 0}},
        {"the longer last", {'a', 'b'}, {'a'}, {1, 1}, {0, 0}},
        {"codes do not count", {KX_TAB, 'a', KX_TAB, KX_TAB, 'b'}, {'a', 'b', KX_TAB}, {0, 0}, {1, 1}},
    };
    for (const auto &c : cases) {
        const Units a = terminated(c.a), b = terminated(c.b);
        EXPECT_EQ((Both{W6wstrcmp(a.data(), b.data()), W6w_stricmp(a.data(), b.data())}), c.order) << c.why;
        EXPECT_EQ((Both{W6wstrcmp(b.data(), a.data()), W6w_stricmp(b.data(), a.data())}), -c.order) << c.why;
        EXPECT_EQ((Both{W6wstrequ(a.data(), b.data()), W6wstriequ(a.data(), b.data())}), c.equal) << c.why;
        EXPECT_EQ((Both{W6wstrequ(b.data(), a.data()), W6wstriequ(b.data(), a.data())}), c.equal) << c.why;
    }
}

// Character by character: what the comparisons of strings say without knowing of equal beginnings.
Both ordered_one_by_one(const KxChar *a, const KxChar *b) {
    const auto order = [](const KxChar *p, const KxChar *q, std::uint8_t case_flag) {
        for (;; ++p, ++q) {
            while (*p >= KX_FIRST_CODE)
                ++p;
            while (*q >= KX_FIRST_CODE)
                ++q;
            if (*p == 0 || *q == 0) return (*p != 0) - (*q != 0);
            if (const int difference = xchcmp(*p, *q, case_flag); difference != 0) return difference < 0 ? -1 : 1;
        }
    };
    return {order(a, b, 1), order(a, b, 0)};
}
Both equal_one_by_one(const KxChar *a, const KxChar *b) {
    Units texts[4];
    for (; *a != 0; ++a)
        if (*a < KX_FIRST_CODE) texts[0].push_back(*a), texts[1].push_back(wtolower(*a));
    for (; *b != 0; ++b)
        if (*b < KX_FIRST_CODE) texts[2].push_back(*b), texts[3].push_back(wtolower(*b));
    return {texts[0] == texts[2], texts[1] == texts[3]};
}

// Long equal beginnings, then texts that go on with or without codes, in another case, or otherwise; also with a table
// that a host has written to.
TEST(Compare, LikeOneCharacterAfterTheOther) {
    kxstr::test::run_on(kxstr::test::kJapanese);
    const KxChar characters[] = {'a', 'a', 'A', 'b', 'B', 0x011B, 0x011A, 0x0200, 0x0201, 0x2520, 0x2540, ' ', 1, 0xFF};
    std::mt19937 random(1);
    const auto any_text = [&](Units text) {
        for (std::size_t left = random() % 6; left != 0; --left)
            text.push_back(random() % 5 != 0 ? characters[random() % std::size(characters)] : KxChar{KX_TAB});
        return terminated(text);
    };
    for (int host = 0; host < 5; ++host) {
        const ColtblAtLoad at_load;
        KxCollationEntry entry = coltbl[0];
        std::uint8_t from_0[2 + 0xFF]{0, 0xFF};
        if (host == 1) coltbl[0].set = 1;
        if (host == 2) entry.block['a' - 0x20 + 2] = entry.block[' ' - 0x20 + 2] = 0xFF;
        if (host == 3) coltbl[0].block = nullptr;
        if (host == 4) coltbl[0].block = from_0;
        for (int i = 0; i < 20000; ++i) {
            Units beginning = any_text({}), other;
            beginning.pop_back();
            for (const std::size_t length = random() % 80; random() % 2 != 0 && beginning.size() < length;)
                beginning.push_back(characters[random() % std::size(characters)]);
            other = beginning;
            if (random() % 4 == 0)
                for (KxChar &ch : other)
                    ch = wtoupper(ch);
            const Units left = any_text(beginning), right = any_text(other);
            const KxChar *a = left.data(), *b = right.data();
            ASSERT_EQ((Both{W6wstrcmp(a, b), W6w_stricmp(a, b)}), ordered_one_by_one(a, b)) << host << ' ' << i;
            ASSERT_EQ((Both{W6wstrequ(a, b), W6wstriequ(a, b)}), equal_one_by_one(a, b)) << host << ' ' << i;
        }
        coltbl[0] = entry;
    }
}

TEST(Compare, StringsUpToALimit) {
    kxstr::test::run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    const struct {
        const char *why;
        Units a, b;
        std::int32_t n;
        Both by_units, by_characters, equal;
    } cases[] = {
        {"before the difference", {'a', 'b'}, {'a', 'c'}, 1, {0, 0}, {0, 0}, {1, 1}},
        {"behind the difference", {'a', 'b'}, {'a', 'c'}, 2, {-1, -1}, {-1, -1}, {0, 0}},
        {"case", {'a'}, {'A'}, 1, {-1, 0}, {-1, 0}, {0, 1}},
        {"nothing compared is not equal", {'a'}, {'a'}, 0, {0, 0}, {0, 0}, {0, 0}},
        {"a negative count tells which one is empty", {}, {'a'}, -1, {0, 0}, {-1, -1}, {0, 0}},
        {"neither is", {}, {}, -1, {0, 0}, {0, 0}, {0, 0}},
        {"the common end within the limit", {'a'}, {'a'}, 2, {0, 0}, {0, 0}, {1, 1}},
        {"one ends at the limit", {'a'}, {'a', 'b'}, 1, {0, 0}, {0, 0}, {1, 1}},
        {"one ends within it", {'a'}, {'a', 'b'}, 2, {-1, -1}, {-1, -1}, {0, 0}},
        {"codes take units, and leave nothing", {KX_TAB, 'a'}, {'b'}, 1, {0, 0}, {-1, -1}, {0, 0}},
        {"codes take units, later", {KX_TAB, 'a', 'b'}, {'a', 'c'}, 2, {0, 0}, {-1, -1}, {0, 1}},
        {"codes take units in front of the end", {'a', KX_TAB}, {'a'}, 2, {0, 0}, {0, 0}, {0, 1}},
    };
    for (const auto &c : cases) {
        for (const bool swapped : {false, true}) {
            const Units left = terminated(swapped ? c.b : c.a), right = terminated(swapped ? c.a : c.b);
            const KxChar *a = left.data(), *b = right.data();
            EXPECT_EQ((Both{W6wstrncmp(a, b, c.n), W6wstrnicmp(a, b, c.n)}), swapped ? -c.by_units : c.by_units)
                << c.why;
            EXPECT_EQ((Both{W6wstrccmp(a, b, c.n), W6wstrcicmp(a, b, c.n)}),
                      swapped ? -c.by_characters : c.by_characters)
                << c.why;
            EXPECT_EQ((Both{W6wstrnequ(a, b, c.n), W6wstrniequ(a, b, c.n)}), c.equal) << c.why;
        }
    }
    const KxChar a[] = {'a', 0}, b[] = {'b', 0};
    EXPECT_EQ(W6wstrccmp(a, b, -1), 1) << "of two that are not empty the first is the longer";
    EXPECT_EQ(W6wstrcicmp(b, a, -1), 1);
}

TEST(Compare, Streams) {
    kxstr::test::run_on(kxstr::test::kWestern);
    constexpr std::int32_t kNone = INT32_MAX;
    const struct {
        const char *why;
        Bytes a, b;
        std::int32_t n;
        Both by_units, by_characters; // the same where there is no limit
    } cases[] = {
        {"nothing", {}, {}, kNone, {1, 1}, {1, 1}},
        {"case", {'a'}, {'A'}, kNone, {0, 1}, {0, 1}},
        {"another form of the same character", {'a'}, {0xF0, 'a', 0, 0xF0}, kNone, {0, 1}, {0, 1}},
        {"another set", {0xF0, 0x1B, 1, 0xF0}, {0xF0, 0x1B, 2, 0xF0}, kNone, {0, 0}, {0, 0}},
        {"codes", {0x80, 'a', 0xD4, 1, 7, 0, 7, 0, 0xD4, 'b'}, {'a', 'b', 0x80}, kNone, {1, 1}, {1, 1}},
        {"an extended character 0 is an end without case", {'a', 0xF0, 0, 0, 0xF0, 'b'}, {'A'}, kNone, {0, 1}, {0, 1}},
        {"a longer one", {'a', 'b'}, {'a'}, kNone, {0, 0}, {0, 0}},
        {"before the difference", {'a', 'b'}, {'a', 'c'}, 1, {1, 1}, {1, 1}},
        {"behind the difference", {'a', 'b'}, {'a', 'c'}, 2, {0, 0}, {0, 0}},
        {"nothing compared", {'a'}, {'b'}, 0, {1, 1}, {1, 1}},
        {"less than nothing", {'a'}, {'b'}, -1, {1, 1}, {1, 1}},
        {"codes take units, and leave nothing", {0x80, 'a'}, {'b'}, 1, {1, 1}, {0, 0}},
        {"extended characters take units", {0xF0, 'a', 0, 0xF0, 'b'}, {'A', 'c'}, 4, {0, 1}, {0, 0}},
        {"which end", {0xF0, 'a', 0, 0xF0, 'b'}, {'A', 'c'}, 5, {0, 0}, {0, 0}},
    };
    for (const auto &c : cases) {
        for (const bool swapped : {false, true}) {
            const Bytes left = terminated(swapped ? c.b : c.a), right = terminated(swapped ? c.a : c.b);
            const std::uint8_t *a = left.data(), *b = right.data();
            EXPECT_EQ((Both{W6dstrnequ(a, b, c.n), W6dstrniequ(a, b, c.n)}), c.by_units) << c.why;
            EXPECT_EQ((Both{W6dstrcequ(a, b, c.n), W6dstrciequ(a, b, c.n)}), c.by_characters) << c.why;
            if (c.n != kNone) continue;
            EXPECT_EQ((Both{W6dstrequ(a, b), W6dstriequ(a, b)}), c.by_units) << c.why;
        }
    }
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
    for (const std::int32_t nothing : {0, -1}) { // sets up for the language even when it compares nothing
        setsseq("DK");
        VaskSetLanguage("EN");
        EXPECT_EQ(W6wstrccmp(a_umlaut, z, nothing), nothing < 0);
        EXPECT_EQ(xch2col(0x011E), 0x6D);
    }
}

} // namespace
