// The Unicode names of KX characters.
#pragma once

#include <kxstr/types.h>
#include <string>

namespace kx {

// `unicode`: the character's Unicode value, or KX_NONE. Empty for a character without a name of its own.
std::string name_of_character(KxChar ch, std::uint16_t unicode);

} // namespace kx
