// The code page table and its range and reverse tables. The layouts of the tables are told beside KxCodePage.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::tables {

extern const std::array<std::uint8_t, 29721> kCodePageTables;

struct CodePage {
    std::uint32_t kx_number; // the key; differs from the Windows number for the ISO 8859 pages only
    std::uint32_t windows_number;
    // 1 + a table's place in kCodePageTables; 0: none. Addresses would have to be relocated at every load.
    std::uint16_t low_at;
    std::uint16_t high_at;
    std::uint16_t reverse_at;

    const std::uint8_t *low() const noexcept { return table_at(low_at); }   // range table for bytes below 32, or null
    const std::uint8_t *high() const noexcept { return table_at(high_at); } // range table for bytes above 126
    const std::uint8_t *reverse() const noexcept { return table_at(reverse_at); }

  private:
    static const std::uint8_t *table_at(std::uint16_t place) noexcept {
        return place != 0 ? &kCodePageTables[place - 1u] : nullptr;
    }
};

// In search order.
extern const std::array<CodePage, 46> kCodePages;

} // namespace kxstr::tables
