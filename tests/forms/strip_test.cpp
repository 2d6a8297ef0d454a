#include <kxstr/forms.h>

#include "reference/bounded.h"
#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using reference::Code;
using namespace test;

// What becomes of a code (of a document stream, or a unit of a KX string) where all of `flags` are set, after stripping
// and in sio form. The first row of a code with fitting flags counts; without one the code is dropped.
template <class Text> struct Row {
    Text code;
    unsigned flags;
    Text stripped;
    Code sio;
    std::size_t counts = sio.size(); // attributes count as the three bytes of a document stream
};
constexpr unsigned kNever = 0x100;
template <class Text> using Rows = std::vector<Row<Text>>;

// One code of each kind; an index, a set and a group's content that look like terminators; attributes with and without
// a code of their own.
const Rows<Code> kStreamRows{
    {{0x41}, 0, {0x41}, {0x41}},
    {{0x09}, kNever, {}, {}},
    {{0x80}, 0, {0x80}, {0x20}},
    {{0x84}, KX_HYPHENS_AS_TEXT, {0x2D}, {0x2D}},
    {{0x85}, KX_HYPHENS_AS_TEXT, {0x2D}, {0x2D}},
    {{0xCC}, KX_KEEP_HARD_ENDS, {0xCC}, {0x0D}},
    {{0xCF}, KX_KEEP_SOFT_ENDS, {0xCF}, {0x0D}},
    {{0xCF}, KX_SOFT_ENDS_AS_SPACES, {0x80}, {0x20}},
    {{0xFF}, kNever, {}, {}},
    {{0xF0, 0x41, 0x04, 0xF0}, 0, {0xF0, 0x41, 0x04, 0xF0}, {0xFD, 0x41, 0x04}},
    {{0xF0, 0x00, 0x00, 0xF0}, 0, {0xF0, 0x00, 0x00, 0xF0}, {0xFD, 0x00, 0x00}},
    {{0xF2, 0x05, 0xF2}, KX_KEEP_ATTRIBUTES, {0xF2, 0x05, 0xF2}, {0x0E, 0x06}, 3},
    {{0xF3, 0x0C, 0xF3}, KX_KEEP_ATTRIBUTES, {0xF3, 0x0C, 0xF3}, {0x1C}},
    {{0xD4, 0x01, 0x08, 0x00, 0x00, 0x08, 0x00, 0xD4}, kNever, {}, {}},
};

using Units = std::vector<KxChar>;
const Rows<Units> kStringRows{
    {{0x0041}, 0, {0x0041}, {0x41}},
    {{0x001F}, kNever, {}, {}},
    {{0x0129}, 0, {0x0129}, {0xFD, 0x29, 0x01}},
    {{0x0084}, KX_HYPHENS_AS_TEXT, {0x2D}, {0x2D}},
    {{0x0085}, KX_HYPHENS_AS_TEXT, {0x2D}, {0x2D}},
    {{0xFB05}, KX_HYPHENS_AS_TEXT, {0x2D}, {0x2D}},
    {{KX_TAB}, KX_KEEP_TABS | KX_TABS_AS_FE, {KX_TAB}, {0xFE}},
    {{KX_TAB}, KX_KEEP_TABS, {KX_TAB}, {0x09}},
    {{KX_LINE_FEED}, KX_KEEP_HARD_ENDS, {KX_LINE_FEED}, {0x0D}},
    {{KX_FORM_FEED}, KX_KEEP_HARD_ENDS, {KX_FORM_FEED}, {}},
    {{KX_CARRIAGE_RETURN}, KX_KEEP_SOFT_ENDS, {KX_CARRIAGE_RETURN}, {0x0D}},
    {{KX_CARRIAGE_RETURN}, KX_SOFT_ENDS_AS_SPACES, {0x20}, {0x20}},
    {{0xF90E}, kNever, {}, {}},
    {{0xFE00}, KX_KEEP_ATTRIBUTES, {0xFE00}, {0x0E, 0x01}, 3},
    {{0xFE18}, KX_KEEP_ATTRIBUTES, {0xFE18}, {0x1D}},
    {{0xFE1D}, KX_KEEP_ATTRIBUTES, {0xFE1D}, {0x15}},
    {{0xFE1F}, KX_KEEP_ATTRIBUTES, {0xFE1F}, {0x0F, 0x10}, 3},
    {{0xFE20}, kNever, {}, {}},
    {{0xFF41}, 0, {0xFF41}, {}},
};
// Of a double-byte system only.
const Row<Units> kDoubleByteRow{{0x2400}, 0, {0x2400}, {0xFD, 0x00, 0x24}};

// The rows that count for the codes of a sequence.
template <class Text> Rows<Text> left_of(const Rows<Text> &sequence, const Rows<Text> &rows, unsigned flags) {
    Rows<Text> left;
    for (const auto &item : sequence) {
        const auto counts = [&](const auto &row) { return row.code == item.code && (row.flags & ~flags) == 0; };
        const auto row = std::ranges::find_if(rows, counts);
        if (row != rows.end()) left.push_back(*row);
    }
    return left;
}

