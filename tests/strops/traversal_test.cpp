#include <gtest/gtest.h>
#include <kxstr/strops.h>
#include <optional>

#include "reference/streams.h"

namespace {

using namespace kxstr::reference;
using Text = std::vector<KxChar>;

// Where the characters of a text stand.
std::vector<std::size_t> character_positions(const Text &text) {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0xF900) positions.push_back(i);
    }
    return positions;
}

Text terminated(Text text) {
    text.push_back(0);
    return text;
}

TEST(Traversal, EveryKxStringOfUpToSixUnits) {
    for_every_sequence<KxChar>({0x0041, 0xF8FF, 0xF900, 0xFFFF}, 6, [](const Text &text) {
        const Text string = terminated(text);
        const KxChar *start = string.data();
        const std::vector<std::size_t> characters = character_positions(text);
        ASSERT_EQ(W6wstrchrcnt(start), static_cast<std::int32_t>(characters.size()));
        for (std::size_t i = 0; i <= text.size(); ++i) {
            const auto at_or_after = std::lower_bound(characters.begin(), characters.end(), i);
            const auto after = std::upper_bound(characters.begin(), characters.end(), i);
            const auto end = [&](auto found) { return found == characters.end() ? text.size() : *found; };
            ASSERT_EQ(W6wstrFirstCh(start + i) - start, static_cast<std::ptrdiff_t>(end(at_or_after)));
            if (i < text.size()) {
                ASSERT_EQ(W6wstrNextCh(start + i) - start, static_cast<std::ptrdiff_t>(end(after)));
            }
            const std::size_t previous = at_or_after == characters.begin() ? 0 : at_or_after[-1];
            ASSERT_EQ(W6wstrPrevCh(start, start + i) - start, static_cast<std::ptrdiff_t>(previous));
        }
    });
    const Text string{0x0041, 0x0042, 0};
    EXPECT_EQ(W6wstrPrevCh(string.data() + 1, string.data()), string.data() + 1) << "a position before the start";
}

TEST(Traversal, EveryStreamOfUpToFiveCodes) {
    for_every_sequence(kStreamAlphabet, 5, [](const std::vector<StreamCode> &codes) {
        const std::vector<std::uint8_t> stream = joined(codes);
        const std::uint8_t *start = stream.data();
        // From the end, where `next` is the first position at text behind the code looked at.
        std::ptrdiff_t next = static_cast<std::ptrdiff_t>(stream.size()) - 1;
        std::ptrdiff_t position = next;
        for (const StreamCode &code : std::vector(codes.rbegin(), codes.rend())) {
            position -= static_cast<std::ptrdiff_t>(code.bytes.size());
            ASSERT_EQ(W6dstrNextCh(start + position) - start, next);
            if (code.is_text) next = position;
            ASSERT_EQ(W6dstrFirstCh(start + position) - start, next);
        }
    });
}

TEST(Traversal, AGroupOfNoLengthIsOneByteOfCode) {
    const std::vector<std::uint8_t> stream{0x41, 0xD4, 0x42, 0x00, 0x00};
    EXPECT_EQ(W6dstrNextCh(stream.data()), stream.data() + 2);
    EXPECT_EQ(W6dstrFirstCh(stream.data() + 1), stream.data() + 2);
}

// Characters without the codes between them, looked up the plain way.
std::optional<std::size_t> position_of(const Text &text, const Text &wanted) {
    const auto characters_of = [](const Text &from) {
        Text characters;
        for (const std::size_t i : character_positions(from))
            characters.push_back(from[i]);
        return characters;
    };
    const Text in = characters_of(text), what = characters_of(wanted);
    const auto found = std::search(in.begin(), in.end(), what.begin(), what.end());
    if (what.empty() || found == in.end()) return std::nullopt;
    return character_positions(text)[static_cast<std::size_t>(found - in.begin())];
}

TEST(Search, EveryShortStringInEveryShortString) {
    const std::vector<KxChar> alphabet{0x0061, 0x0062, 0xF909};
    for_every_sequence(alphabet, 6, [&](const Text &text) {
        const Text string = terminated(text);
        for_every_sequence(alphabet, 3, [&](const Text &wanted) {
            const Text to_find = terminated(wanted);
            const auto expected = position_of(text, wanted);
            const KxChar *found = W6wstrstr(string.data(), to_find.data());
            ASSERT_EQ(found, expected ? string.data() + *expected : nullptr);

            const auto delimiter = std::find_first_of(text.begin(), text.end(), wanted.begin(), wanted.end());
            ASSERT_EQ(W6wstrdelim(string.data(), to_find.data()) - string.data(), delimiter - text.begin());
        });
    });
}

} // namespace
