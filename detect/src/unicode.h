// Texts in UTF-7, UTF-8, UTF-16 and UTF-32.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kxdetect {

struct Utf8Check {
    std::size_t characters = 0; // of more than one byte
    std::size_t broken = 0; // bytes that belong to none; a character that the end of the text cuts off counts nowhere
};
Utf8Check check_utf8(std::span<const std::uint8_t> text);

// The first units of a text; those beyond U+FFFF and bytes that are none are U+FFFD.
std::vector<std::uint16_t> units_of_utf8(std::span<const std::uint8_t> text, std::size_t most);
std::vector<std::uint16_t> units_of_utf16(std::span<const std::uint8_t> text, bool high_first, std::size_t most);

// The same without a mark; nothing when one of them is no character, or NUL.
std::vector<std::uint16_t> units_of_utf32(std::span<const std::uint8_t> text, bool high_first, std::size_t most);
// Nothing when a plus sign is none of UTF-7, or what is shifted may be letters by chance.
std::vector<std::uint16_t> units_of_utf7(std::span<const std::uint8_t> text, std::size_t most);

// Whether most of the first units are characters that some language has: a quick look before the languages are tried.
bool is_likely_unicode(std::span<const std::uint16_t> text);

} // namespace kxdetect
