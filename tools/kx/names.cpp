#include "names.h"

#include <cstdio>

#include "tables/kx_names.h"

namespace kx {
namespace {

struct NamedCharacter {
    KxChar ch;
    const char *name;
};

// ASCII without its letters.
constexpr NamedCharacter kAsciiNames[] = {
    {0x20, "SPACE"},
    {0x21, "EXCLAMATION MARK"},
    {0x22, "QUOTATION MARK"},
    {0x23, "NUMBER SIGN"},
    {0x24, "DOLLAR SIGN"},
    {0x25, "PERCENT SIGN"},
    {0x26, "AMPERSAND"},
    {0x27, "APOSTROPHE"},
    {0x28, "LEFT PARENTHESIS"},
    {0x29, "RIGHT PARENTHESIS"},
    {0x2A, "ASTERISK"},
    {0x2B, "PLUS SIGN"},
    {0x2C, "COMMA"},
    {0x2D, "HYPHEN-MINUS"},
    {0x2E, "FULL STOP"},
    {0x2F, "SOLIDUS"},
    {0x30, "DIGIT ZERO"},
    {0x31, "DIGIT ONE"},
    {0x32, "DIGIT TWO"},
    {0x33, "DIGIT THREE"},
    {0x34, "DIGIT FOUR"},
    {0x35, "DIGIT FIVE"},
    {0x36, "DIGIT SIX"},
    {0x37, "DIGIT SEVEN"},
    {0x38, "DIGIT EIGHT"},
    {0x39, "DIGIT NINE"},
    {0x3A, "COLON"},
    {0x3B, "SEMICOLON"},
    {0x3C, "LESS-THAN SIGN"},
    {0x3D, "EQUALS SIGN"},
    {0x3E, "GREATER-THAN SIGN"},
    {0x3F, "QUESTION MARK"},
    {0x40, "COMMERCIAL AT"},
    {0x5B, "LEFT SQUARE BRACKET"},
    {0x5C, "REVERSE SOLIDUS"},
    {0x5D, "RIGHT SQUARE BRACKET"},
    {0x5E, "CIRCUMFLEX ACCENT"},
    {0x5F, "LOW LINE"},
    {0x60, "GRAVE ACCENT"},
    {0x7B, "LEFT CURLY BRACKET"},
    {0x7C, "VERTICAL LINE"},
    {0x7D, "RIGHT CURLY BRACKET"},
    {0x7E, "TILDE"},
};

std::string ascii_name(KxChar ch) {
    constexpr KxChar case_bit = 0x20;
    const auto capital = static_cast<KxChar>(ch & ~case_bit);
    if ('A' <= capital && capital <= 'Z') {
        return std::string(ch == capital ? "LATIN CAPITAL LETTER " : "LATIN SMALL LETTER ") +
               static_cast<char>(capital);
    }
    for (const NamedCharacter &named : kAsciiNames) {
        if (named.ch == ch) return named.name;
    }
    return "";
}

} // namespace

std::string name_of_character(KxChar ch, std::uint16_t unicode) {
    constexpr std::uint16_t first_ideograph = 0x4E00, last_ideograph = 0x9FFF;
    if (ch < 0x80) return ascii_name(ch);
    if (first_ideograph <= unicode && unicode <= last_ideograph) {
        char name[32];
        std::snprintf(name, sizeof name, "CJK UNIFIED IDEOGRAPH-%04X", unicode);
        return name;
    }
    return std::string(kxstr::tables::kx_name(ch));
}

} // namespace kx
