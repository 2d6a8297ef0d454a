#include "letters/classes.h"

namespace kxstr::letters {
namespace {

constexpr KxIndexRange kAlphabetic[] = {
    {0, 0x41, 0x5A},  // A to Z
    {0, 0x61, 0x7A},  // a to z
    {1, 0x17, 0xF1},  // Latin letters
    {8, 0x00, 0x4E},  // Greek
    {8, 0x6D, 0xD6},  // Greek with accents
    {9, 0x00, 0x1A},  // Hebrew
    {9, 0x54, 0x76},  // Hebrew with points
    {10, 0x00, 0xC7}, // Cyrillic
    {10, 0xD2, 0xF9}, // Georgian
    {11, 0x05, 0x3E}, // half-width katakana and their sound marks
    {13, 0x2F, 0xC1}, // Arabic
    {14, 0x29, 0xDB}, // further Arabic script
    {KX_RANGES_END, 0, 0},
};

// The set numbers from 0xF9 up are codes of KX strings: the tab, line ends and space codes count, but not the tab and
// line feed of ASCII.
constexpr KxIndexRange kSpaces[] = {
    {0, 0x20, 0x20},    {0xF9, 0x0A, 0x0D}, {0xF9, 0x09, 0x09},    {0xFB, 0x02, 0x02},
    {0xFB, 0x17, 0x32}, {0xFC, 0x40, 0x61}, {KX_RANGES_END, 0, 0},
};

} // namespace

bool is_alpha(KxChar ch) noexcept {
    return found_in_table(ch, kAlphabetic);
}

bool is_space(KxChar ch) noexcept {
    return found_in_table(ch, kSpaces);
}

} // namespace kxstr::letters

extern "C" {

int32_t W6wstrIsAlpha(uint32_t ch) {
    return kxstr::letters::is_alpha(kxstr::low16(ch)) ? 1 : 0;
}

int32_t W6wstrIsDigit(uint32_t ch) {
    return kxstr::letters::is_digit(kxstr::low16(ch)) ? 1 : 0;
}

int32_t W6wstrIsAlphaNum(uint32_t ch) {
    return kxstr::letters::is_digit(kxstr::low16(ch)) || kxstr::letters::is_alpha(kxstr::low16(ch)) ? 1 : 0;
}

int32_t W6wstrIsSpace(uint32_t ch) {
    return kxstr::letters::is_space(kxstr::low16(ch)) ? 1 : 0;
}

int32_t lW6wstrFoundInTable(uint32_t ch, const KxIndexRange *table) {
    return kxstr::letters::found_in_table(kxstr::low16(ch), table) ? 1 : 0;
}
}
