#include "names.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>

#include "core/kx_char.h"
#include "tables/kx_names.h"
#include "tables/unicode_names.h"
#include "unicode/map.h"

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

constexpr bool is_between(unsigned first, unsigned value, unsigned last) {
    return first <= value && value <= last;
}

std::string with_number(const char *prefix, std::uint16_t unicode) {
    char number[8];
    std::snprintf(number, sizeof number, "%04X", unicode);
    return std::string(prefix) + number;
}

// A syllable is named by its sounds, and numbered by them: first consonant, vowel, last consonant.
std::string hangul_name(unsigned syllable) {
    static constexpr const char *firsts[] = {"G",  "GG", "N", "D",  "DD", "R", "M", "B", "BB", "S",
                                             "SS", "",   "J", "JJ", "C",  "K", "T", "P", "H"};
    static constexpr const char *vowels[] = {"A",  "AE", "YA", "YAE", "EO", "E",  "YEO", "YE", "O",  "WA", "WAE",
                                             "OE", "YO", "U",  "WEO", "WE", "WI", "YU",  "EU", "YI", "I"};
    static constexpr const char *lasts[] = {"",   "G",  "GG", "GS", "N",  "NJ", "NH", "D", "L",  "LG",
                                            "LM", "LB", "LS", "LT", "LP", "LH", "M",  "B", "BS", "S",
                                            "SS", "NG", "J",  "C",  "K",  "T",  "P",  "H"};
    const std::size_t of_first = std::size(vowels) * std::size(lasts);
    return std::string("HANGUL SYLLABLE ") + firsts[syllable / of_first] +
           vowels[syllable % of_first / std::size(lasts)] + lasts[syllable % std::size(lasts)];
}

// The character of the table-driven sets that is this one, or kNone.
KxChar table_character(std::uint16_t unicode) {
    static const std::map<std::uint16_t, KxChar> characters = [] {
        std::map<std::uint16_t, KxChar> found;
        for (KxChar ch = kxstr::make_char(1, 0); !kxstr::is_code(ch); ++ch)
            if (!kxstr::tables::kx_name(ch).empty()) found.emplace(kxstr::unicode::from_kx(ch, 0), ch);
        return found;
    }();
    const auto found = characters.find(unicode);
    return found != characters.end() ? found->second : kxstr::kNone;
}

} // namespace

std::string name_of_character(KxChar ch, std::uint16_t unicode) {
    if (ch < 0x80) return ascii_name(ch);
    if (is_between(0x4E00, unicode, 0x9FFF)) return with_number(kIdeograph, unicode);
    return std::string(kxstr::tables::kx_name(ch));
}

std::string name_of_unicode(std::uint16_t unicode) {
    if (is_between(0xE000, unicode, 0xF8FF)) return ""; // private use: two pages may mean two things
    if (unicode < 0x80) return ascii_name(unicode);
    if (is_between(0x4E00, unicode, 0x9FFF)) return with_number(kIdeograph, unicode);
    if (is_between(0xF900, unicode, 0xFAFF)) return with_number("CJK COMPATIBILITY IDEOGRAPH-", unicode);
    if (is_between(0xAC00, unicode, 0xD7A3)) return hangul_name(unicode - 0xAC00u);
    if (is_between(0xFF01, unicode, 0xFF5E))
        return "FULLWIDTH " + ascii_name(static_cast<KxChar>(unicode - 0xFF01 + 0x21));
    if (const KxChar ch = table_character(unicode); ch != kxstr::kNone) return std::string(kxstr::tables::kx_name(ch));
    const auto &names = kxstr::tables::kUnicodeNames;
    const auto *const found =
        std::lower_bound(names.data(), names.data() + names.size(), unicode,
                         [](const auto &one, std::uint16_t wanted) { return one.unicode < wanted; });
    return found != names.data() + names.size() && found->unicode == unicode ? found->name : "";
}

} // namespace kx
