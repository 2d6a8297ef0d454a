#include <cstring>
#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <vector>

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

TEST(TableSearch, Lists) {
    const Bytes bytes{3, 7, 3, 0xFF};
    EXPECT_EQ(b_table(bytes.data(), 7), 7);
    EXPECT_EQ(b_table(bytes.data(), 8), 0xFF);
    EXPECT_EQ(b_table(bytes.data(), 0xFF), 0xFF);
    EXPECT_EQ(b_table(bytes.data() + 3, 3), 0xFF);
    const Words words{3, 0xFF, 7, 0xFFFF};
    EXPECT_EQ(w_table(words.data(), 7), 7);
    EXPECT_EQ(w_table(words.data(), 0xFF), 0xFF);
    EXPECT_EQ(w_table(words.data(), 8), 0xFFFF);
    EXPECT_EQ(w_table(words.data() + 3, 3), 0xFFFF);
}

TEST(TableSearch, PairsGoByTheirKeysOnly) {
    const Bytes bytes{1, 2, 2, 9, 1, 5, 0xFF}; // no value behind the end mark
    EXPECT_EQ(b_b_table(bytes.data(), 1), 2);
    EXPECT_EQ(b_b_table(bytes.data(), 2), 9);
    EXPECT_EQ(b_b_table(bytes.data(), 9), 0xFF);
    EXPECT_EQ(b_b_table(bytes.data(), 0xFF), 0xFF);
    const Words words{1, 2, 2, 9, 1, 5, 0xFFFF, 77};
    EXPECT_EQ(uw_uw_table(words.data(), 1), 2);
    EXPECT_EQ(uw_uw_table(words.data(), 2), 9);
    EXPECT_EQ(uw_uw_table(words.data(), 9), 77);
    EXPECT_EQ(uw_uw_table(words.data() + 6, 1), 77);
    EXPECT_EQ(uw_uw_table(words.data(), 0xFFFF), 77);
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
    const std::uint32_t values[] = {0xAAAAAAAA, 0xBBBBBBBB, 0xCCCCCCCC};
    const Bytes by_byte = packed(std::uint8_t{10}, std::uint8_t{12}, &values[0]);
    const Bytes by_word = packed(std::uint16_t{0x110}, std::uint16_t{0x112}, &values[0]);
    for (std::uint8_t k = 0; k < 3; ++k) {
        EXPECT_EQ(ubp_lukup(by_byte.data(), static_cast<std::uint8_t>(10 + k)), values[k]);
        EXPECT_EQ(uw_fp_lukup(by_word.data(), static_cast<std::uint16_t>(0x110 + k)), values[k]);
    }
    for (const std::uint8_t outside : Bytes{0, 9, 13, 255})
        EXPECT_EQ(ubp_lukup(by_byte.data(), outside), 0u);
    for (const std::uint16_t outside : Words{0x010F, 0x0113, 0x0011})
        EXPECT_EQ(uw_fp_lukup(by_word.data(), outside), 0xFFFFFFFFu);
}

TEST(TableSearch, Ranges) {
    const Bytes bytes{20, 22, 7, 8, 9};
    const Words words{0x0120, 0x0222, 700, 800, 900}; // keys are compared with the low bytes
    const Bytes pairs{20, 22, 1, 2, 3, 4, 5, 6};
    for (std::uint8_t k = 0; k < 3; ++k) {
        const auto key = static_cast<std::uint8_t>(20 + k);
        EXPECT_EQ(ub_lukup(bytes.data(), key), 7 + k);
        EXPECT_EQ(uw_lukup(words.data(), static_cast<std::uint8_t>(0x20 + k)), 700 + 100 * k);
        std::uint8_t out1 = 0;
        std::uint8_t out2 = 0;
        EXPECT_EQ(ub_ub_lukup(pairs.data(), key, &out1, &out2), 0u);
        EXPECT_EQ(out1, 1 + 2 * k);
        EXPECT_EQ(out2, 2 + 2 * k);
    }
    for (const std::uint8_t outside : Bytes{0, 19, 23, 255}) {
        std::uint8_t out1 = 77;
        std::uint8_t out2 = 88;
        EXPECT_EQ(ub_lukup(bytes.data(), outside), 0xFF);
        EXPECT_EQ(uw_lukup(words.data(), outside), 0xFFFF);
        EXPECT_EQ(ub_ub_lukup(pairs.data(), outside, &out1, &out2), 1u);
        EXPECT_EQ(out1 + out2, 77 + 88);
    }
}

} // namespace
