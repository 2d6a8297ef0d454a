// Case of strings and streams, and character classes.
#include <gtest/gtest.h>
#include <kxstr/strops.h>
#include <numeric>

#include "support/countries.h"

namespace {

using kxstr::test::kCountries;
using kxstr::test::run_on;
using Bytes = std::vector<std::uint8_t>;
using Units = std::vector<KxChar>;

TEST(Case, RangesOfTheTableDrivenSets) {
    run_on(kCountries[0]);
    const struct {
        const char *why;
        KxChar ch, lower, upper;
    } cases[] = {
        {"A", 0x0041, 0x0061, 0x0041},
        {"before A and a", 0x0040, 0x0040, 0x0040},
        {"after Z", 0x005B, 0x005B, 0x005B},
        {"z", 0x007A, 0x007A, 0x005A},
        {"after z", 0x007B, 0x007B, 0x007B},
        {"no case in set 0 but ASCII's", 0x00C0, 0x00C0, 0x00C0},
        {"before the range of set 1", 0x0119, 0x0119, 0x0119},
        {"first capital of set 1", 0x011A, 0x011B, 0x011A},
        {"last small letter of set 1", 0x01F1, 0x01F1, 0x01F0},
        {"after the range of set 1", 0x01F2, 0x01F2, 0x01F2},
        {"a set without case", 0x0240, 0x0240, 0x0240},
        {"last of set 8", 0x0845, 0x0845, 0x0844},
        {"after set 8", 0x0846, 0x0846, 0x0846},
        {"last of set 10", 0x0AC7, 0x0AC7, 0x0AC6},
        {"set 15", 0x0F41, 0x0F41, 0x0F41},
        {"no form table", 0x2520, 0x2520, 0x2520},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(W6wstrLowerCh(0xABCD0000u | c.ch), c.lower) << c.why;
        EXPECT_EQ(W6wstrUpperCh(0xABCD0000u | c.ch), c.upper) << c.why;
    }
    EXPECT_EQ(std::accumulate(std::begin(rngchr), std::end(rngchr), 0), 0x1A + 0xF1 + 0x45 + 0xC7);
}

TEST(Case, KxStrings) {
    run_on(kCountries[1]);
    const Units mixed{0x0061, KX_TAB, 0x0140, 0x2540, 0xFE61, 0x0041, 0};
    Units text = mixed;
    EXPECT_EQ(W6wstrupr(text.data()), text.data());
    const Units upper{0x0041, KX_TAB, 0x0140, 0x2520, 0xFE61, 0x0041, 0};
    EXPECT_EQ(text, upper);
    EXPECT_EQ(W6wstrlwr(text.data()), text.data());
    EXPECT_EQ(text, (Units{0x0061, KX_TAB, 0x0141, 0x2540, 0xFE61, 0x0061, 0}));

    Units copy(mixed.size());
    ws2upper(copy.data(), mixed.data());
    EXPECT_EQ(copy, upper);
    ws2upper(copy.data(), copy.data());
    EXPECT_EQ(copy, upper);
    ws2upper(nullptr, mixed.data());
    ws2upper(copy.data(), nullptr);
    EXPECT_EQ(copy, upper);
}

TEST(Case, BoundedCopyStopsWithTheRoom) {
    run_on(kCountries[0]);
    const Units source{'a', 'b', 'c', 0};
    for (int size = -2; size <= 10; ++size) {
        Units wanted(5, 0x7777);
        for (std::size_t unit = 0; unit < source.size() && 2 * static_cast<int>(unit) + 2 <= size; ++unit)
            wanted[unit] = wtoupper(source[unit]);
        Units copy(5, 0x7777);
        ws2uppern(copy.data(), source.data(), size);
        EXPECT_EQ(copy, wanted) << size;
    }
}

TEST(Case, DocumentStreams) {
    run_on(kCountries[1]);
    const struct {
        const char *why;
        Bytes stream, lower, upper, s2;
    } cases[] = {
        {"empty", {0}, {0}, {0}, {0}},
        {"letters", {'a', 'B', '1', 0}, {'a', 'b', '1', 0}, {'A', 'B', '1', 0}, {'A', 'B', '1', 0}},
        {"a code leads",
         {0xF2, 'a', 0xF2, 'a', 0},
         {0xF2, 'a', 0xF2, 'a', 0},
         {0xF2, 'a', 0xF2, 'A', 0},
         {0xF2, 'A', 0xF2, 'A', 0}},
        {"a group holds letters",
         {'A', 0xD4, 'a', 8, 0, 'b', 8, 0, 0xD4, 'c', 0},
         {'a', 0xD4, 'a', 8, 0, 'b', 8, 0, 0xD4, 'c', 0},
         {'A', 0xD4, 'a', 8, 0, 'b', 8, 0, 0xD4, 'C', 0},
         {}},
        {"extended letter",
         {0xF0, 0x41, 0x01, 0xF0, 0},
         {0xF0, 0x41, 0x01, 0xF0, 0},
         {0xF0, 0x40, 0x01, 0xF0, 0},
         {0xF0, 0x40, 0x01, 0xF0, 0}},
        {"extended double-width letter and extended ASCII",
         {0xF0, 0x20, 0x25, 0xF0, 0xF0, 'x', 0, 0xF0, 0},
         {0xF0, 0x40, 0x25, 0xF0, 0xF0, 'x', 0, 0xF0, 0},
         {0xF0, 0x20, 0x25, 0xF0, 0xF0, 'X', 0, 0xF0, 0},
         {0xF0, 0x20, 0x25, 0xF0, 0xF0, 'X', 0, 0xF0, 0}},
        {"closed by a letter",
         {0xF0, 0x41, 0x01, 'q', 0},
         {0xF0, 0x41, 0x01, 'q', 0},
         {0xF0, 0x40, 0x01, 'q', 0},
         {0xF0, 0x40, 0x01, 'Q', 0}},
    };
    for (const auto &c : cases) {
        Bytes stream = c.stream;
        EXPECT_EQ(W6dstrlwr(stream.data()), stream.data());
        EXPECT_EQ(stream, c.lower) << c.why;
        stream = c.stream;
        EXPECT_EQ(W6dstrupr(stream.data()), stream.data());
        EXPECT_EQ(stream, c.upper) << c.why;
        if (c.s2.empty()) continue;
        Bytes copy(c.stream.size());
        s2upper(copy.data(), c.stream.data());
        EXPECT_EQ(copy, c.s2) << c.why;
    }
    // A 0 in place of the closing byte ends the copy.
    const Bytes cut{0xF0, 0x41, 0x01, 0, 'z', 0};
    Bytes copy(cut.size(), 0x77);
    s2upper(copy.data(), cut.data());
    EXPECT_EQ(copy, (Bytes{0xF0, 0x40, 0x01, 0, 0x77, 0x77}));
}

TEST(Case, OneCharacterOfADocumentStream) {
    run_on(kCountries[0]);
    Bytes stream{'a', 0xF0, 0x41, 0x01, 0xF0, 0x84, 'b', 0};
    EXPECT_EQ(W6dstrUpperCh(&stream[0]), &stream[0]);
    EXPECT_EQ(W6dstrUpperCh(&stream[1]), &stream[1]);
    EXPECT_EQ(W6dstrUpperCh(&stream[5]), &stream[5]);
    EXPECT_EQ(stream, (Bytes{'A', 0xF0, 0x40, 0x01, 0xF0, 0x84, 'b', 0}));
    EXPECT_EQ(W6dstrLowerCh2(&stream[1]), 0x0141);
    EXPECT_EQ(W6dstrLowerCh2(&stream[0]), 'a');
    EXPECT_EQ(stream[0], 'A');
    EXPECT_EQ(W6dstrLowerCh(&stream[1]), &stream[1]);
    EXPECT_EQ(stream[2], 0x41);
}

TEST(Classes, EdgesAndCounts) {
    const struct {
        const char *why;
        KxChar ch;
        bool alpha, digit, space;
    } cases[] = {
        {"before the letters of set 1", 0x0116, false, false, false},
        {"sharp s", 0x0117, true, false, false},
        {"second range of set 8", 0x086D, true, false, false},
        {"between the ranges of set 8", 0x086C, false, false, false},
        {"sound mark", 0x0B3E, true, false, false},
        {"before the kana", 0x0B04, false, false, false},
        {"double-width letter", 0x2520, false, false, false},
        {"1", 0x0031, false, true, false},
        {"/", 0x002F, false, false, false},
        {"9", 0x0039, false, true, false},
        {":", 0x003A, false, false, false},
        {"index of a digit in set 1", 0x0131, true, false, false},
        {"space", 0x0020, false, false, true},
        {"ASCII's tab", 0x0009, false, false, false},
        {"tab code, listed after a later range", 0xF909, false, false, true},
        {"last line end code", 0xF90D, false, false, true},
        {"after the line ends", 0xF90E, false, false, false},
        {"hard space", 0xFB02, false, false, true},
        {"last space code", 0xFC61, false, false, true},
        {"set of the end mark", 0xFF00, false, false, false},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(W6wstrIsAlpha(0xABCD0000u | c.ch), c.alpha) << c.why;
        EXPECT_EQ(W6wstrIsDigit(0xABCD0000u | c.ch), c.digit) << c.why;
        EXPECT_EQ(W6wstrIsAlphaNum(0xABCD0000u | c.ch), c.alpha || c.digit) << c.why;
        EXPECT_EQ(W6wstrIsSpace(0xABCD0000u | c.ch), c.space) << c.why;
    }
    int alpha = 0, space = 0;
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch) {
        alpha += W6wstrIsAlpha(ch);
        space += W6wstrIsSpace(ch);
    }
    EXPECT_EQ(alpha, 26 + 26 + 219 + 79 + 106 + 27 + 35 + 200 + 40 + 58 + 147 + 179);
    EXPECT_EQ(space, 1 + 4 + 1 + 1 + 28 + 34);
}

TEST(Classes, TablesOfTheCaller) {
    const KxIndexRange table[] = {
        {1, 0x10, 0x1F}, {1, 0x00, 0x02}, {0x24, 0xFF, 0xFF}, {0x23, 0x00, 0xFF}, {KX_RANGES_END, 0x00, 0xFF}};
    EXPECT_EQ(lW6wstrFoundInTable(0x0110, table), 1);
    EXPECT_EQ(lW6wstrFoundInTable(0x0102, table), 1) << "a later range of the same set";
    EXPECT_EQ(lW6wstrFoundInTable(0x0120, table), 0);
    EXPECT_EQ(lW6wstrFoundInTable(0x24FF, table), 1);
    EXPECT_EQ(lW6wstrFoundInTable(0x2300, table), 0) << "out of order: the search has ended before";
    EXPECT_EQ(lW6wstrFoundInTable(0xFF00, table), 0);
}

} // namespace
