// UTF-8 text of settings files. A half surrogate, which UTF-16 names may hold, travels as a sequence of three bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kxstr::platform {

std::string to_utf8(std::u16string_view units);
// Nothing for bytes that are no UTF-8.
std::optional<std::u16string> from_utf8(std::string_view bytes);

} // namespace kxstr::platform
