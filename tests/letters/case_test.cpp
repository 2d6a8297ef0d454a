// Case of strings and streams, and character classes. Single characters: forms_test.cpp.
#include <kxstr/letters.h>

#include "support/test.h"

namespace {

using namespace kxstr::test;
using Bytes = std::vector<std::uint8_t>;
using Units = std::vector<KxChar>;

TEST(Case, KxStrings) {
    run_on(kCountries[1]);
    const Units mixed{0x0061, KX_TAB, 0x0140, 0x2540, 0xFE61, 0x0041, 0};
    const Units upper{0x0041, KX_TAB, 0x0140, 0x2520, 0xFE61, 0x0041, 0};
    Units text = mixed;
    EXPECT_EQ(W6wstrupr(text.data()), text.data());
    EXPECT_EQ(text, upper);
    EXPECT_EQ(W6wstrlwr(text.data()), text.data());
    EXPECT_EQ(text, (Units{0x0061, KX_TAB, 0x0141, 0x2540, 0xFE61, 0x0061, 0}));
    EXPECT_EQ(W6wstrLowerCh(0x2520), 0x2540);
    EXPECT_EQ(W6wstrUpperCh(0x2540), 0x2520);

    ws2upper(text.data(), mixed.data());
    EXPECT_EQ(text, upper);
    ws2upper(nullptr, mixed.data());
    ws2upper(text.data(), nullptr);
    for (int size = -2; size <= 16; ++size) {
        Units wanted(8, 0x7777), copy = wanted;
        for (std::size_t unit = 0; unit < upper.size() && 2 * static_cast<int>(unit) + 2 <= size; ++unit)
            wanted[unit] = upper[unit];
        ws2uppern(copy.data(), mixed.data(), size);
        EXPECT_EQ(copy, wanted) << size;
    }
}

TEST(Case, DocumentStreams) {
    run_on(kCountries[1]);
    const Bytes stream{0xF2, 'a',  0xF2, 'A',  'b',  0xD4, 'a',  8,    0,    'B', 8, 0,   0xD4,
                       0xF0, 0x41, 0x01, 0xF0, 0xF0, 0x20, 0x25, 0xF0, 0xF0, 'x', 0, 'q', 0};
    Bytes lower = stream, upper = stream, wanted = stream;
    wanted[3] = 'a';
    wanted[18] = 0x40;
    EXPECT_EQ(W6dstrlwr(lower.data()), lower.data());
    EXPECT_EQ(lower, wanted);
    wanted = stream;
    wanted[4] = 'B';
    wanted[14] = 0x40;
    wanted[22] = 'X'; // closed by a letter, which belongs to the extended character
    EXPECT_EQ(W6dstrupr(upper.data()), upper.data());
    EXPECT_EQ(upper, wanted);

    Bytes one{'a', 0xF0, 0x41, 0x01, 0xF0, 0x84, 0};
    for (const std::size_t at : {0u, 1u, 5u})
        EXPECT_EQ(W6dstrUpperCh(&one[at]), &one[at]);
    EXPECT_EQ(one, (Bytes{'A', 0xF0, 0x40, 0x01, 0xF0, 0x84, 0}));
    EXPECT_EQ(W6dstrLowerCh2(&one[1]), 0x0141);
    EXPECT_EQ(W6dstrLowerCh2(&one[0]), 'a');
    EXPECT_EQ(W6dstrLowerCh(&one[1]), &one[1]);
    EXPECT_EQ(one, (Bytes{'A', 0xF0, 0x41, 0x01, 0xF0, 0x84, 0}));
}

TEST(Case, UpperCopyOfBytes) {
    run_on(kCountries[1]);
    const std::pair<Bytes, Bytes> cases[] = {
        {{0, 'z'}, {0, 0x77}},
        {{0xF2, 'a', 0xF2, 'b', 0}, {0xF2, 'A', 0xF2, 'B', 0}}, // no code is known but the extended character
        {{0xF0, 0x40, 0x25, 0xF0, 'x', 0}, {0xF0, 0x20, 0x25, 0xF0, 'X', 0}},
        {{0xF0, 'x', 0, 'q', 0}, {0xF0, 'X', 0, 'Q', 0}},
        {{0xF0, 0x41, 0x01, 0, 'z', 0}, {0xF0, 0x40, 0x01, 0, 0x77, 0x77}}, // a 0 closes: the copy ends
    };
    for (const auto &[source, wanted] : cases) {
        Bytes copy(source.size(), 0x77);
        s2upper(copy.data(), source.data());
        EXPECT_EQ(copy, wanted);
    }
}

TEST(Classes, CountsAndTellingCharacters) {
    int alpha = 0, space = 0;
    for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch) {
        const bool digit = ch >= '0' && ch <= '9';
        EXPECT_EQ(W6wstrIsDigit(ch), digit);
        EXPECT_EQ(W6wstrIsAlphaNum(ch), digit || W6wstrIsAlpha(ch) != 0);
        alpha += W6wstrIsAlpha(0xABCD0000u | ch);
        space += W6wstrIsSpace(0xABCD0000u | ch);
    }
    EXPECT_EQ(alpha, 26 + 26 + 219 + 79 + 106 + 27 + 35 + 200 + 40 + 58 + 147 + 179);
    EXPECT_EQ(space, 1 + 4 + 1 + 1 + 28 + 34);
    for (const std::uint32_t ch : {0x0117u, 0x01F1u, 0x086Du, 0x0954u, 0x0AD2u, 0x0AF9u, 0x0B05u, 0x0D2Fu, 0x0EDBu})
        EXPECT_EQ(W6wstrIsAlpha(ch), 1) << ch;
    for (const std::uint32_t ch : {0x0116u, 0x086Cu, 0x0B04u, 0x2520u, 0xFF00u})
        EXPECT_EQ(W6wstrIsAlpha(ch), 0) << ch;
    for (const std::uint32_t ch : {0x0020u, 0xF909u, 0xF90Du, 0xFB02u, 0xFB17u, 0xFC61u})
        EXPECT_EQ(W6wstrIsSpace(ch), 1) << ch;
    for (const std::uint32_t ch : {0x0009u, 0x000Au, 0xF90Eu, 0xFB16u})
        EXPECT_EQ(W6wstrIsSpace(ch), 0) << ch;

    const KxIndexRange table[] = {
        {1, 0x10, 0x1F}, {1, 0x00, 0x02}, {0x24, 0xFF, 0xFF}, {0x23, 0x00, 0xFF}, {KX_RANGES_END, 0x00, 0xFF}};
    for (const std::uint32_t ch : {0x0110u, 0x0102u, 0x24FFu})
        EXPECT_EQ(lW6wstrFoundInTable(ch, table), 1) << ch;
    for (const std::uint32_t ch : {0x0120u, 0x2300u, 0xFF00u}) // 0x2300 stands behind where the search ends
        EXPECT_EQ(lW6wstrFoundInTable(ch, table), 0) << ch;
}

} // namespace
