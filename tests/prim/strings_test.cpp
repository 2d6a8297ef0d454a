#include <kxstr/prim.h>
#include <kxstr/strops.h>

#include <numeric>

#include "reference/byte_copies.h"
#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr::reference;
using namespace kxstr::test;
using Text = std::vector<KxChar>;

TEST(BoundedByteCopies, EveryShortTextInEveryRoom) {
    for (const System &system : {kWestern, kJapanese, kSimplifiedChinese, kKorean, kTraditionalChinese}) {
        if (!runs_on(system)) continue;
        for_every_sequence(kDoubleByteAlphabet, 5, [&](const std::vector<char> &sequence) {
            const std::string text(sequence.begin(), sequence.end());
            const std::vector<char> source(text.c_str(), text.c_str() + text.size() + 1); // its exact size
            for (std::uint32_t size = 0; size <= 8; ++size) {
                const auto bounded =
                    written_by<char>(size, [&](auto *to) { ASSERT_EQ(wstrncpy(to, source.data(), size), to); });
                const auto ended = written_by<char>(size, [&](auto *to) {
                    CopyUpToAndNullTerminate(to, source.data(), static_cast<std::int32_t>(size));
                    CopyUpToAndNullTerminate(to, source.data(), -1);
                });
                const char fill = Guarded<char>::kUntouched;
                ASSERT_EQ(std::string(bounded.begin(), bounded.end()), bounded_copy(text, size, system.ansi, fill));
                ASSERT_EQ(std::string(ended.begin(), ended.end()), terminated_copy(text, size, system.ansi, fill));
            }
        });
    }
}

TEST(Copies, EveryCountAroundTheText) {
    const Text text{0x0041, 0x4100, 0xF90A}, source = terminated(text);
    for (std::uint32_t count = 0; count <= 5; ++count) {
        const std::size_t length = std::min<std::size_t>(count, text.size());
        const Text part(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
        Text filled = part;
        filled.resize(count);
        EXPECT_EQ(written_by<KxChar>(count, [&](auto *to) { EXPECT_EQ(wwstrncpy(to, source.data(), count), to); }),
                  filled);
        const auto appended = written_by<KxChar>(length + 1, [&](auto *to) {
            *to = 0;
            EXPECT_EQ(wwstrncat(to, source.data(), count), to);
        });
        EXPECT_EQ(appended, terminated(part));
        const auto bytes =
            written_by<char>(length + 2, [&](auto *to) { EXPECT_EQ(wstrncat(wstrcpy(to, "x"), "abc", count), to); });
        EXPECT_EQ(bytes.data(), std::string("x").append("abc", length));
    }
    const auto twice = written_by<KxChar>(7, [&](auto *to) { wwstrcat(wwstrcpy(to, source.data()), source.data()); });
    EXPECT_EQ(twice, (Text{0x0041, 0x4100, 0xF90A, 0x0041, 0x4100, 0xF90A, 0}));
    const auto bytes = written_by<char>(5, [](auto *to) { EXPECT_EQ(wstrcat(wstrcpy(to, "ab"), "\xE9z"), to); });
    EXPECT_STREQ(bytes.data(), "ab\xE9z");
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

// Runs and periods, nearly kept: what makes a search go back.
TEST(Finding, RepetitiveTextsOfAllPeriods) {
    std::minstd_rand random;
    const auto repetitive = [&](std::size_t size, std::size_t period, unsigned changes) {
        Text text(size);
        for (std::size_t i = 0; i < size; ++i)
            text[i] = i < period ? static_cast<KxChar>(0x100 + random() % 2) : text[i - period];
        while (changes-- != 0)
            text[random() % size] = static_cast<KxChar>(0x100 + random() % 2);
        return text;
    };
    std::size_t found = 0, lacking = 0;
    for (int i = 0; i < 4000; ++i) {
        const Text text = repetitive(1 + random() % 3000, 1 + random() % 40, random() % 8);
        const std::size_t from = random() % text.size();
        Text wanted(text.begin() + static_cast<std::ptrdiff_t>(from), text.end());
        wanted.resize(1 + random() % std::min<std::size_t>(wanted.size(), 1 + random() % 500));
        if (i % 4 != 0) wanted[random() % wanted.size()] ^= 1;
        const auto at = std::search(text.begin(), text.end(), wanted.begin(), wanted.end());
        const Text whole = terminated(text);
        ++(at == text.end() ? lacking : found);
        ASSERT_EQ(wwstrstr(whole.data(), terminated(wanted).data()),
                  at == text.end() ? nullptr : whole.data() + (at - text.begin()));
    }
    EXPECT_GT(std::min(found, lacking), 500u);
}

TEST(Memory, ShortAreasThatOverlap) {
    for (std::uint32_t count = 0; count <= 40; ++count) {
        for (std::size_t to = 0; to <= 80; ++to) {
            std::string area(120, ' '), wanted;
            std::iota(area.begin(), area.end(), '\x80');
            wanted = area;
            wanted.replace(to, count, area, 40, count);
            KXwmemcpy(&area[to], &area[40], count);
            ASSERT_EQ(area, wanted) << count << " to " << to;
            if (to < count) {
                std::string other(area.substr(0, count));
                ASSERT_EQ(KXwmemcmp(area.data(), other.data(), count), 0);
                other[to] ^= '\x40';
                const bool is_less = static_cast<std::uint8_t>(area[to]) < static_cast<std::uint8_t>(other[to]);
                ASSERT_EQ(KXwmemcmp(area.data(), other.data(), count), is_less ? -1 : 1);
            }
        }
    }
}

TEST(Memory, CountsAreBytesExceptWhereUnitsAreLookedAt) {
    const Text units{0x4100, 0x0041, 0x0000, 0x0042};
    EXPECT_EQ(KXwmemwchr(units.data(), 0x4100, 4), units.data());
    EXPECT_EQ(KXwmemwchr(units.data(), 0x0042, 0x10003), nullptr);
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
