#pragma once

#include <cstdint>

#include "tables/windows_locales.h"

namespace kxstr::platform {

const tables::Language *find_language(std::uint16_t identifier) noexcept; // null for an unknown one

} // namespace kxstr::platform
