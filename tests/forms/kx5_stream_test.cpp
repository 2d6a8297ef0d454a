#include <kxstr/forms.h>

#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using reference::for_every_sequence;
using namespace test;
using Bytes = std::vector<std::uint8_t>;
using Units = std::vector<KxChar>;

// A code of a KX 5 stream: the character it stands for (skipped codes stand for 0 here), and whether it takes room.
struct Code5 {
    Bytes bytes;
    KxChar ch;
    bool takes_room = ch != 0;
};
using Codes5 = std::vector<Code5>;

const Codes5 kFunctionCodes{
    {{0x09}, 0},
    {{0x0A}, 0xF90A},
    {{0x0C}, 0xF90C},
    {{0x0D}, 0xF90D},
    {{0xBF}, 0},
    {{0xC0, 0x00, 0x01, 0xC0}, 0x0100},
    {{0xC3, 0x05, 0xC3}, 0xFE0A},
    {{0xC4, 0xFF, 0xC4}, 0xFEFF},
    {{0xCF}, 0}, // of unknown length: stepped over as one byte
    {{0xD0, 0x00, 0x00, 0x00}, 0},
    {{0xFF, 0x0A, 0x02, 0x00, 0x41, 0x00}, 0},
};

// Tries every sequence of up to three text and function codes at every size of the destination.
template <class Read> void expect_reading(Codes5 alphabet, Read read) {
    alphabet.insert(alphabet.end(), kFunctionCodes.begin(), kFunctionCodes.end());
    for_every_sequence(alphabet, 3, [&](const Codes5 &codes) {
        Bytes source;
        for (const Code5 &code : codes)
            source.insert(source.end(), code.bytes.begin(), code.bytes.end());
        source = terminated(source);
        for (std::uint32_t units = 0; units <= codes.size() + 2; ++units) {
            Units want;
            std::uint32_t room = units - 1;
            for (const Code5 &code : codes) {
                if (units == 0 || room == 0) break;
                if (code.ch != 0) want.push_back(code.ch);
                if (code.takes_room) --room;
            }
            auto got = written_by<KxChar>(units, [&](auto *to) {
                ASSERT_EQ(read(source.data(), to, 0x70000 + 2 * units), to);
                ASSERT_EQ(read(source.data(), to, 2 * units + 1), to); // the odd byte is not used
            });
            if (units == 0) continue;
            got.resize(want.size() + 1);
            ASSERT_EQ(got, terminated(want)) << hex(source) << units;
        }
    });
}

TEST(Kx5Stream, SingleByteText) {
    run_on(test::kWestern);
    expect_reading({{{0x20}, 0x0020}, {{0x41}, 0x0041}, {{0x7F}, 0x007F}}, W5dzTowz);
}

TEST(Kx5Stream, PairsOfADoubleByteSystem) {
    run_on(test::kJapanese);
    expect_reading(
        {
            {{0x20}, 0x0020},
            {{0x21, 0x41}, 0x0041},
            {{0x22, 0x21}, 0x0B00},
            {{0x22, 0x20}, 0x0BFF}, // wraps
            {{0x23, 0x21}, 0x2400},
            {{0x24, 0x21}, 0x245E},
            {{0x24, 0xFF}, 0x243C}, // wraps
            {{0x7E, 0x7E}, 0x51BB},
            {{0x7F, 0x21}, 0, true},
        },
        W5dzTowz);
}

TEST(Kx5Stream, PairsOfAChineseStream) {
    run_on(test::kWestern); // pairs even so
    for (const std::uint32_t selector : {0x83u, 0x84u}) {
        const unsigned base = selector == 0x83 ? 0xA500 : 0x8200;
        const auto ch = [base](unsigned offset) { return static_cast<KxChar>(base + offset); };
        expect_reading(
            {
                {{0x20}, 0x0020},
                {{0x21, 0x41}, 0x0041},
                {{0x22, 0x21}, ch(0)},
                {{0x23, 0x21}, ch(0x5E)},
                {{0x24, 0x64}, ch(0xFF)}, // the last of a set
                {{0x24, 0x65}, ch(0x101)},
                {{0x22, 0x20}, ch(0xFF)}, // wraps
                {{0x7F, 0x7E}, ch(0x22A5)},
            },
            [selector](auto... arguments) { return lW5CdzTowz(arguments..., 0xFF00 + selector); });
    }
}

TEST(Kx5Stream, HalfAPairAtTheEndEndsIt) {
    run_on(test::kJapanese);
    const Bytes source{0x23, 0x21, 0x23, 0};
    EXPECT_EQ(hex(written_by<KxChar>(2, [&](auto *to) { W5dzTowz(source.data(), to, 100); })), "2400 00 ");
    EXPECT_EQ(hex(written_by<KxChar>(2, [&](auto *to) { lW5CdzTowz(source.data(), to, 100, 0x83); })), "A55E 00 ");
}

TEST(Kx5Stream, WritingLeavesOutWhatDoesNotFitAndGoesOn) {
    const Units alphabet{0x0041, 0x00FF, 0x0100, 0xF8FF, 0xF900, 0xFFFF};
    for_every_sequence(alphabet, 4, [](const Units &units) {
        const Units source = terminated(units);
        for (std::uint32_t size = 0; size <= 4 * units.size() + 3; ++size) {
            Bytes want;
            for (const KxChar unit : units) {
                const std::size_t room = size - 1 - want.size();
                if (size == 0 || room == 0) break;
                if (unit < 0x100) {
                    want.push_back(static_cast<std::uint8_t>(unit));
                } else if (unit < 0xF900 && room > 4) {
                    want.insert(want.end(),
                                {0xC0, static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(unit >> 8), 0xC0});
                }
            }
            auto got = written_by<std::uint8_t>(
                size, [&](auto *to) { ASSERT_EQ(WwzTo5dz(source.data(), to, 0x10000 + size), to); });
            if (size == 0) continue;
            got.resize(want.size() + 1);
            ASSERT_EQ(got, terminated(want)) << hex(source) << size;
        }
    });
}

} // namespace
