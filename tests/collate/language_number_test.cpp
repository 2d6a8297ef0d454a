#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <string>
#include <vector>

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
}

TEST(LanguageNumber, UnknownCodesAndTheEndOfTheString) {
    for (const std::string code : {"EN", "ZZ", "de", "fR", "D", "", "\xC4\xD6"}) {
        const std::vector<char> exact(code.c_str(), code.c_str() + code.size() + 1);
        EXPECT_EQ(KxLanguage(exact.data()), 0) << code;
    }
    EXPECT_EQ(KxLanguage("FRX"), 14);
    EXPECT_EQ(KxLanguage("USA"), 0);
}

} // namespace
