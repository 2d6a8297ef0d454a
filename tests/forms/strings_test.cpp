#include <gtest/gtest.h>
#include <kxstr/forms.h>

#include "support/hex.h"
#include "support/process_state.h"
#include "support/written_by.h"

namespace {

using namespace kxstr;
using test::hex;
using test::run_on;
using test::terminated;
using test::written_by;
using Units = std::vector<KxChar>;
using Bytes = std::vector<std::uint8_t>;

Units cut(Units text, std::size_t units) {
    text.resize(std::min(text.size(), units));
    return text;
}

// A native text and the KX string it is; both directions are tried at every count.
struct NativeText {
    const char *why;
    test::System system;
    const char *native;
    Units kx;
    bool oem;
};

const NativeText kNativeTexts[]{
    {"empty", test::kWestern, "", {}, false},
    {"ANSI", test::kWestern, "A\xE9\t\x81z", {0x0041, 0x0129, 0xF909, 0x0C81, 0x007A}, false},
    {"OEM", test::kWestern, "A\x82\x01z", {0x0041, 0x0129, 0x0507, 0x007A}, true},
    {"932", test::kJapanese, "A\x82\xA0\xB1\xF0\x40\\", {0x0041, 0x255F, 0x0B10, 0x2BBC, 0x005C}, false},
    {"932 as OEM", test::kJapanese, "A\x82\xA0\xB1\xF0\x40\\", {0x0041, 0x255F, 0x0B10, 0x2BBC, 0x005C}, true},
    {"949", test::kKorean, "\xB0\xA1\xA1\xA1.", {0x5A5E, 0x5300, 0x002E}, false},
    {"936", test::kSimplifiedChinese, "\xB0\xA1\x81\xA1\n", {0x8787, 0x2BBC, 0xF90A}, false},
    {"950", test::kTraditionalChinese, "\xA4\x40\x81\x40\xA1\xA1", {0xA6D8, 0x2BBC, 0xA53F}, false},
};

TEST(NativeStrings, BothWaysAtEveryCount) {
    for (const NativeText &text : kNativeTexts) {
        run_on(text.system);
        const std::vector<char> native(text.native, text.native + std::strlen(text.native) + 1);
        const Units kx = terminated(text.kx);
        EXPECT_EQ(written_by<KxChar>(
                      kx.size(), [&](auto *to) { EXPECT_EQ((text.oem ? W6ozTowz : W6azTowz)(native.data(), to), 1u); }),
                  kx)
            << text.why;
        EXPECT_EQ(written_by<char>(native.size(),
                                   [&](auto *to) {
                                       const std::size_t length = native.size() - 1;
                                       EXPECT_EQ(text.oem ? W6wzTooz(kx.data(), to) : W6wzToaz(kx.data(), to),
                                                 text.oem ? 1 : length);
                                   }),
                  native)
            << text.why;

        for (std::uint32_t count = 0; count <= kx.size() + 1; ++count) {
            const Units want = count == 0 ? Units{} : terminated(cut(text.kx, count - 1));
            EXPECT_EQ(written_by<KxChar>(
                          want.size(),
                          [&](auto *to) {
                              EXPECT_EQ((text.oem ? W6ozTowzN : W6azTowzN)(native.data(), to, 0x50000 + count), 1u);
                          }),
                      want)
                << text.why << ' ' << count;
            // The bytes of the first count - 1 characters: two for the double-byte sets.
            std::string bytes(text.native);
            std::size_t end = 0;
            for (std::size_t i = 0; i + 1 < want.size(); ++i)
                end += want[i] >> 8 >= 36 && want[i] < 0xF900 ? 2 : 1;
            bytes.resize(end);
            const auto got = written_by<char>(count == 0 ? 0 : end + 1, [&](auto *to) {
                EXPECT_EQ((text.oem ? W6wzToozN : W6wzToazN)(kx.data(), to, 0x50000 + count), 1u);
            });
            EXPECT_EQ(hex(got), hex(count == 0 ? bytes : bytes + '\0')) << text.why << ' ' << count;
        }

        if (text.oem) continue;
        for (std::uint32_t size = 0; size <= native.size() + 1; ++size) {
            std::size_t end = 0;
            for (const KxChar ch : text.kx) {
                const std::size_t bytes = ch >> 8 >= 36 && ch < 0xF900 ? 2 : 1;
                if (size == 0 || end + bytes > size - 1) break;
                end += bytes;
            }
            auto got =
                written_by<char>(size, [&](auto *to) { EXPECT_EQ(W6wzToazNB(kx.data(), to, 0x50000 + size), 1u); });
            if (size == 0) continue;
            got.resize(end + 1);
            EXPECT_EQ(hex(got), hex(std::string(text.native, end) + '\0')) << text.why << ' ' << size;
        }
    }
}

TEST(NativeStrings, ConvertInPlace) {
    for (const NativeText &text : kNativeTexts) {
        run_on(text.system);
        const std::size_t length = std::strlen(text.native);
        const Units want = terminated(text.kx);
        // On a double-byte system the source may begin anywhere in the destination's first bytes.
        for (std::size_t offset = 0; offset <= (text.system.double_byte ? length + 1 : 0); ++offset) {
            std::vector<KxChar> buffer(std::max(want.size(), (offset + length + 2) / 2));
            char *source = reinterpret_cast<char *>(buffer.data()) + offset;
            std::memcpy(source, text.native, length + 1);
            EXPECT_EQ((text.oem ? W6ozTowz : W6azTowz)(source, buffer.data()), 1u);
            EXPECT_EQ(cut(buffer, want.size()), want) << text.why << ' ' << offset;
        }
        std::vector<KxChar> buffer = want;
        (text.oem ? W6wzToozN : W6wzToazN)(buffer.data(), reinterpret_cast<char *>(buffer.data()), 0xFFFF);
        EXPECT_STREQ(reinterpret_cast<char *>(buffer.data()), text.native) << text.why;
    }
}

TEST(NativeStrings, WhatDoesNotConvert) {
    run_on(test::kWestern);
    std::vector<KxChar> kx(4);
    W6azTowz("A\x7FZ", kx.data());
    EXPECT_EQ(hex(kx), "41 FFFF 5A 00 ");
    const Units source{0x0041, 0x2400, 0x005A, 0};
    for (const auto convert : {W6wzToazN, W6wzToozN, W6wzToazNB}) {
        EXPECT_EQ(hex(written_by<char>(4, [&](auto *to) { convert(source.data(), to, 4); })),
                  hex(Bytes{'A', 0x80, 'Z', 0}));
    }
    std::vector<char> untouched(1, 'u');
    EXPECT_EQ(W6wzToazNB(nullptr, untouched.data(), 1), 0u);
    EXPECT_EQ(W6wzToazNB(source.data(), nullptr, 1), 0u);
    EXPECT_EQ(untouched[0], 'u');

    run_on(test::kJapanese);
    kx.assign(2, 0x5555);
    W6azTowz("A\x82", kx.data()); // a lone lead byte
    EXPECT_EQ(hex(kx), "41 00 ");
    kx.assign(4, 0x5555);
    W6azTowz("\x81\x7F\x82\xA0", kx.data());
    EXPECT_EQ(hex(kx), "FFFF 255F 00 5555 ");
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
        std::uint32_t result = 0;
        const auto got = written_by<char>(flags & 8 ? 1 : want.size() + 1,
                                          [&](auto *to) { result = W6wzToazEx(source.data(), to, flags); });
        EXPECT_EQ(result, want.size()) << flags;
        if ((flags & 8) == 0) {
            EXPECT_EQ(hex(got), hex(want + '\0')) << flags;
        } else {
            EXPECT_EQ(static_cast<std::uint8_t>(got[0]), 0xA5) << flags;
        }
        EXPECT_EQ(W6wzToazEx(source.data() + 7, nullptr, flags | 8), 0u);
    }
}

