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
        if (!runs_on(system)) continue;
        for_every_sequence(kDoubleByteAlphabet, 5, [&](const std::vector<char> &sequence) {
            const std::string text(sequence.begin(), sequence.end());
            const std::vector<char> source(text.c_str(), text.c_str() + text.size() + 1); // its exact size
            for (std::int32_t size = -1; size <= 8; ++size) {
                const std::size_t room = size > 0 ? static_cast<std::size_t>(size) : 0;
                Guarded<char> bounded(room), ended(room);
                if (size >= 0) {
                    ASSERT_EQ(wstrncpy(bounded.data(), source.data(), static_cast<std::uint32_t>(size)),
                              bounded.data());
                }
                CopyUpToAndNullTerminate(ended.data(), source.data(), size);
                const char fill = Guarded<char>::kUntouched;
                ASSERT_EQ(std::string(bounded.data(), room), bounded_copy(text, room, system.ansi, fill)) << size;
                ASSERT_EQ(std::string(ended.data(), room), terminated_copy(text, room, system.ansi, fill)) << size;
                ASSERT_TRUE(bounded.guards_hold() && ended.guards_hold());
            }
        });
    }
}

TEST(KxCopies, EveryCountAroundTheText) {
    const Text text{0x0041, 0x4100, 0xF90A}, source = terminated(text);
    for (std::uint32_t count = 0; count <= 5; ++count) {
        const std::size_t length = std::min<std::size_t>(count, text.size());
        const Text part(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));

        Guarded<KxChar> copy(count);
        Text filled = part;
        filled.resize(count);
        ASSERT_EQ(wwstrncpy(copy.data(), source.data(), count), copy.data());
        ASSERT_EQ(copy.contents(), filled) << count;

        Guarded<KxChar> appended(length + 1);
        appended.data()[0] = 0;
        ASSERT_EQ(wwstrncat(appended.data(), source.data(), count), appended.data());
        ASSERT_EQ(appended.contents(), terminated(part)) << count;

        Guarded<char> bytes(length + 2);
        ASSERT_EQ(wstrncat(wstrcpy(bytes.data(), "x"), "abc", count), bytes.data());
        ASSERT_EQ(std::string(bytes.data()), std::string("x").append("abc", length)) << count;
        ASSERT_TRUE(copy.guards_hold() && appended.guards_hold() && bytes.guards_hold());
    }
    Guarded<KxChar> twice(2 * text.size() + 1);
    EXPECT_EQ(wwstrcat(wwstrcpy(twice.data(), source.data()), source.data()), twice.data());
    EXPECT_EQ(twice.contents(), (Text{0x0041, 0x4100, 0xF90A, 0x0041, 0x4100, 0xF90A, 0}));
    Guarded<char> bytes(5);
    EXPECT_STREQ(wstrcat(wstrcpy(bytes.data(), "ab"), "\xE9z"), "ab\xE9z");
    EXPECT_TRUE(twice.guards_hold() && bytes.guards_hold());
}

TEST(NullPointers, GiveNullOrNothing) {
    char bytes[] = "ab";
    KxChar units[] = {'a', 'b', 0};
    for (const void *result :
         {(void *)wstrcpy(nullptr, bytes), (void *)wstrcpy(bytes, nullptr), (void *)wwstrcpy(nullptr, units),
          (void *)wwstrcpy(units, nullptr), (void *)wwstrcat(nullptr, units), (void *)wwstrcat(units, nullptr),
          (void *)wstrrchr(nullptr, 'a'), (void *)wwstrrchr(nullptr, 'a'), (void *)wwstrstr(nullptr, units),
          (void *)wwstrstr(units, nullptr), (void *)KXwmemwchr(nullptr, 'a', 2)})
        EXPECT_EQ(result, nullptr);
    for (const std::int32_t result :
         {wstrcmp(nullptr, bytes), wstrcmp(bytes, nullptr), KXwmemcmp(nullptr, bytes, 2), KXwmemcmp(bytes, nullptr, 2)})
        EXPECT_EQ(result, 0);
    EXPECT_EQ(wstrlen(nullptr) + wwstrlen(nullptr), 0u);
    KXwhmemset(nullptr, 0, 2);
    for (const auto copy : {KXwmemcpy, KXwhmemmove}) {
        copy(nullptr, bytes, 2);
        copy(bytes, nullptr, 2);
    }
    EXPECT_STREQ(bytes, "ab");
}

