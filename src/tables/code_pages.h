// The code page table and its range and reverse tables. The layouts of the tables are told beside KxCodePage.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::tables {

struct CodePage {
    std::uint32_t kx_number; // the key; differs from the Windows number for the ISO 8859 pages only
    std::uint32_t windows_number;
    const std::uint8_t *low;  // range table for bytes below 32, or null
    const std::uint8_t *high; // range table for bytes above 126
    const std::uint8_t *reverse;
};

// In search order.
extern const std::array<CodePage, 46> kCodePages;

} // namespace kxstr::tables