TEST(UnicodeStrings, BothWaysAtEveryCount) {
    run_on(test::kWestern);
    const Units unicode{0x0041, 0x00E9, 0x4E00, 0x20AC, 0};
    const Units kx{0x0041, 0x0129, 0xFFFF, 0x0448, 0};
    const Units back{0x0041, 0x00E9, 0xFFFF, 0x20AC, 0};
    EXPECT_EQ(written_by<KxChar>(5, [&](auto *to) { EXPECT_EQ(W6VaskTowz(unicode.data(), to), 1u); }), kx);
    for (const std::uint32_t unused : {0u, 1u, 0xFFFFFFFFu})
        EXPECT_EQ(written_by<KxChar>(5, [&](auto *to) { EXPECT_EQ(W6wzToVaskEx(kx.data(), to, unused), 1u); }), back);
    EXPECT_EQ(written_by<KxChar>(1, [&](auto *to) { W6wzToVask(kx.data() + 4, to); }), Units{0});
    EXPECT_EQ(written_by<KxChar>(1, [&](auto *to) { W6VaskTowz(unicode.data() + 4, to); }), Units{0});

    const Bytes ansi{'A', 0xE9, 0x80, 0x80}; // the euro's own byte and the mark for what has none
    for (std::uint32_t count = 0; count <= 6; ++count) {
        const std::size_t fitting = count == 0 ? 0 : std::min<std::size_t>(count - 1, 4);
        const auto expect = [&](auto convert, const Units &source, const Units &want) {
            const std::size_t size = count == 0 ? 0 : fitting + 1;
            const auto got =
                written_by<KxChar>(size, [&](auto *to) { EXPECT_EQ(convert(source.data(), to, 0x30000 + count), 1u); });
            EXPECT_EQ(got, count == 0 ? Units{} : terminated(cut(want, fitting))) << count;
            EXPECT_EQ(convert(source.data(), nullptr, count), 1u);
            const auto of_null = written_by<KxChar>(count == 0 ? 0 : 1, [&](auto *to) { convert(nullptr, to, count); });
            EXPECT_EQ(of_null, count == 0 ? Units{} : Units{0});
        };
        expect(W6VaskTowzN, unicode, kx);
        expect(W6wzToVaskN, kx, back);

        const auto bytes = written_by<char>(count == 0 ? 0 : fitting + 1, [&](auto *to) {
            EXPECT_EQ(W6VaskToazN(unicode.data(), to, 0x30000 + count), 1u);
        });
        const Bytes want(ansi.begin(), ansi.begin() + static_cast<long>(fitting));
        EXPECT_EQ(hex(Bytes(bytes.begin(), bytes.end())), hex(count == 0 ? Bytes{} : terminated(want)));
        EXPECT_EQ(W6VaskToazN(unicode.data(), nullptr, count), 1u);
    }
    EXPECT_EQ(hex(written_by<char>(1, [&](auto *to) { W6VaskToazN(nullptr, to, 9); })), "00 ");
}

TEST(UnicodeStrings, AKxCharacterThatConvertsToZeroEndsThem) {
    run_on(test::kWestern);
    const Units kx{0x0041, 0x0C00, 0x0042, 0};
    EXPECT_EQ(written_by<KxChar>(4, [&](auto *to) { W6wzToVask(kx.data(), to); }), (Units{0x41, 0, 0xA5A5, 0xA5A5}));
}

} // namespace
