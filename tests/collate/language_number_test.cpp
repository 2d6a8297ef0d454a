#include <kxstr/collate.h>

#include "support/test.h"

namespace {

TEST(LanguageNumber, CodesInOrderAndBack) {
    const std::string codes = "USAFARCAHRCZDKNLOZCEUKFASUCFFRGADESDGRHEMAISITNOPLBRPORUSLESSVYKURTKJPKRCTCSLATA";
    for (std::uint32_t number = 0; number < 40; ++number) {
        char code[4] = {'x', 'x', 'x', 'x'};
        KxNum2Lang(number, code);
        EXPECT_EQ(std::string(code, 4), codes.substr(std::size_t{2} * number, 2) + std::string("\0x", 2));
        EXPECT_EQ(KxLanguage(code), static_cast<std::int32_t>(number));
    }
    for (const std::uint32_t number : {40u, 0xFFFFu, 0x10000u}) {
        char code[3] = {};
        KxNum2Lang(number, code);
        EXPECT_STREQ(code, "US") << number;
    }
    for (const char *unknown : {"EN", "de", "fR", "D", ""})
        EXPECT_EQ(KxLanguage(unknown), 0) << unknown;
    EXPECT_EQ(KxLanguage("FRX"), 14) << "two bytes count";
}

} // namespace
