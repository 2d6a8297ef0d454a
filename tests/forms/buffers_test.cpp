#include <kxstr/forms.h>

#include "codepage/selection.h"
#include "reference/bounded.h"
#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using namespace reference;
using namespace test;

Code extended(unsigned ch) {
    return {0xF0, static_cast<std::uint8_t>(ch), static_cast<std::uint8_t>(ch >> 8), 0xF0};
}

TEST(NativeToStream, EveryRoomOfEveryEntry) {
    const auto dbcs_for_oem = [](auto... arguments) { return str_DBCS_OEMorANSItoKX(arguments..., 1); };
    const Codes western{{0x41}, extended(0x0129), extended(0xF909), extended(0x0C81), {0x7C}, {0x5A}};
    const Codes dos{{0x41}, extended(0x0401), extended(0x050C), {0x5A}};
    const Codes japanese{{0x41}, extended(0x255F), extended(0x0B10), {0x5C}, extended(0x2BD0)};
    const Codes by_bytes{{0x41}, extended(0x0B10), {0x5C}, {0x40}};
    const struct {
        const char *why;
        const test::System &system;
        std::uint32_t (*convert)(std::uint8_t *, const char *, std::uint32_t);
        const char *source;
        const Codes &want;
    } cases[] = {
        {"ANSI", test::kWestern, str_AnsiToKx, "A\xE9\t\x81\xA6\x7FZ", western},
        {"ANSI, the system's choice", test::kWestern, TpiAnsiToKxBuff, "A\xE9\t\x81\xA6\x7FZ", western},
        {"OEM: glyphs for control characters, FF dropped", test::kWestern, str_OemToKx, "A\t\x7F\xFFZ", dos},
        {"OEM, the system's choice", test::kWestern, TpiOemToKxBuff, "A\t\x7F\xFFZ", dos},
        {"pairs", test::kJapanese, TpiAnsiToKxBuff, "A\x82\xA0\xB1\\\xF0\x54", japanese},
        {"pairs, OEM with the ANSI page", test::kJapanese, TpiOemToKxBuff, "A\x82\xA0\xB1\\\xF0\x54", japanese},
        {"pair without a character dropped", test::kJapanese, dbcs_for_oem, "A\x82\xA0\x81\x7F\xB1\\\xF0\x54",
         japanese},
        {"lone lead byte dropped", test::kJapanese, dbcs_for_oem, "A\x82\xA0\xB1\\\xF0\x54\x82", japanese},
        {"bytes by themselves when asked for", test::kJapanese, str_AnsiToKx, "A\x82\xA0\xB1\\\xF0@", by_bytes},
    };
    for (const auto &c : cases) {
        if (!runs_on(c.system)) continue;
        const std::vector<char> source(c.source, c.source + std::strlen(c.source) + 1);
        for (std::uint32_t count = 0; count <= reference::joined(c.want).size() + 2; ++count) {
            std::uint32_t result = 0;
            auto got = written_by<std::uint8_t>(
                count, [&](auto *to) { result = c.convert(to, source.data(), 0xFFFF0000 | count); });
            const Code want = terminated(reference::joined(reference::cut(c.want, count == 0 ? 0 : count - 1)));
            ASSERT_EQ(result, count == 0 ? 0 : want.size()) << c.why << ' ' << count;
            if (count == 0) continue;
            got.resize(want.size());
            ASSERT_EQ(hex(got), hex(want)) << c.why << ' ' << count;
        }
    }
}

// A code of a document stream and what it becomes in native text; a code that becomes nothing may still count.
struct Converted {
    Code code;
    Code native;
    std::size_t count = native.size();
};

