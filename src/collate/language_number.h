// Two-letter language codes and their numbers.
#pragma once

#include <cstdint>

namespace kxstr::collate {

// 0 for a code that is not known.
std::uint16_t language_number(const char *code) noexcept;

} // namespace kxstr::collate
