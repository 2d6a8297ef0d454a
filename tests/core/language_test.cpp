#include <kxstr/core.h>

#include "support/test.h"

namespace {

TEST(Language, OnlyTheFirstInitStoresItUntilUnInit) {
    VaskUnInit();
    const char *store = VaskGetLanguage();
    VaskInit("FR");
    VaskInit("DE");
    EXPECT_STREQ(store, "FR");
    VaskSetLanguage("DE");
    EXPECT_STREQ(store, "DE");
    VaskUnInit();
    EXPECT_STREQ(store, "DE");
    EXPECT_EQ(VaskInit("PL"), 1u);
    EXPECT_STREQ(store, "PL");
    EXPECT_EQ(VaskGetLanguage(), store);
    VaskUnInit();
    VaskSetLanguage("EN");
}

TEST(Language, LongEmptyAndNullStringsStayInTheStore) {
    const struct {
        const char *given;
        const char *stored;
    } cases[] = {{"ABCDEFG", "ABCDEFG"},
                 {"ABCDEFGH", "ABCDEFG"},
                 {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", "ABCDEFG"},
                 {"", ""},
                 {"X", "X"},
                 {nullptr, ""}};
    for (const auto &c : cases) {
        EXPECT_EQ(VaskSetLanguage(c.given), 1u);
        // All 8 bytes: what is behind the terminator must not be left over from a longer language.
        EXPECT_EQ(std::string(VaskGetLanguage(), 8), std::string(c.stored) + std::string(8 - strlen(c.stored), '\0'));
    }
    VaskSetLanguage("ABC");
    VaskSetLanguage(VaskGetLanguage() + 1); // overlapping
    EXPECT_STREQ(VaskGetLanguage(), "BC");
    VaskSetLanguage("EN");
}

} // namespace