TEST(StreamToNative, StreamsOfFewCodesAtEveryRoom) {
    const std::vector<Converted> common{
        {{0x41}, {0x41}}, {{0x80}, {0x80}},         {{0xCC}, {0xCC}},           {{0xCF}, {0xCF}},
        {{0x84}, {}},     {{0xF2, 0x05, 0xF2}, {}}, {extended(0x0C81), {0x81}}, {extended(0x0E00), {}, 1}};
    const struct {
        const test::System &system;
        std::uint32_t (*convert)(char *, const std::uint8_t *, std::uint32_t);
        Converted own;
    } cases[] = {
        {test::kWestern, TpiKxToAnsiBuff, {extended(0x0129), {0xE9}}},
        {test::kWestern, TpiKxToOemBuff, {extended(0x0129), {0x82}}},
        {test::kJapanese, TpiKxToAnsiBuff, {extended(0x255F), {0x82, 0xA0}}},
        {test::kJapanese, TpiKxToOemBuff, {extended(0x255F), {0x82, 0xA0}}},
    };
    for (const auto &c : cases) {
        if (!runs_on(c.system)) continue;
        str_SetCodePage(); // the call that first asks for a descriptor may leave more behind its result
        std::vector<Converted> alphabet = common;
        alphabet.push_back(c.own);
        reference::for_every_sequence(alphabet, 3, [&](const std::vector<Converted> &codes) {
            Code source;
            std::size_t stripped = 0;
            for (const Converted &item : codes) {
                source.insert(source.end(), item.code.begin(), item.code.end());
                if (item.count != 0) stripped += item.code.size();
            }
            source = terminated(source);
            for (std::uint32_t count = 1; count <= stripped + 2; ++count) {
                // What stripping leaves at this room, then what of that converts.
                Code want;
                std::size_t counted = 0;
                std::size_t room = count - 1;
                for (const Converted &item : codes) {
                    if (item.count == 0) continue;
                    if (item.code.size() > room) break;
                    room -= item.code.size();
                    if (counted + item.count > count - 1) break;
                    want.insert(want.end(), item.native.begin(), item.native.end());
                    counted += item.count;
                }
                std::uint32_t result = 0;
                auto got = written_by<char>(count, [&](auto *to) { result = c.convert(to, source.data(), count); });
                ASSERT_EQ(result, counted + 1) << hex(source) << count;
                ASSERT_EQ(hex(Code(got.begin(), got.begin() + static_cast<long>(want.size()) + 1)),
                          hex(terminated(want)))
                    << hex(source) << count;
            }
        });
    }
}

TEST(Descriptors, AreFilledOnceAndWhenNeeded) {
    run_on(test::kWestern);
    const codepage::CodePageState &state = codepage::code_page_state();
    std::vector<std::uint8_t> out(16);
    EXPECT_EQ(str_AnsiToKx(out.data(), "plain", 16), 6u);
    char native[16];
    const Code plain{'a', 'b', 0x84, 'c', 0};
    EXPECT_EQ(TpiKxToAnsiBuff(native, plain.data(), 16), 4u);
    EXPECT_STREQ(native, "abc");
    EXPECT_FALSE(state.descriptors_ready);
    TpiSetCodepage();
    EXPECT_EQ(state.ansi.input_code_page, 1252u);
    EXPECT_FALSE(state.descriptors_ready);
    EXPECT_EQ(TpiGetOem(0x0129), 0x82u);
    EXPECT_TRUE(state.descriptors_ready);

    // Another Windows code page counts when the descriptors are filled again.
    codepage::keep_windows_code_page(1251);
    EXPECT_EQ(str_SetCodePage(), 1u);
    EXPECT_EQ(TpiAnsiToKx(0xE9), 0x0129u);
    TpiSetCodepage();
    const std::uint32_t cyrillic = TpiAnsiToKx(0xE9);
    EXPECT_EQ(cyrillic >> 8, 10u);
    codepage::keep_windows_code_page(1252);
    str_ClrCodePage();
    EXPECT_EQ(state.oem.output_code_page, 0u);
    EXPECT_EQ(str_SetCodePage(), 1u);
    EXPECT_EQ(TpiGetAnsi(0x0129), 0xE9u);
    EXPECT_EQ(TpiGetAnsi(cyrillic), 0xFFFFu);
}

TEST(Descriptors, OneForBothOnADoubleByteSystem) {
    run_on(test::kKorean);
    std::uint8_t out[4];
    EXPECT_EQ(str_DBCS_OEMorANSItoKX(out, "a~", 4, 0), 3u);
    EXPECT_FALSE(codepage::code_page_state().descriptors_ready);
    EXPECT_EQ(str_DBCS_OEMorANSItoKX(out, "\\", 4, 0), 2u);
    EXPECT_TRUE(codepage::code_page_state().descriptors_ready) << "the backslash goes through the code page";
    EXPECT_EQ(TpiOemToKx(0xB0A1), 0x5A5Eu);
    EXPECT_EQ(TpiGetOem(0x5A5E), 0xB0A1u);
}

} // namespace
