#include <compare>
#include <kxstr/collate.h>
#include <kxstr/letters.h>
#include <set>
#include <tuple>

#include "reference/comparison.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;
using String = std::vector<KxChar>; // without its terminator

// ASCII as it stands; what a caller writes for it in a brace list otherwise.
String operator""_kx(const char *text, std::size_t length) {
    return {text, text + length};
}
String operator+(String a, const String &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

int compare(String a, String b, std::uint32_t language, bool case_counts = false, bool kana_counts = false) {
    a.push_back(0);
    b.push_back(0);
    return KxWS6Cmpcoll(a.data(), b.data(), language, case_counts ? 1 : 0, kana_counts ? 1 : 0);
}

int reference_compare(String a, String b, std::uint32_t language, bool case_counts, bool kana_counts) {
    a.push_back(0);
    b.push_back(0);
    return kxstr::reference::compare(a.data(), b.data(), static_cast<std::uint16_t>(language), case_counts,
                                     kana_counts);
}

constexpr std::uint32_t kUs = 0, kCatalan = 3, kDanish = 6, kFrench = 14, kGreek = 18, kHebrew = 19, kNorwegian = 23,
                        kSpanish = 29, kJapaneseText = 34;

TEST(CompareByLanguage, KnownTexts) {
    std::size_t count = 0;
    for (const auto &row : kxstr::reference::read_rows("../tests/collate/comparisons.txt")) {
        const auto first = static_cast<std::uint32_t>(std::stoul(row.at(0)));
        if (first >= kJapaneseText && !runs_on(kJapanese)) continue;
        const bool case_counts = row.at(1) == "c", kana_counts = row.at(2) == "k";
        const int result = std::stoi(row.at(3));
        const String a = units_of<KxChar>(row.at(4)), b = units_of<KxChar>(row.at(5));
        SCOPED_TRACE(row[0] + ' ' + row[4] + ' ' + row[5]);
        for (const std::uint32_t language : {first, 39u, 40u, 0xFFFFu}) {
            if (language != first && first < kJapaneseText) break;
            EXPECT_EQ(compare(a, b, language, case_counts, kana_counts), result);
            EXPECT_EQ(compare(b, a, language, case_counts, kana_counts), -result);
            EXPECT_EQ(compare(a, a, language, true, true), 0);
        }
        ++count;
    }
    EXPECT_GE(count, 41u);
    const KxChar text[] = {'a', 0};
    EXPECT_EQ(KxWS6Cmpcoll(nullptr, nullptr, 0, 1, 1), 0);
    EXPECT_EQ(KxWS6Cmpcoll(nullptr, text, 0, 1, 1), -1);
    EXPECT_EQ(KxWS6Cmpcoll(text, nullptr, 0, 1, 1), 1);
}

TEST(CompareByLanguage, ByCode) {
    const KxChar cz[] = {'c', 'z', 0};
    const KxChar ch[] = {'c', 'h', 0};
    EXPECT_EQ(KxWS6CmpcollLang(cz, ch, "ES", 0, 0), -1);
    EXPECT_EQ(KxWS6CmpcollLang(cz, ch, nullptr, 0, 0), 1);
    EXPECT_EQ(KxWS6CmpcollLang(cz, ch, "US", 0, 0), 1);
    EXPECT_EQ(KxWS6CmpcollLang(cz, ch, "es", 0, 0), 1);
    EXPECT_EQ(KxWS6CmpcollLang(nullptr, ch, nullptr, 0, 0), -1);
}

// What a caller builds of the values, level by level. Signed: on big-endian hosts some versions of the standard library
// compare only a part of a vector of unsigned numbers.
struct Keys {
    std::vector<int> primary, secondary, tertiary;
};

Keys keys_of(const String &text, std::uint32_t language, bool case_counts, bool kana_counts) {
    String terminated = text + String{0};
    const KxChar *position = terminated.data();
    Keys keys;
    unsigned before = 0;
    while (*position != 0) {
        std::uint8_t primary[2] = {};
        std::uint16_t secondary = 0;
        std::uint8_t tertiary = 0;
        const auto result = getColValues(&position, primary, &secondary, &tertiary, case_counts, before, language);
        before = language >= kJapaneseText ? primary[0] * 256u + primary[1] : primary[0];
        if (result == 2) keys.primary.push_back(static_cast<int>(before));
        keys.secondary.push_back(secondary);
        if (language == kGreek) tertiary = 1 - tertiary;
        keys.tertiary.push_back(case_counts ? int{tertiary} : kana_counts ? tertiary & 1 : 0);
    }
    return keys;
}

int plain_sign(const Keys &a, const Keys &b) {
    const auto order = std::tie(a.primary, a.secondary, a.tertiary) <=> std::tie(b.primary, b.secondary, b.tertiary);
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

String random_string(std::mt19937 &random, const String &alphabet) {
    String text(random() % 7);
    for (KxChar &ch : text)
        ch = alphabet[random() % alphabet.size()];
    return text;
}

// Alike but for some characters and some case, so that all levels get their say.
String random_variant(std::mt19937 &random, String text, const String &alphabet) {
    for (KxChar &ch : text) {
        const unsigned change = random() % 8;
        if (change == 0) ch = alphabet[random() % alphabet.size()];
        if (change == 1) ch = wtolower(ch);
        if (change == 2) ch = wtoupper(ch);
    }
    if (random() % 4 == 0) text.push_back(alphabet[random() % alphabet.size()]);
    return text;
}

// Letters that contract, expand, move and carry diacritics; ignorables; kana, marks and widths; codes.
const String kAlphabet = "acChHilLoszZ"_kx + String{0x0101, 0x0117, 0x011B, 0x011E, 0x0125, 0x0147, 0x0163, 0x018B,
                                                    0x0197, 0x01A7, 0x0801, 0x0826, 0x0835, 0x0900, 0x0930, 0x0954,
                                                    0x0A00, 0x0A43, 0x0D3A, 0x0D40, 0x0DA7, 0x0DC2, 0x0E40, 0x0200};
const String kEastAsianAlphabet =
    "aA"_kx + String{0x0B15, 0x0B29, 0x0B3D, 0x0B3E, 0x2405, 0x2412, 0x2415, 0x2418, 0x241B, 0x2520, 0x2540,
                     0x255E, 0x2568, 0x2569, 0x260A, 0x260B, 0x2655, 0x25B6, 0x2B00, 0x011B, 0x0200};

TEST(CompareByLanguage, IsAntisymmetricAndThatOfTheValues) {
    run_on(kJapanese);
    // Without contractions and ignorables, the values compared level by level give the same.
    const std::set<std::uint32_t> by_values{kUs, 1, kDanish, kGreek, kNorwegian, 21, 31, 33, kJapaneseText, 39, 40};
    std::mt19937 random(1);
    for (std::uint32_t language = 0; language <= 40; ++language) {
        for (int round = 0; round < 4000; ++round) {
            const String &alphabet = language >= kJapaneseText || round % 4 == 0 ? kEastAsianAlphabet : kAlphabet;
            // Common starts of all lengths, in which contractions may hang over from one end to the other.
            String a = random_string(random, alphabet);
            while (round % 8 == 0 && a.size() < 40)
                a = a + random_string(random, alphabet) + String{alphabet[0]};
            const String b = random_variant(random, a, alphabet);
            const bool case_counts = random() % 2 != 0;
            const bool kana_counts = language >= kJapaneseText && random() % 2 != 0;
            const int result = compare(a, b, language, case_counts, kana_counts);
            ASSERT_EQ(result, reference_compare(a, b, language, case_counts, kana_counts))
                << language << ' ' << hex(a) << "/ " << hex(b);
            ASSERT_EQ(compare(b, a, language, case_counts, kana_counts), -result)
                << language << ' ' << hex(a) << "/ " << hex(b);
            if (!by_values.contains(language)) continue;
            ASSERT_EQ(result, plain_sign(keys_of(a, language, case_counts, kana_counts),
                                         keys_of(b, language, case_counts, kana_counts)))
                << language << ' ' << hex(a) << "/ " << hex(b);
        }
    }
}

TEST(CompareByLanguage, TablesHoldTheValuesOfEveryCharacter) {
    namespace collate = kxstr::collate;
    for (const System &system : kCountries) {
        if (!runs_on(system)) continue;
        for (unsigned ch = 0; ch < 0x10000; ++ch) {
            for (const unsigned neighbour : {0u, 0x0B3Du, 0x0B3Eu, 0x0142u}) { // a next character, a previous value
                const auto wanted = collate::east_asian_values(static_cast<KxChar>(ch), static_cast<KxChar>(neighbour),
                                                               static_cast<std::uint16_t>(neighbour), ch % 2 == 0);
                std::uint16_t primary = 0, secondary = 0;
                std::uint8_t flags = 0;
                ASSERT_EQ(AsiaGetColValues(ch, neighbour, neighbour, &primary, &secondary, &flags, ch % 2 == 0),
                          wanted.characters)
                    << ch;
                ASSERT_EQ(std::tie(primary, secondary, flags), std::tie(wanted.primary, wanted.secondary, wanted.flags))
                    << ch;
            }
        }
    }
    for (std::uint16_t language = 0; language < kJapaneseText; ++language) {
        const collate::LanguageRules &rules = collate::rules_of(language);
        for (unsigned ch = 1; ch < 0x10000; ++ch) {
            const KxChar text[] = {static_cast<KxChar>(ch), 0};
            const std::uint8_t primary = collate::primary_value(text[0], rules);
            ASSERT_EQ(f_KX60ColVal(ch, language), primary) << language << ' ' << ch;
            KxChar first = text[0];
            const KxChar *behind = text + 1;
            if (collate::contract(first, behind, rules) != 0) continue;
            const KxChar *position = text;
            std::uint8_t values[2] = {primary, 0};
            std::uint16_t secondary = 0;
            std::uint8_t tertiary = 0;
            const bool counts = primary != collate::kIgnorable;
            ASSERT_EQ(getColValues(&position, values, &secondary, &tertiary, 1, 0, language), counts ? 2u : 0u);
            ASSERT_EQ(values[0], primary) << language << ' ' << ch;
            ASSERT_EQ(secondary, collate::secondary_value(text[0], primary, rules)) << language << ' ' << ch;
            ASSERT_EQ(tertiary, counts ? collate::case_value(text[0]) : 1) << language << ' ' << ch;
        }
    }
}

// The result, units moved over, then what was written; "EE" is left as it was.
std::string step(String text, std::uint32_t language) {
    text.push_back(0);
    const KxChar *position = text.data();
    std::uint8_t primary[] = {0xEE, 0xEE};
    std::uint16_t secondary = 0xEEEE;
    std::uint8_t tertiary = 0xEE;
    const auto result = getColValues(&position, primary, &secondary, &tertiary, 1, 0, language);
    const std::vector<std::uint16_t> all{static_cast<std::uint16_t>(result),
                                         static_cast<std::uint16_t>(position - text.data()),
                                         primary[0],
                                         primary[1],
                                         secondary,
                                         tertiary};
    return hex(all);
}

TEST(SortValues, OneStep) {
    run_on(kJapanese);
    EXPECT_EQ(step(""_kx, kUs), "00 00 EE EE EEEE EE ") << "the end";
    EXPECT_EQ(step(""_kx, kJapaneseText), "00 00 EE EE EEEE EE ");
    EXPECT_EQ(step("ah"_kx, kUs), "02 01 80 EE 00 00 ") << "a letter writes one value";
    EXPECT_EQ(step({0x011A}, kUs), "02 01 80 EE 01 01 ") << "accented capital";
    EXPECT_EQ(step("Ch"_kx, kSpanish), "02 02 83 FF 00 03 ") << "a contraction's mark, with which it has no value";
    EXPECT_EQ(step("chx"_kx, kSpanish), "02 02 83 FF 00 01 ");
    EXPECT_EQ(step({'l', 0x0101, 'l', 'l'}, kCatalan), "02 02 90 FF 00 01 ") << "only one letter is drawn in";
    EXPECT_EQ(step({0x0125, 'x'}, kFrench), "02 01 80 87 00 00 ") << "an expansion";
    EXPECT_EQ(step({0x0930}, kHebrew), "00 01 EE EE 8930 01 ") << "an ignorable";
    EXPECT_EQ(step({0x2568}, kJapaneseText), "02 01 01 05 01 00 ") << "kana, high byte first";
    EXPECT_EQ(step({0x0B15, 0x0B3D, 'x'}, kJapaneseText), "02 02 01 05 03 03 ") << "kana with a mark";
}

} // namespace