// The first difference of two texts with their terminators, looking at `limit` units.
int first_difference(const Text &a, const Text &b, std::size_t limit) {
    for (std::size_t i = 0; i < std::min({a.size(), b.size(), limit}); ++i) {
        if (a[i] != b[i]) return a[i] - b[i];
    }
    return 0;
}

TEST(Comparison, EveryPairOfShortTextsAtEveryCount) {
    std::vector<Text> texts;
    // As units with a 0 low byte, which ends nothing.
    for_every_sequence<KxChar>({0x4100, 0xE900, 0x7F00}, 3,
                               [&](const Text &text) { texts.push_back(terminated(text)); });
    const auto bytes = [](const Text &text) {
        std::string high;
        for (const KxChar unit : text)
            high += static_cast<char>(unit >> 8);
        return high;
    };
    for (const Text &a : texts) {
        for (const Text &b : texts) {
            const std::string left = bytes(a), right = bytes(b);
            ASSERT_EQ(wstrcmp(left.data(), right.data()), first_difference(a, b, 9) / 256);
            ASSERT_EQ(wwstrcmp(a.data(), b.data()), first_difference(a, b, 9));
            for (std::int32_t count = -2; count <= 9; ++count) {
                const auto limit = static_cast<std::size_t>(std::max(count, 0));
                ASSERT_EQ(wstrncmp(left.data(), right.data(), count), first_difference(a, b, limit) / 256) << count;
                const bool runs_out = limit % 2 == 0;
                ASSERT_EQ(wwstrncmp(a.data(), b.data(), count), first_difference(a, b, runs_out ? limit / 2 : 9));
            }
        }
    }
    for (int byte = 1; byte < 0x100; ++byte) {
        const char text[] = {static_cast<char>(byte), 0};
        EXPECT_EQ(w_stricmp("a", text), 'A' - ('a' <= byte && byte <= 'z' ? byte - 0x20 : byte)) << byte;
    }
    EXPECT_EQ(w_stricmp("sTrAsSe", "StRaSsE"), 0);
}

TEST(Finding, EveryUnitInEveryShortText) {
    for_every_sequence<KxChar>({0x0041, 0x0042, 0x0141}, 5, [](const Text &text) {
        const Text units = terminated(text);
        const KxChar *begin = units.data(), *end = begin + text.size();
        const std::string bytes(text.begin(), text.end()); // 0x141 becomes 0x41
        ASSERT_EQ(wwstrlen(begin), 2 * text.size());
        ASSERT_EQ(wstrlen(bytes.c_str()), text.size());
        for (const std::uint32_t wanted : {0x0141u, 0x0000u}) {
            const KxChar *first = std::find(begin, end, wanted);
            const KxChar *behind_last =
                std::find(std::reverse_iterator(end), std::reverse_iterator(begin), wanted).base();
            ASSERT_EQ(wwstrchr(begin, wanted | 0x50000), first == end ? nullptr : first);
            ASSERT_EQ(wwstrrchr(begin, wanted | 0x50000), behind_last == begin ? nullptr : behind_last - 1);
            const std::string_view found = wanted == 0 ? "0" : "A";
            const std::size_t at = bytes.find(found), last_at = bytes.rfind(found);
            ASSERT_EQ(wstrchr(bytes.c_str(), wanted), at == bytes.npos ? nullptr : bytes.data() + at);
            ASSERT_EQ(wstrrchr(bytes.c_str(), wanted), last_at == bytes.npos ? nullptr : bytes.data() + last_at);
        }
        for_every_sequence<KxChar>({0x0041, 0x0141}, 3, [&](const Text &wanted) {
            const KxChar *found = std::search(begin, end, wanted.begin(), wanted.end());
            const bool none = wanted.empty() || found == end;
            ASSERT_EQ(wwstrstr(begin, terminated(wanted).data()), none ? nullptr : found);
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
    for (const auto copy : {KXwmemcpy, KXwhmemmove}) {
        char area[] = "12345";
        copy(area + 1, area, 3);
        EXPECT_STREQ(area, "11235");
        copy(area, area + 1, 4);
        EXPECT_STREQ(area, "12355");
        KXwhmemset(area + 1, 0x141, 2);
        EXPECT_STREQ(area, "1AA55");
    }
}

} // namespace
