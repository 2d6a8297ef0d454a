#include <kxstr/collate.h>

#include "support/coltbl_state.h"
#include "support/test.h"
#include "tables/collation.h"

namespace {

using kxstr::collate::language_set_up;
using namespace kxstr::test;
namespace tables = kxstr::tables;

std::string remembered() {
    const auto start = language_set_up();
    return {start.begin(), start.end()};
}

TEST(LanguageSetup, EveryColumnAndBack) {
    run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    const std::map<std::string, std::size_t> columns = {
        {"DK", 1}, {"IS", 2},  {"NO", 3}, {"SU", 4}, {"SV", 4}, {"YK", 5}, {"TR", 6}, {"CZ", 7}, {"SL", 7}, {"HR", 8},
        {"PL", 9}, {"MA", 10}, {"EN", 0}, {"", 0},   {"D", 0},  {"ZZ", 0}, {"tr", 6}, {"Dk", 1}, {"DKX", 1}};
    setsseq("FR");
    const auto others = coltbl_values(); // what every language without letters of its own gives
    for (const auto &[language, column] : columns) {
        VaskSetLanguage(language.c_str());
        lVaskSetupLang();
        for (const tables::ColtblLetter &letter : tables::kColtblLetters)
            EXPECT_EQ(xch2col(letter.ch), letter.values[column]) << language << std::hex << letter.ch;
        // The same by the other way, and nothing but the 60 letters is touched.
        const auto by_current = coltbl_values();
        setsseq("FR");
        EXPECT_EQ(coltbl_values(), others) << language;
        setsseq(language.c_str());
        EXPECT_EQ(coltbl_values(), by_current) << language;
    }
}

TEST(LanguageSetup, DoesNothingForTheLanguageThatItRemembers) {
    run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    std::uint8_t *value = nullptr;
    ASSERT_EQ(fndcolv('I', &value), 0u);
    const struct {
        const char *language;
        bool set_up;
    } steps[] = {{"EN", false}, {"TR", true},  {"TR", false}, {nullptr, false},
                 {"tr", true},  {"TRX", true}, {"TRX", true}};
    for (const auto &step : steps) {
        *value = 0x11;
        setsseq(step.language);
        EXPECT_EQ(*value, step.set_up ? 0x84 : 0x11) << "only two bytes are remembered";
    }
}

TEST(LanguageSetup, StopsWhereTheTableHasNoPlace) {
    run_on(kxstr::test::kWestern);
    const ColtblAtLoad at_load;
    // Set 10 first comes after twelve letters of set 1; its entry is renumbered for a moment.
    KxCollationEntry &cyrillic = coltbl[5];
    ASSERT_EQ(cyrillic.set, 10);
    cyrillic.set = 99;
    setsseq("TR");
    EXPECT_EQ(xch2col('I'), 0x85);
    EXPECT_EQ(remembered(), std::string("TR\0\0", 4));
    cyrillic.set = 10;
}

TEST(LanguageSetup, RemembersWholeDoubleByteCharacters) {
    run_on(kxstr::test::kJapanese);
    const ColtblAtLoad at_load;
    const struct {
        const char *why;
        std::string language;
        std::string remembered;
    } cases[] = {
        {"a pair fits", "\x82\xA0", "\x82\xA0"},
        {"a lead byte at the second place is left out; the byte before stays", "A\x82\xA0", "A\xA0"},
        {"a short language clears the second byte", "D", std::string("D\0", 2)},
        {"a lead byte before the end", "\x82", std::string("\x82\0", 2)},
    };
    for (const auto &c : cases) {
        // Exactly as long as the string, so that a sanitizer sees any byte read behind it.
        const std::vector<char> language(c.language.c_str(), c.language.c_str() + c.language.size() + 1);
        setsseq("\x82\xA0");
        setsseq(language.data());
        EXPECT_EQ(remembered(), c.remembered + std::string(2, '\0')) << c.why;
    }
}

} // namespace
