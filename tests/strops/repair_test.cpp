#include <kxstr/forms.h>
#include <kxstr/strops.h>

#include "reference/byte_copies.h"
#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr::reference;
using namespace kxstr::test;

TEST(ZeroEscape, EveryStringTravelsAsBytesAndComesBack) {
    std::vector<KxChar> empty{0};
    W6wstrFixExtChars(empty.data());
    EXPECT_EQ(std::memcmp(empty.data(), "\xFF", 2), 0);
    for (std::uint32_t ch = 1; ch < 0x10000; ++ch) {
        const std::vector<KxChar> text{static_cast<KxChar>(ch), 0x0041, 0};
        std::vector<KxChar> string = text;
        ASSERT_EQ(W6wstrFixExtChars(string.data()), string.data());
        ASSERT_EQ(string[1], 0xFF41);
        auto *bytes = reinterpret_cast<std::uint8_t *>(string.data());
        ASSERT_EQ(std::strlen(reinterpret_cast<const char *>(bytes)), 2 * 2 + 1u) << std::hex << ch;
        ASSERT_EQ(W6wstrUnFixExtChars(bytes), bytes);
        if (ch >> 8 == 0xFF || (ch & 0xFF) == 0xFF)
            ASSERT_NE(string, text) << std::hex << ch;
        else
            ASSERT_EQ(string, text) << std::hex << ch;
    }
}

KxChar fixed(std::uint32_t unit, std::uint16_t mode) {
    std::vector<KxChar> string{0x0041, static_cast<KxChar>(unit), 0};
    EXPECT_EQ(W6wzFix(string.data(), mode), string.data());
    EXPECT_EQ(string[0], 0x0041);
    return string[1];
}

TEST(CodeNumbering, ThirtySixCodesChangeAndComeBack) {
    unsigned changed = 0;
    for (std::uint32_t unit = 1; unit < 0x10000; ++unit) {
        const KxChar other = fixed(unit, 1);
        if (other == unit) continue;
        ++changed;
        ASSERT_EQ(fixed(other, 2), unit) << std::hex << unit;
        ASSERT_EQ(fixed(unit, 2), unit) << std::hex << unit << ": no value stands in both numberings";
    }
    EXPECT_EQ(changed, 36u);
    const struct {
        KxChar ours, other;
    } pairs[] = {{0xF90D, 0xFB13}, {0xF90A, 0xFB16}, {0xF90C, 0xFB1B}, {0xF909, 0xFC45},
                 {0xFE00, 0xFC66}, {0xFE1E, 0xFC75}, {0xFE01, 0xFC76}, {0xFE1F, 0xFC85}};
    for (const auto &pair : pairs) {
        EXPECT_EQ(fixed(pair.ours, 1), pair.other) << std::hex << pair.ours;
        EXPECT_EQ(fixed(pair.other, 2), pair.ours) << std::hex << pair.other;
        for (const std::uint16_t mode : std::initializer_list<std::uint16_t>{0, 3, 0x0101})
            EXPECT_EQ(fixed(pair.ours, mode) + fixed(pair.other, mode), pair.ours + pair.other) << mode;
    }
}

TEST(StripAmpersand, TextAndKey) {
    const struct {
        const char *source, *text;
        const char *double_byte_text; // null: as `text`, and the same key
        int key, double_byte_key;
    } cases[] = {
        {"&File", "File", nullptr, 0x46, 0},
        {"A&&B", "A&&B", nullptr, 0, 0},
        {"&&&A", "&&A", nullptr, 0x41, 0},
        {"&A&B", "AB", nullptr, 0x42, 0},
        {"Save&", "Save", nullptr, 0, 0},
        {"&\xE9", "\xE9", nullptr, -0x17, 0},
        {"(&F)", "(F)", "", 0x46, 0x2846},
        {"a(&\xE9", "a(\xE9", "a", -0x17, -0x17},
        {"(", "(", "", 0, 0x2800},
        {"()&X", "()X", "X", 0x58, 0x58},
        {"&(x)y", "(x)y", "y", 0x28, 0x2829},
    };
    for (const auto &c : cases) {
        for (const bool double_byte : {false, true}) {
            if (!runs_on(double_byte ? kJapanese : kWestern)) continue;
            const bool differs = double_byte && c.double_byte_text != nullptr;
            const std::string expected = differs ? c.double_byte_text : c.text;
            // Sources of their exact size; the second time over themselves.
            std::vector<char> source(c.source, c.source + std::strlen(c.source) + 1);
            std::vector<char> out(source.size());
            for (char *destination : {out.data(), source.data()}) {
                EXPECT_EQ(VaskStripAmpersand(destination, source.data()), differs ? c.double_byte_key : c.key)
                    << c.source;
                EXPECT_EQ(destination, expected) << c.source;
            }
        }
    }
}

TEST(Truncation, EveryShortTextAtEveryLimit) {
    for (const System &system : {kWestern, kJapanese, kSimplifiedChinese, kKorean, kTraditionalChinese}) {
        if (!runs_on(system)) continue;
        for_every_sequence(kDoubleByteAlphabet, 5, [&](const std::vector<char> &text) {
            const auto length = static_cast<std::int32_t>(text.size());
            // On a single-byte system the text is not looked at.
            for (std::int32_t limit = -1; limit <= (system.double_byte ? 6 : length); ++limit) {
                Guarded<char> buffer(7);
                buffer.store(text);
                buffer.data()[text.size()] = 0;
                const std::string expected = cut_to(std::string(text.begin(), text.end()), limit, system.ansi);
                ASSERT_EQ(WMBStrTrunc(buffer.data(), limit), static_cast<std::int32_t>(expected.size()));
                ASSERT_EQ(buffer.data(), expected) << system.ansi << " limit " << limit;
                ASSERT_TRUE(buffer.guards_hold());
                ASSERT_EQ(buffer.data()[6], Guarded<char>::kUntouched) << "behind text and terminator";
            }
        });
    }
}

TEST(SioForwarders, PassAllFourArgumentsOn) {
    run_on(kWestern);
    using Bytes = std::vector<std::uint8_t>;
    const Bytes stream{0xF2, 0x05, 0xF2, 0x41, 0x42, 0x43, 0};
    Bytes out(8, 0xA5), direct(8, 0xA5);
    EXPECT_EQ(W6dzTotz(stream.data(), out.data(), 6, KX_KEEP_ATTRIBUTES), 5);
    TpiKxToKxsioBuff(direct.data(), stream.data(), 6, KX_KEEP_ATTRIBUTES);
    EXPECT_EQ(out, direct);
    const std::vector<KxChar> string{0xF909, 0x0041, 0x0141, 0x0042, 0};
    EXPECT_EQ(W6wzTotz(string.data(), out.data(), 7, KX_KEEP_TABS | KX_TABS_AS_FE), 5);
    EXPECT_EQ(out, (Bytes{0xFE, 0x41, 0xFD, 0x41, 0x01, 0, direct[6], 0xA5}));
}

} // namespace
