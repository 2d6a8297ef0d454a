#include <cstring>
#include <gtest/gtest.h>
#include <kxstr/prim.h>

#include "reference/byte_copies.h"
#include "reference/streams.h"
#include "support/guarded.h"
#include "support/process_state.h"

namespace {

using namespace kxstr::reference;
using namespace kxstr::test;
using Text = std::vector<KxChar>;

Text terminated(Text text) {
    text.push_back(0);
    return text;
}

TEST(BoundedByteCopies, EveryShortTextInEveryRoom) {
    for (const System &system : {kWestern, kJapanese, kSimplifiedChinese, kKorean, kTraditionalChinese}) {
        run_on(system);
        for_every_sequence(kDoubleByteAlphabet, 5, [&](const std::vector<char> &sequence) {
            const std::string text(sequence.begin(), sequence.end());
            const std::vector<char> source(text.c_str(), text.c_str() + text.size() + 1); // its exact size
            for (std::uint32_t size = 0; size <= 8; ++size) {
                Guarded<char> copy(size);
                const auto contents = [&] { return std::string(copy.data(), size); };
                ASSERT_EQ(wstrncpy(copy.data(), source.data(), size), copy.data());
                ASSERT_EQ(contents(), bounded_copy(text, size, system.ansi, Guarded<char>::kUntouched));
                ASSERT_TRUE(copy.guards_hold());

                copy = Guarded<char>(size);
                const auto signed_size = static_cast<std::int32_t>(size);
                CopyUpToAndNullTerminate(copy.data(), source.data(), signed_size);
                ASSERT_EQ(contents(), terminated_copy(text, signed_size, system.ansi, Guarded<char>::kUntouched));
                ASSERT_TRUE(copy.guards_hold());
            }
        });
    }
    Guarded<char> nothing(0);
    CopyUpToAndNullTerminate(nothing.data(), "a", -1);
    EXPECT_TRUE(nothing.guards_hold());
}

TEST(BoundedKxCopies, EveryCountAroundTheText) {
    const Text text = terminated({0x0041, 0x4100, 0xF90A});
    for (std::uint32_t count = 0; count <= 6; ++count) {
        const std::uint32_t length = std::min(count, 3u);

        Guarded<KxChar> copy(count);
        Text expected(text.begin(), text.begin() + length);
        expected.resize(count);
        ASSERT_EQ(wwstrncpy(copy.data(), text.data(), count), copy.data());
        ASSERT_EQ(copy.contents(), expected) << count;
        ASSERT_TRUE(copy.guards_hold());

        Guarded<KxChar> appended(2 + length);
        appended.store(terminated({0x0042}));
        ASSERT_EQ(wwstrncat(appended.data(), text.data(), count), appended.data());
        expected.assign(1, 0x0042);
        expected.insert(expected.end(), text.begin(), text.begin() + length);
        ASSERT_EQ(appended.contents(), terminated(expected)) << count;
        ASSERT_TRUE(appended.guards_hold());

        Guarded<char> bytes(2 + length);
        std::memcpy(bytes.data(), "x", 2);
        ASSERT_EQ(wstrncat(bytes.data(), "abc", count), bytes.data());
        ASSERT_EQ(std::string(bytes.data()), std::string("x").append("abc", length)) << count;
        ASSERT_TRUE(bytes.guards_hold());
    }
}

TEST(UnboundedCopies, WriteTextAndTerminatorOnly) {
    Guarded<char> bytes(6);
    EXPECT_EQ(wstrcpy(bytes.data(), "ab"), bytes.data());
    EXPECT_EQ(wstrcat(bytes.data(), "\xE9z"), bytes.data());
    EXPECT_EQ(bytes.contents(), (std::vector<char>{'a', 'b', '\xE9', 'z', 0, Guarded<char>::kUntouched}));

    Guarded<KxChar> units(6);
    const Text text = terminated({0x4100, 0x0041});
    EXPECT_EQ(wwstrcpy(units.data(), text.data()), units.data());
    EXPECT_EQ(wwstrcat(units.data(), text.data()), units.data());
    EXPECT_EQ(units.contents(), (Text{0x4100, 0x0041, 0x4100, 0x0041, 0, Guarded<KxChar>::kUntouched}));
}

TEST(NullPointers, GiveWhatEachFunctionPromises) {
    char bytes[] = "ab";
    KxChar units[] = {'a', 'b', 0};
    EXPECT_EQ(wstrlen(nullptr), 0u);
    EXPECT_EQ(wwstrlen(nullptr), 0u);
    EXPECT_EQ(wstrcpy(nullptr, bytes), nullptr);
    EXPECT_EQ(wstrcpy(bytes, nullptr), nullptr);
    EXPECT_EQ(wwstrcpy(nullptr, units), nullptr);
    EXPECT_EQ(wwstrcpy(units, nullptr), nullptr);
    EXPECT_EQ(wwstrcat(nullptr, units), nullptr);
    EXPECT_EQ(wwstrcat(units, nullptr), nullptr);
    EXPECT_EQ(wstrcmp(nullptr, bytes), 0);
    EXPECT_EQ(wstrcmp(bytes, nullptr), 0);
    EXPECT_EQ(wstrrchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(wwstrrchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(wwstrstr(nullptr, units), nullptr);
    EXPECT_EQ(wwstrstr(units, nullptr), nullptr);
    EXPECT_EQ(KXwmemwchr(nullptr, 'a', 2), nullptr);
    EXPECT_EQ(KXwmemcmp(nullptr, bytes, 2), 0);
    EXPECT_EQ(KXwmemcmp(bytes, nullptr, 2), 0);
    KXwhmemset(nullptr, 0, 2);
    KXwmemcpy(nullptr, bytes, 2);
    KXwmemcpy(bytes, nullptr, 2);
    KXwhmemmove(nullptr, bytes, 2);
    KXwhmemmove(bytes, nullptr, 2);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_EQ(units[0], 'a');
}

// The first difference of two texts with their terminators, looking at `limit` units.
int first_difference(const Text &a, const Text &b, std::size_t limit) {
    const Text left = terminated(a), right = terminated(b);
    for (std::size_t i = 0; i < std::min({left.size(), right.size(), limit}); ++i) {
        if (left[i] != right[i]) return left[i] - right[i];
    }
    return 0;
}

TEST(Comparison, EveryPairOfShortTextsAtEveryCount) {
    std::vector<Text> texts;
    // As bytes: 0x41 0xE9 0x7F; as units the same with a 0 low byte, which ends nothing.
    for_every_sequence<KxChar>({0x41, 0xE9, 0x7F}, 3, [&](const Text &text) { texts.push_back(text); });
    for (const Text &a : texts) {
        for (const Text &b : texts) {
            const std::string left(a.begin(), a.end()), right(b.begin(), b.end());
            ASSERT_EQ(wstrcmp(left.c_str(), right.c_str()), first_difference(a, b, 9));
            const auto high = [](Text text) {
                for (KxChar &unit : text)
                    unit = static_cast<KxChar>(unit << 8);
                return terminated(text);
            };
            const Text high_a = high(a), high_b = high(b);
            ASSERT_EQ(wwstrcmp(high_a.data(), high_b.data()), 256 * first_difference(a, b, 9));
            for (std::int32_t count = -2; count <= 9; ++count) {
                const auto limit = static_cast<std::size_t>(std::max(count, 0));
                ASSERT_EQ(wstrncmp(left.c_str(), right.c_str(), count), first_difference(a, b, limit)) << count;
                const bool odd = count > 0 && count % 2 == 1;
                ASSERT_EQ(wwstrncmp(high_a.data(), high_b.data(), count),
                          256 * first_difference(a, b, odd ? 9 : limit / 2))
                    << count;
            }
        }
    }
}

TEST(Comparison, CaseFoldsLettersOfAsciiOnly) {
    for (int byte = 1; byte < 0x100; ++byte) {
        const bool small = 'a' <= byte && byte <= 'z';
        const char text[] = {static_cast<char>(byte), 0};
        EXPECT_EQ(w_stricmp(text, "A"), (small ? byte - 0x20 : byte) - 'A') << byte;
        EXPECT_EQ(w_stricmp("a", text), 'A' - (small ? byte - 0x20 : byte)) << byte;
    }
    EXPECT_EQ(w_stricmp("sTrAsSe", "StRaSsE"), 0);
    EXPECT_EQ(w_stricmp("ab", "ABc"), -'C');
}

TEST(Finding, EveryUnitInEveryShortText) {
    for_every_sequence<KxChar>({0x0041, 0x0042, 0x0141}, 5, [](const Text &text) {
        const Text units = terminated(text);
        const std::string bytes(text.begin(), text.end());
        ASSERT_EQ(wwstrlen(units.data()), 2 * text.size());
        ASSERT_EQ(wstrlen(bytes.c_str()), text.size());
        for (const std::uint32_t wanted : {0x0041u, 0x0141u, 0x0000u}) {
            const auto *begin = units.data(), *end = begin + text.size();
            const KxChar *first = std::find(begin, end, wanted);
            ASSERT_EQ(wwstrchr(begin, wanted | 0x50000), first == end ? nullptr : first);
            const KxChar *last = end;
            while (last != begin && last[-1] != wanted)
                --last;
            ASSERT_EQ(wwstrrchr(begin, wanted | 0x50000), last == begin ? nullptr : last - 1);
            // 0x141 is 0x41 in a byte.
            const std::size_t at = wanted == 0 ? std::string::npos : bytes.find('A');
            const std::size_t last_at = wanted == 0 ? std::string::npos : bytes.rfind('A');
            ASSERT_EQ(wstrchr(bytes.c_str(), wanted), at == std::string::npos ? nullptr : bytes.data() + at);
            ASSERT_EQ(wstrrchr(bytes.c_str(), wanted), last_at == std::string::npos ? nullptr : bytes.data() + last_at);
        }
        for_every_sequence<KxChar>({0x0041, 0x0141}, 3, [&](const Text &wanted) {
            const auto found = std::search(text.begin(), text.end(), wanted.begin(), wanted.end());
            const bool none = wanted.empty() || found == text.end();
            ASSERT_EQ(wwstrstr(units.data(), terminated(wanted).data()),
                      none ? nullptr : units.data() + (found - text.begin()));
        });
    });
}

TEST(Memory, CountsAreBytesExceptWhereUnitsAreLookedAt) {
    const Text units{0x4100, 0x0041, 0x0000, 0x0042};
    EXPECT_EQ(KXwmemwchr(units.data(), 0x4100, 0), nullptr);
    EXPECT_EQ(KXwmemwchr(units.data(), 0x0000, 2), nullptr);
    EXPECT_EQ(KXwmemwchr(units.data(), 0x70000, 0x10003), units.data() + 2) << "low halves count";
    EXPECT_EQ(KXwmemwchr(units.data(), 0x0042, 4), units.data() + 3) << "0 ends nothing";

    EXPECT_EQ(KXwmemcmp("\x01", "\xFF", 1), -1);
    EXPECT_EQ(KXwmemcmp("abcdefgh\xFF", "abcdefgh\x01", 9), 1);
    EXPECT_EQ(KXwmemcmp("abcdefgh\xFF", "abcdefgh\x01", 8), 0);
    EXPECT_EQ(KXwmemcmp("a", "b", 0), 0);

    using Bytes = std::vector<std::uint8_t>;
    for (const auto copy : {KXwmemcpy, KXwhmemmove}) {
        Bytes area{1, 2, 3, 4, 5};
        copy(area.data() + 1, area.data(), 3);
        EXPECT_EQ(area, (Bytes{1, 1, 2, 3, 5}));
        copy(area.data(), area.data() + 1, 4);
        EXPECT_EQ(area, (Bytes{1, 2, 3, 5, 5}));
    }
    Bytes area{1, 2, 3};
    KXwhmemset(area.data(), 0x1FF, 2);
    EXPECT_EQ(area, (Bytes{0xFF, 0xFF, 3}));
}

} // namespace