// Strips every text of up to two codes with all flags at every count; `room_of` a count: units for the codes.
template <class Unit, class Room, class Strip, class ToSio>
void expect_all(const Rows<std::vector<Unit>> &rows, Room room_of, Strip strip, ToSio to_sio) {
    using Text = std::vector<Unit>;
    Rows<Text> codes;
    std::ranges::unique_copy(rows, std::back_inserter(codes), {}, &Row<Text>::code);
    reference::for_every_sequence(codes, 2, [&](const Rows<Text> &sequence) {
        Text source;
        for (const auto &item : sequence)
            source.insert(source.end(), item.code.begin(), item.code.end());
        source = terminated(source);
        for (unsigned flags = 0; flags < 0x80; ++flags) {
            const Rows<Text> left = left_of(sequence, rows, flags);
            for (unsigned count = 1; count <= 10; ++count) {
                Text want;
                Code sio;
                std::size_t counted = 0;
                bool sio_has_room = true;
                for (const auto &row : left) {
                    if (want.size() + row.stripped.size() > room_of(count)) break;
                    want.insert(want.end(), row.stripped.begin(), row.stripped.end());
                    // A unit without a sio form takes no room, but needs some.
                    sio_has_room = sio_has_room && counted + std::max(row.sio.size(), std::size_t{1}) < count;
                    if (!sio_has_room) continue;
                    sio.insert(sio.end(), row.sio.begin(), row.sio.end());
                    counted += row.counts;
                }
                want = terminated(want);
                sio = terminated(sio);
                std::size_t result = 0;
                const auto stripped =
                    written_by<Unit>(want.size(), [&](auto *to) { result = strip(to, source.data(), count, flags); });
                ASSERT_EQ(result, want.size() * sizeof(Unit)) << test::hex(source) << flags << ' ' << count;
                ASSERT_EQ(stripped, want) << test::hex(source) << flags << ' ' << count;
                auto bytes = written_by<std::uint8_t>(
                    count, [&](auto *to) { result = to_sio(to, source.data(), count, flags); });
                ASSERT_EQ(result, counted) << test::hex(source) << flags << ' ' << count;
                bytes.resize(sio.size());
                ASSERT_EQ(bytes, sio) << test::hex(source) << flags << ' ' << count;
            }
        }
    });
}

TEST(Strip, StreamsOfFewCodes) {
    const auto strip = [](auto *to, auto *from, auto count, auto flags) {
        return TpiKxDocStripBuff(to, from, 0xABCD0000u | count, flags);
    };
    expect_all<std::uint8_t>(
        kStreamRows, [](unsigned count) { return count - 1; }, strip, TpiKxToKxsioBuff);
}

TEST(Strip, StringsOfFewUnits) {
    const auto strip = [](auto *to, auto *from, auto count, auto flags) {
        return TpiKxLongStripBuff(to, from, static_cast<std::int32_t>(count), flags);
    };
    for (const auto &system : {test::kWestern, test::kJapanese}) {
        if (!runs_on(system)) continue;
        Rows<Units> rows = kStringRows;
        rows.push_back(kDoubleByteRow);
        if (!system.double_byte) rows.back().flags = kNever;
        expect_all<KxChar>(
            rows, [](unsigned count) { return count / 2; }, strip, TpiKxwzToKxsioBuff);
    }
}

TEST(Strip, ACountOfZeroWritesNothing) {
    const Code stream{0x41, 0};
    Units string{0x41, 0};
    EXPECT_EQ(TpiKxLongStripBuff(string.data(), string.data() + 1, -1, 0), 2u) << "but for a terminator";
    EXPECT_EQ(string[0], 0);
    EXPECT_EQ(TpiKxLongStripBuff(nullptr, string.data(), 0, 0), 0u);
    written_by<std::uint8_t>(0, [&](auto *to) {
        EXPECT_EQ(TpiKxDocStripBuff(to, stream.data(), 0x10000, 0), 0u);
        EXPECT_EQ(TpiKxToKxsioBuff(to, stream.data(), 0x10000, 0), 0u);
        EXPECT_EQ(TpiKxwzToKxsioBuff(to, string.data(), 0x10000, 0), 0u);
    });
}

TEST(Strip, NothingFollowsASioCodeThatDoesNotFit) {
    const Units string{0x0142, 0x0142, 0x0041, 0};
    const auto bytes =
        written_by<std::uint8_t>(6, [&](auto *to) { EXPECT_EQ(TpiKxwzToKxsioBuff(to, string.data(), 6, 0), 3u); });
    EXPECT_EQ(test::hex(bytes), "FD 42 01 00 A5 A5 ");
}

TEST(Strip, TextCanBeStrippedWhereItStands) {
    Code stream{0x09, 0x41, 0xF2, 0x05, 0xF2, 0xF0, 0x41, 0x04, 0xF0, 0xCC, 0};
    EXPECT_EQ(TpiKxToKxsioBuff(stream.data(), stream.data(), 11, KX_KEEP_ATTRIBUTES | KX_KEEP_HARD_ENDS), 8u);
    EXPECT_EQ(test::hex(Code(stream.begin(), stream.begin() + 8)), "41 0E 06 FD 41 04 0D 00 ");
    std::vector<KxChar> string{0x001F, 0x0041, KX_CARRIAGE_RETURN, 0x0042, 0};
    EXPECT_EQ(TpiKxLongStripBuff(string.data(), string.data(), 10, KX_SOFT_ENDS_AS_SPACES), 8u);
    EXPECT_EQ(test::hex(string), "41 20 42 00 00 ");
}

} // namespace
