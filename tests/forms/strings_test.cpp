#include <kxstr/forms.h>

#include "reference/bounded.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using namespace reference;
using namespace test;
using Units = std::vector<KxChar>;
using Chars = std::vector<char>;

constexpr std::uint32_t kIgnored = 0x50000; // the upper half of a count

// What `convert(source, destination, arguments...)` writes into a destination of `size`; its result is 1.
template <class Unit, class Source, class... Arguments>
std::vector<Unit> converted(std::size_t size, std::uint32_t (*convert)(const Source *, Unit *, Arguments...),
                            const Source *source, std::type_identity_t<Arguments>... arguments) {
    return written_by<Unit>(size, [&](Unit *to) { EXPECT_EQ(convert(source, to, arguments...), 1u); });
}

template <class Text> Text first(const Text &text, std::size_t items) {
    return {text.begin(), text.begin() + static_cast<long>(std::min(items, text.size()))};
}

Chars native_text(const Codes &codes) {
    const Code bytes = terminated(reference::joined(codes));
    return {bytes.begin(), bytes.end()};
}

// A native text, code by code, and the KX string it is.
struct NativeText {
    test::System system;
    bool oem;
    Codes native;
    Units kx;
};

const NativeText kNativeTexts[]{
    {test::kWestern, false, {}, {}},
    {test::kWestern, false, {{'A'}, {0xE9}, {9}, {0x81}}, {0x0041, 0x0129, 0xF909, 0x0C81}},
    {test::kWestern, true, {{'A'}, {0x82}, {1}}, {0x0041, 0x0129, 0x0507}},
    {test::kJapanese, false, {{'A'}, {0x82, 0xA0}, {0xB1}, {0xF0, 0x40}}, {0x0041, 0x255F, 0x0B10, 0x2BBC}},
    {test::kJapanese, true, {{0x82, 0xA0}, {0xB1}, {'\\'}}, {0x255F, 0x0B10, 0x005C}},
    {test::kKorean, false, {{0xB0, 0xA1}, {0xA1, 0xA1}, {'.'}}, {0x5A5E, 0x5300, 0x002E}},
    {test::kSimplifiedChinese, false, {{0xB0, 0xA1}, {0x81, 0xA1}, {10}}, {0x8787, 0x2BBC, 0xF90A}},
    {test::kTraditionalChinese, false, {{0xA4, 0x40}, {0x81, 0x40}, {0xA1, 0xA1}}, {0xA6D8, 0x2BBC, 0xA53F}},
};

TEST(NativeStrings, BothWaysAtEveryCount) {
    for (const NativeText &text : kNativeTexts) {
        if (!runs_on(text.system)) continue;
        const Chars native = native_text(text.native);
        const Units kx = terminated(text.kx);
        EXPECT_EQ(converted(kx.size(), text.oem ? W6ozTowz : W6azTowz, native.data()), kx);
        if (text.oem) {
            EXPECT_EQ(converted(native.size(), W6wzTooz, kx.data()), native);
        }
        const auto to_units = text.oem ? W6ozTowzN : W6azTowzN;
        const auto to_native = text.oem ? W6wzToozN : W6wzToazN;
        EXPECT_EQ(converted(0, to_units, native.data(), kIgnored), Units{});
        EXPECT_EQ(converted(0, to_native, kx.data(), kIgnored), Chars{});
        for (std::uint32_t count = 1; count <= native.size() + 1; ++count) {
            SCOPED_TRACE(hex(native) + std::to_string(count));
            const Units units = terminated(first(text.kx, count - 1));
            EXPECT_EQ(converted(units.size(), to_units, native.data(), kIgnored + count), units);
            const Chars by_characters = native_text(first(text.native, count - 1));
            EXPECT_EQ(converted(by_characters.size(), to_native, kx.data(), kIgnored + count), by_characters);
            if (text.oem) continue;
            const Chars by_bytes = native_text(reference::cut(text.native, count - 1));
            EXPECT_EQ(first(converted(count, W6wzToazNB, kx.data(), kIgnored + count), by_bytes.size()), by_bytes);
        }
    }
}

TEST(NativeStrings, ConvertInPlace) {
    for (const NativeText &text : kNativeTexts) {
        if (!runs_on(text.system)) continue;
        const Chars native = native_text(text.native);
        const Units kx = terminated(text.kx);
        // On a double-byte system the source may begin anywhere in the destination's first bytes.
        for (std::size_t offset = 0; offset <= (text.system.double_byte ? native.size() : 0); ++offset) {
            Units buffer(std::max(kx.size(), (offset + native.size() + 1) / 2));
            char *source = reinterpret_cast<char *>(buffer.data()) + offset;
            std::copy(native.begin(), native.end(), source);
            EXPECT_EQ((text.oem ? W6ozTowz : W6azTowz)(source, buffer.data()), 1u);
            EXPECT_EQ(first(buffer, kx.size()), kx) << hex(native) << offset;
        }
        Units buffer = kx;
        char *bytes = reinterpret_cast<char *>(buffer.data());
        (text.oem ? W6wzToozN : W6wzToazN)(buffer.data(), bytes, 0xFFFF);
        EXPECT_STREQ(bytes, native.data());
    }
}

