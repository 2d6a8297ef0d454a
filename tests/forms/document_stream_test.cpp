#include <kxstr/forms.h>
#include <kxstr/prim.h>

#include "forms/code_size.h"
#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr::reference;
using kxstr::test::Guarded;
using Bytes = std::vector<std::uint8_t>;

TEST(CodeSize, EveryFirstAndEveryLastByte) {
    const struct {
        unsigned first, last;
        std::uint16_t size;
    } ranges[] = {
        {0x00, 0xCF, 1}, {0xD0, 0xEF, 0x4321}, {0xF0, 0xF0, 4}, {0xF1, 0xF1, 5}, {0xF2, 0xF5, 3},
        {0xF6, 0xF8, 4}, {0xF9, 0xFA, 5},      {0xFB, 0xFC, 6}, {0xFD, 0xFE, 8}, {0xFF, 0xFF, 1},
    };
    unsigned tried = 0;
    for (const auto &range : ranges) {
        for (unsigned byte = range.first; byte <= range.last; ++byte, ++tried) {
            const Bytes code{static_cast<std::uint8_t>(byte), 0x77, 0x21, 0x43};
            EXPECT_EQ(ufsize(code.data()), range.size) << std::hex << byte;
            const Bytes end{0x21, 0x43, static_cast<std::uint8_t>(byte)};
            EXPECT_EQ(ubsize(end.data() + end.size()), range.size) << std::hex << byte;
        }
    }
    EXPECT_EQ(tried, 256u);
    // A group of no length is reported as it is, but a step is one byte.
    const Bytes none{0xD0, 0x01, 0x00, 0x00, 0x00, 0xEF};
    EXPECT_EQ(ufsize(none.data()) + ubsize(none.data() + none.size()), 0);
    EXPECT_EQ(kxstr::forms::step(none.data()), 1u);
    EXPECT_EQ(kxstr::forms::step_back(none.data() + none.size()), 1u);
}

TEST(DocumentStream, EveryStreamOfUpToFiveCodes) {
    for_every_sequence(kStreamAlphabet, 5, [&](const std::vector<StreamCode> &codes) {
        const Bytes stream = joined(codes);
        const std::size_t length = stream.size() - 1;
        ASSERT_EQ(wdstrlen(stream.data()), static_cast<std::int32_t>(length));

        Guarded<std::uint8_t> twice(length + stream.size());
        ASSERT_EQ(wdstrcpy(twice.data(), stream.data()), twice.data());
        ASSERT_EQ(wdstrcat(twice.data(), stream.data()), twice.data());
        Bytes expected(stream.begin(), stream.end() - 1);
        expected.insert(expected.end(), stream.begin(), stream.end());
        ASSERT_EQ(twice.contents(), expected);
        ASSERT_TRUE(twice.guards_hold());
    });
}

TEST(DocumentStream, SizesThatLie) {
    const struct {
        const char *why;
        Bytes stream;
        std::int32_t length;
    } cases[] = {
        {"a group of no length counts as one byte", {0x41, 0xD4, 0x42, 0x00, 0x00}, 3},
        {"a group inside its own header: its size is taken as it stands", {0xD4, 0x01, 0x02, 0x00}, 3},
        {"a code that runs past the terminator goes whole", {0x41, 0xF0, 0x00, 0x00, 0xF0, 0x00}, 5},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(wdstrlen(c.stream.data()), c.length) << c.why;
        Guarded<std::uint8_t> copy(static_cast<std::size_t>(c.length) + 1);
        wdstrcpy(copy.data(), c.stream.data());
        const Bytes expected(c.stream.begin(), c.stream.begin() + c.length + 1);
        EXPECT_EQ(copy.contents(), expected) << c.why;
        EXPECT_TRUE(copy.guards_hold()) << c.why;
    }
}

TEST(DocumentStream, MemoryHelpersWorkInBytesAndMindOverlap) {
    Bytes area{1, 2, 3, 4, 5, 6};
    KXwmemmove(area.data() + 1, area.data(), 4);
    EXPECT_EQ(area, (Bytes{1, 1, 2, 3, 4, 6}));
    KXwmemmove(area.data(), area.data() + 2, 4);
    EXPECT_EQ(area, (Bytes{2, 3, 4, 6, 4, 6}));
    KXwmemset(area.data() + 1, 0x1234, 4);
    EXPECT_EQ(area, (Bytes{2, 0x34, 0x34, 0x34, 0x34, 6}));
    const Bytes before = area;
    for (const std::int32_t count : {0, -1, INT32_MIN}) {
        KXwmemmove(area.data(), area.data() + 1, count);
        KXwmemset(area.data(), 0xFF, count);
        EXPECT_EQ(area, before) << count;
    }
}

} // namespace
