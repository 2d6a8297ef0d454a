#include <kxstr/collate.h>

#include "support/test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

// A caller's record: fields one after another, without padding.
template <class... Fields> Bytes packed(Fields... fields) {
    Bytes bytes;
    const auto append = [&bytes](auto field) {
        const std::size_t at = bytes.size();
        bytes.resize(at + sizeof field);
        std::memcpy(bytes.data() + at, &field, sizeof field);
    };
    (append(fields), ...);
    return bytes;
}

TEST(TableSearch, ListsAndPairsGoByTheirKeysOnly) {
    const Bytes bytes{3, 7, 3, 0xFF};
    const Words words{3, 0xFF, 7, 0xFFFF};
    for (const std::uint8_t key : bytes)
        EXPECT_EQ(b_table(bytes.data(), key), key);
    EXPECT_EQ(b_table(bytes.data(), 8), 0xFF);
    for (const std::uint16_t key : words)
        EXPECT_EQ(w_table(words.data(), key), key);
    EXPECT_EQ(w_table(words.data(), 8), 0xFFFF);

    const Bytes byte_pairs{1, 2, 2, 9, 1, 5, 0xFF}; // no value behind the end mark
    const Words word_pairs{1, 2, 2, 9, 1, 5, 0xFFFF, 77};
    const struct {
        std::uint8_t key, byte;
        std::uint16_t word;
    } cases[] = {{1, 2, 2}, {2, 9, 9}, {9, 0xFF, 77}, {5, 0xFF, 77}, {0xFF, 0xFF, 77}};
    for (const auto &c : cases) {
        EXPECT_EQ(b_b_table(byte_pairs.data(), c.key), c.byte);
        EXPECT_EQ(uw_uw_table(word_pairs.data(), c.key), c.word);
    }
}

TEST(TableSearch, AddressesFollowTheirKeys) {
    int one = 1;
    int two = 2;
    int other = 0;
    const Bytes table = packed(std::uint8_t{4}, &one, std::uint8_t{5}, &two, std::uint8_t{0xFF}, &other);
    for (const auto search : {ub_fp_table, ub_vfp_table}) {
        EXPECT_EQ(search(table.data(), 4), &one);
        EXPECT_EQ(search(table.data(), 5), &two);
        EXPECT_EQ(search(table.data(), 6), &other);
        EXPECT_EQ(search(table.data(), 0xFF), &other);
    }
}

TEST(TableSearch, Ranges) {
    const std::uint32_t values[] = {0xAAAAAAAA, 0xBBBBBBBB, 0xCCCCCCCC};
    const Bytes bytes{20, 22, 7, 8, 9};
    const Words words{0x0114, 0x0216, 7, 8, 9}; // keys are compared with the low bytes
    const Bytes pairs{20, 22, 1, 7, 2, 8, 3, 9};
    const Bytes by_byte = packed(std::uint8_t{20}, std::uint8_t{22}, &values[0]);
    const Bytes by_word = packed(std::uint16_t{0x114}, std::uint16_t{0x116}, &values[0]);
    for (unsigned n = 0; n <= 255; ++n) {
        const auto key = static_cast<std::uint8_t>(n);
        const bool inside = n >= 20 && n <= 22;
        EXPECT_EQ(ub_lukup(bytes.data(), key), inside ? n - 13 : 0xFF);
        EXPECT_EQ(uw_lukup(words.data(), key), inside ? n - 13 : 0xFFFF);
        EXPECT_EQ(ubp_lukup(by_byte.data(), key), inside ? values[n - 20] : 0);
        EXPECT_EQ(uw_fp_lukup(by_word.data(), static_cast<std::uint16_t>(0x100 + n)), inside ? values[n - 20] : ~0u);
        EXPECT_EQ(uw_fp_lukup(by_word.data(), key), ~0u);
        std::uint8_t out1 = 77;
        std::uint8_t out2 = 88;
        EXPECT_EQ(ub_ub_lukup(pairs.data(), key, &out1, &out2), inside ? 0u : 1u);
        EXPECT_EQ(out1, inside ? n - 19 : 77);
        EXPECT_EQ(out2, inside ? n - 13 : 88);
    }
}

} // namespace
