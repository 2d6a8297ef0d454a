#include <kxdetect/detect.h>

#include <memory>
#include <set>

#include "support/test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// In heap memory of exactly this size, so that a sanitizer sees a byte too many.
std::vector<KxDetectGuess> detect(const Bytes &text, std::size_t room = 100) {
    const auto exact = std::make_unique<std::uint8_t[]>(text.size());
    std::ranges::copy(text, exact.get());
    std::vector<KxDetectGuess> guesses(room);
    guesses.resize(KxDetect(exact.get(), text.size(), guesses.data(), room));
    return guesses;
}

Bytes bytes_of(const std::string &text) {
    return {text.begin(), text.end()};
}

TEST(Detect, AnswersLieWithinTheirRoom) {
    const Bytes text = bytes_of("\x8F\xE0\xA8\xA2\xA5\xE2, \xAC\xA8\xE0"); // 866: Привет, мир
    EXPECT_EQ(KxDetect(text.data(), text.size(), nullptr, 0), 0U);
    EXPECT_STREQ(detect({}).at(0).page, "ascii");
    KxDetectGuess none{};
    EXPECT_EQ(KxDetect(nullptr, 0, &none, 1), 1U);

    const auto all = detect(text);
    ASSERT_GT(all.size(), 10U);
    std::uint64_t seen = 0;
    std::uint32_t sum = 0;
    for (std::size_t index = 0; index < all.size(); ++index) {
        EXPECT_EQ(seen & all[index].same, 0U) << all[index].page; // a page is in one answer only
        seen |= all[index].same;
        sum += all[index].share;
        EXPECT_LE(all[index].share, index == 0 ? 1000U : all[index - 1].share);
    }
    EXPECT_NEAR(sum, 1000, 20);
    const auto two = detect(text, 2);
    ASSERT_EQ(two.size(), 2U);
    EXPECT_STREQ(two[1].page, all[1].page);
    EXPECT_EQ(two[1].share, all[1].share);
}

TEST(Detect, NamesHaveAnEnd) {
    std::set<std::string> names;
    unsigned number = 0;
    while (const char *name = KxDetectPageName(number)) {
        EXPECT_TRUE(names.insert(name).second) << name;
        ++number;
    }
    EXPECT_LE(number, 64U); // the bits of KxDetectGuess::same
    EXPECT_EQ(KxDetectPageName(~0U), nullptr);
    EXPECT_STREQ(KxDetectLanguageName("zh-TW"), "Traditional Chinese");
    EXPECT_EQ(KxDetectLanguageName(""), nullptr);
}

// Whatever the bytes are, and wherever they end.
TEST(Detect, AnyBytesHaveAnAnswer) {
    std::mt19937 random(1);
    const std::array<std::string, 7> alphabets = {"\x82\xA0\xE0 a",
                                                  "\xC3\xA9\xE2\x82\xF0\x9F",
                                                  std::string("\0\x04"
                                                              "a\xFF\xFE",
                                                              5),
                                                  "\xEF\xBB\xBF",
                                                  "\xD8\xDC\n",
                                                  "\xB3\xC4\xC5",
                                                  "\xA4\xFC\x40"};
    for (const std::string &alphabet : alphabets) {
        Bytes text;
        for (std::size_t size = 0; size < 200; ++size) {
            const auto guesses = detect(text, 1);
            ASSERT_EQ(guesses.size(), 1U);
            ASSERT_TRUE(guesses[0].language[0] == 0 || KxDetectLanguageName(guesses[0].language) != nullptr);
            text.push_back(static_cast<std::uint8_t>(alphabet[random() % alphabet.size()]));
        }
    }
}

TEST(Detect, NothingBehindTheFirstMebibyteCounts) {
    Bytes text(KXDETECT_LARGEST, 'a');
    text.push_back(0xE9);
    EXPECT_STREQ(detect(text).at(0).page, "ascii");
    text[KXDETECT_LARGEST - 1] = 0xE9;
    EXPECT_STRNE(detect(text).at(0).page, "ascii");
}

} // namespace
