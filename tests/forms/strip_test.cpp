#include <gtest/gtest.h>
#include <kxstr/forms.h>
#include <kxstr/frame.h>

#include "reference/bounded.h"
#include "reference/streams.h"
#include "support/hex.h"
#include "support/process_state.h"
#include "support/written_by.h"

namespace {

using namespace kxstr;
using reference::Code;
using reference::Codes;
using test::runs_on;
using test::terminated;
using test::written_by;

// One code of each kind; an index, a set and a group's content that look like terminators; attributes with and without
// a code of their own.
const Codes kStreamCodes{{0x41},
                         {0x09},
                         {0x80},
                         {0x84},
                         {0xCC},
                         {0xCF},
                         {0xFF},
                         {0xF0, 0x41, 0x04, 0xF0},
                         {0xF0, 0x00, 0x00, 0xF0},
                         {0xF2, 0x05, 0xF2},
                         {0xF3, 0x0C, 0xF3},
                         {0xD4, 0x01, 0x08, 0x00, 0x00, 0x08, 0x00, 0xD4}};

TEST(Strip, StreamsOfFewCodesAgreeWithThePlainVersion) {
    reference::for_every_sequence(kStreamCodes, 3, [](const Codes &codes) {
        const Code source = terminated(reference::joined(codes));
        for (unsigned flags = 0; flags < 0x20; ++flags) {
            const Codes kept = reference::stripped(codes, flags);
            const auto whole = static_cast<std::uint32_t>(reference::joined(kept).size() + 1);
            for (std::uint32_t count = 1; count <= whole + 1; ++count) {
                const Codes fitting = reference::cut(kept, count - 1);
                const Code want = reference::joined(fitting);
                std::uint32_t result = 0;
                auto got = written_by<std::uint8_t>(count, [&](auto *to) {
                    result = TpiKxDocStripBuff(to, source.data(), 0xABCD0000u | count, flags);
                });
                ASSERT_EQ(result, want.size() + 1) << test::hex(source) << flags << ' ' << count;
                got.resize(result);
                ASSERT_EQ(got, terminated(want)) << test::hex(source) << flags << ' ' << count;

                std::vector<reference::Sio> forms;
                for (const Code &code : fitting)
                    forms.push_back(reference::sio(code));
                const reference::Sio sio = reference::sio_text(forms, count - 1);
                got = written_by<std::uint8_t>(
                    count, [&](auto *to) { result = TpiKxToKxsioBuff(to, source.data(), count, flags); });
                ASSERT_EQ(result, sio.count) << test::hex(source) << flags << ' ' << count;
                got.resize(sio.bytes.size() + 1);
                ASSERT_EQ(got, terminated(sio.bytes)) << test::hex(source) << flags << ' ' << count;
            }
        }
    });
}

TEST(Strip, StringsOfFewUnitsAgreeWithThePlainVersion) {
    using Units = std::vector<KxChar>;
    const Units units{0x0041, 0x001F, 0x0129, 0x01FF, 0x0084, 0xFB05, 0xF909, 0xF90A, 0xF90C, 0xF90D, 0xF90E,
                      0xFE00, 0xFE05, 0xFE18, 0xFE1D, 0xFE1F, 0xFE20, 0xFF41, 0x2400, 0xDFFF, 0xE000};
    for (const auto &system : {test::kWestern, test::kJapanese}) {
        if (!runs_on(system)) continue;
        reference::for_every_sequence(units, 2, [](Units source) {
            source.insert(source.begin(), 0x0142); // so that three-byte codes meet every end
            source = terminated(source);
            for (unsigned flags = 0; flags < 0x80; ++flags) {
                Units kept;
                for (const KxChar unit : source)
                    if (const unsigned left = reference::stripped(unit, flags, ValidKxCharacter(unit) != 0))
                        kept.push_back(static_cast<KxChar>(left));
                for (int count = -1; count <= 11; ++count) {
                    Units want = kept;
                    if (count / 2 < static_cast<int>(want.size()))
                        want.resize(static_cast<unsigned>(std::max(0, count / 2)));
                    std::vector<reference::Sio> forms;
                    for (const KxChar unit : want)
                        forms.push_back(reference::sio(unit, flags));
                    want = terminated(want);

                    std::uint32_t result = 0;
                    auto got = written_by<KxChar>(count == 0 ? 0 : want.size(), [&](auto *to) {
                        result = TpiKxLongStripBuff(to, source.data(), count, flags);
                    });
                    ASSERT_EQ(result, 2 * got.size()) << test::hex(source) << flags << ' ' << count;
                    if (count != 0) {
                        ASSERT_EQ(got, want) << test::hex(source) << flags << ' ' << count;
                    }

                    if (count <= 0) continue;
                    const auto room = static_cast<std::size_t>(count) - 1;
                    const reference::Sio sio = reference::sio_text(forms, room);
                    auto bytes = written_by<std::uint8_t>(room + 1, [&](auto *to) {
                        result = TpiKxwzToKxsioBuff(to, source.data(), static_cast<std::uint32_t>(count), flags);
                    });
                    ASSERT_EQ(result, sio.count) << test::hex(source) << flags << ' ' << count;
                    bytes.resize(sio.bytes.size() + 1);
                    ASSERT_EQ(bytes, terminated(sio.bytes)) << test::hex(source) << flags << ' ' << count;
                }
            }
        });
    }
}

TEST(Strip, ACountOfZeroWritesNothing) {
    const Code stream{0x41, 0};
    const std::vector<KxChar> string{0x41, 0};
    written_by<std::uint8_t>(0, [&](auto *to) {
        EXPECT_EQ(TpiKxDocStripBuff(to, stream.data(), 0x10000, 0), 0u);
        EXPECT_EQ(TpiKxToKxsioBuff(to, stream.data(), 0x10000, 0), 0u);
        EXPECT_EQ(TpiKxwzToKxsioBuff(to, string.data(), 0x10000, 0), 0u);
    });
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
