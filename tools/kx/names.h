// The Unicode names of KX characters.
#pragma once

#include <kxstr/types.h>
#include <string>

namespace kx {

// What stands before the Unicode value in an ideograph's name.
inline constexpr char kIdeograph[] = "CJK UNIFIED IDEOGRAPH-";

// `unicode`: the character's Unicode value, or KX_NONE. Empty for a character without a name of its own.
std::string name_of_character(KxChar ch, std::uint16_t unicode);
// The name of a Unicode character that some code page has; empty for control characters and private use.
std::string name_of_unicode(std::uint16_t unicode);

} // namespace kx
