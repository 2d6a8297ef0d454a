// Code pages that are found in old files and that neither the library nor every system has. For the kx tool only.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::tables {

struct ToolPage {
    std::uint32_t number;
    std::array<std::uint16_t, 0x80> characters; // of the bytes from 80 up; U+FFFD: none
};

extern const std::array<ToolPage, 1> kToolPages;

} // namespace kxstr::tables
