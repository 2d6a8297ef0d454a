// Filling code page descriptors from the code page table.
#pragma once

#include <kxstr/types.h>

#include "tables/code_pages.h"

namespace kxstr::codepage {

inline constexpr std::uint8_t kFromKx = 1;
inline constexpr std::uint8_t kTowardsKx = 2;
inline constexpr std::uint8_t kBothDirections = kFromKx | kTowardsKx;

// The entry of a KX code page number, or null.
const tables::CodePage *find_code_page(std::uint32_t kx_number) noexcept;
// The same, or an entry without tables.
tables::CodePage code_page_or_none(std::uint32_t kx_number) noexcept;

// A direction that already has the code page is left as it is, tables included. `code_page` is a KX number; one that
// the table lacks gives null tables.
void set_code_page(KxCodePage &page, std::uint32_t code_page, std::uint8_t directions) noexcept;

} // namespace kxstr::codepage
