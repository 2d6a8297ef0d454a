// How near a word is to another one, for messages that say what somebody may have meant.
#pragma once

#include <cstddef>
#include <string>

namespace kx {

// The number of letters that must be typed anew to come from one word to the other.
std::size_t edit_distance(const std::string &a, const std::string &b);

} // namespace kx
