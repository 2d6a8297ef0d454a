// Whole strings between the ANSI code page and UTF-16, and names without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kxstr::platform {

// A byte that is no character stands for a unit of its own (outside Windows the one of the same number), and comes back
// as that byte.
std::u16string ansi_to_wide(std::string_view bytes);
// A unit that the code page lacks becomes a question mark.
std::string wide_to_ansi(std::u16string_view units);

char16_t upper_case(char16_t unit) noexcept;
std::u16string upper_case(std::u16string_view text);

} // namespace kxstr::platform
