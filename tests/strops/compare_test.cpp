// The comparisons and equality tests.
#include <kxstr/collate.h>
#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "support/coltbl_state.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;
using Units = std::vector<KxChar>;

// Results with and without regard to case.
struct Both {
    int with_case, without_case;
    bool operator==(const Both &) const = default;
    Both operator-() const { return {-with_case, -without_case}; }
    friend void PrintTo(const Both &both, std::ostream *out) { *out << both.with_case << '/' << both.without_case; }
};

// As the data file has them: with and without regard to case.
Both both_of(const std::string &field) {
    const std::size_t bar = field.find('/');
    return {std::stoi(field), std::stoi(field.substr(bar + 1))};
}

void expect_strings(const KxChar *a, const KxChar *b, const Both &order, const Both &equal) {
    EXPECT_EQ((Both{W6wstrcmp(a, b), W6w_stricmp(a, b)}), order);
    EXPECT_EQ((Both{W6wstrequ(a, b), W6wstriequ(a, b)}), equal);
}

void expect_limited(const KxChar *a, const KxChar *b, std::int32_t n, const Both &by_units, const Both &by_characters,
                    const Both &equal) {
    EXPECT_EQ((Both{W6wstrncmp(a, b, n), W6wstrnicmp(a, b, n)}), by_units);
    EXPECT_EQ((Both{W6wstrccmp(a, b, n), W6wstrcicmp(a, b, n)}), by_characters);
    EXPECT_EQ((Both{W6wstrnequ(a, b, n), W6wstrniequ(a, b, n)}), equal);
}

void expect_streams(const std::uint8_t *a, const std::uint8_t *b, const std::string &count, const Both &by_units,
                    const Both &by_characters) {
    const std::int32_t n = count == "-" ? INT32_MAX : std::stoi(count);
    EXPECT_EQ((Both{W6dstrnequ(a, b, n), W6dstrniequ(a, b, n)}), by_units);
    EXPECT_EQ((Both{W6dstrcequ(a, b, n), W6dstrciequ(a, b, n)}), by_characters);
    if (count == "-") {
        EXPECT_EQ((Both{W6dstrequ(a, b), W6dstriequ(a, b)}), by_units);
    }
}

// A character and one with a diacritic share a value; 0x0200 and 0x0201 have none; the tab is a code.
TEST(Compare, KnownTextsInBothDirections) {
    run_on(kWestern);
    const ColtblAtLoad at_load;
    const auto rows = kxstr::reference::read_rows("../tests/strops/comparisons.txt");
    EXPECT_EQ(rows.size(), 35u);
    for (auto row : rows) {
        SCOPED_TRACE(testing::PrintToString(row));
        for (const int sign : {1, -1}) {
            const auto ordered = [&](std::size_t at) { return sign > 0 ? both_of(row[at]) : -both_of(row[at]); };
            const auto a = terminated(units_of<KxChar>(row[1])), b = terminated(units_of<KxChar>(row[2]));
            if (row[0] == "strings")
                expect_strings(a.data(), b.data(), ordered(3), both_of(row[4]));
            else if (row[0] == "limited")
                expect_limited(a.data(), b.data(), std::stoi(row[3]), ordered(4), ordered(5), both_of(row[6]));
            else
                expect_streams(terminated(units_of<std::uint8_t>(row[1])).data(),
                               terminated(units_of<std::uint8_t>(row[2])).data(), row[3], both_of(row[4]),
                               both_of(row[5]));
            std::swap(row[1], row[2]);
        }
    }
    const KxChar a[] = {'a', 0}, b[] = {'b', 0};
    EXPECT_EQ(W6wstrccmp(a, b, -1), 1) << "of two that are not empty the first is the longer";
    EXPECT_EQ(W6wstrcicmp(b, a, -1), 1);
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
    run_on(kJapanese);
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
    setsseq("EN");
    EXPECT_EQ(W6wstrcmp(a_umlaut, z), 1) << "set up again";
    for (const std::int32_t nothing : {0, -1}) { // sets up for the language even when it compares nothing
        setsseq("DK");
        VaskSetLanguage("EN");
        EXPECT_EQ(W6wstrccmp(a_umlaut, z, nothing), nothing < 0);
        EXPECT_EQ(xch2col(0x011E), 0x6D);
    }
}

} // namespace