TEST(NativeStrings, WhatDoesNotConvert) {
    run_on(test::kWestern);
    EXPECT_EQ(hex(converted(4, W6azTowz, "A\x7FZ")), "41 FFFF 5A 00 ");
    const Units source{0x0041, 0x2400, 0x005A, 0};
    for (const auto convert : {W6wzToazN, W6wzToozN, W6wzToazNB})
        EXPECT_EQ(hex(converted(4, convert, source.data(), 4)), "41 80 5A 00 ");
    char untouched = 'u';
    EXPECT_EQ(W6wzToazNB(nullptr, &untouched, 1), 0u);
    EXPECT_EQ(W6wzToazNB(source.data(), nullptr, 1), 0u);
    EXPECT_EQ(untouched, 'u');
}

TEST(NativeStrings, PairsThatDoNotConvert) {
    run_on(test::kJapanese);
    EXPECT_EQ(hex(converted(2, W6azTowz, "A\x82")), "41 00 "); // a lone lead byte
    EXPECT_EQ(hex(converted(3, W6azTowz, "\x81\x7F\x82\xA0")), "FFFF 255F 00 ");
}

TEST(AnsiEx, EveryCombinationOfFlags) {
    run_on(test::kJapanese);
    const Units source{0x0041, 0xF90A, 0x255F, 0xF90D, 0x0E00, 0xF90C, 0xF909, 0};
    for (std::uint32_t flags = 0; flags < 32; ++flags) {
        std::string want = "A";
        want += flags & 4 ? "\r\n" : "\n";
        want += "\x82\xA0";
        want += flags & 2 ? " " : flags & 4 ? "\r\n" : "\r";
        if (flags & 1) want += '\x80';
        want += "\f\t";
        const std::size_t size = flags & 8 ? 0 : want.size() + 1; // measuring writes nothing
        const auto got = written_by<char>(
            size, [&](char *to) { EXPECT_EQ(W6wzToazEx(source.data(), to, flags), want.size()) << flags; });
        if (size != 0) {
            EXPECT_EQ(hex(got), hex(want + '\0')) << flags;
        }
        EXPECT_EQ(W6wzToazEx(source.data() + 7, nullptr, flags | 8), 0u);
    }
    EXPECT_EQ(hex(written_by<char>(10, [&](char *to) { EXPECT_EQ(W6wzToaz(source.data(), to), 8u); })),
              "41 0A 82 A0 0D 80 0C 09 00 A5 ");
}

TEST(UnicodeStrings, BothWaysAtEveryCount) {
    run_on(test::kWestern);
    const Units unicode{0x0041, 0x00E9, 0x4E00, 0x20AC, 0};
    const Units kx{0x0041, 0x0129, 0xFFFF, 0x0448, 0};
    const Units back{0x0041, 0x00E9, 0xFFFF, 0x20AC, 0};
    const Chars ansi{'A', '\xE9', '\x80', '\x80'}; // the euro's own byte and the mark for what has none
    EXPECT_EQ(converted(5, W6VaskTowz, unicode.data()), kx);
    EXPECT_EQ(converted(5, W6wzToVask, kx.data()), back);
    EXPECT_EQ(converted(5, W6wzToVaskEx, kx.data(), 0xFFFFFFFF), back);
    EXPECT_EQ(converted(1, W6wzToVask, kx.data() + 4), Units{0});
    EXPECT_EQ(converted(1, W6VaskTowz, unicode.data() + 4), Units{0});

    const auto expect = [](auto convert, const Units &source, const auto &want) {
        EXPECT_TRUE(converted(0, convert, source.data(), kIgnored).empty());
        EXPECT_EQ(hex(converted(1, convert, static_cast<const std::uint16_t *>(nullptr), 9)), "00 ");
        for (std::uint32_t count = 1; count <= 6; ++count) {
            const auto text = terminated(first(want, std::min(count - 1, 4u)));
            EXPECT_EQ(converted(text.size(), convert, source.data(), kIgnored + count), text) << count;
            EXPECT_EQ(convert(source.data(), nullptr, count), 1u);
        }
    };
    expect(W6VaskTowzN, unicode, kx);
    expect(W6wzToVaskN, kx, back);
    expect(W6VaskToazN, unicode, ansi);
}

TEST(UnicodeStrings, AKxCharacterThatConvertsToZeroEndsThem) {
    run_on(test::kWestern);
    const Units kx{0x0041, 0x0C00, 0x0042, 0};
    EXPECT_EQ(hex(converted(4, W6wzToVask, kx.data())), "41 00 A5A5 A5A5 ");
}

} // namespace
