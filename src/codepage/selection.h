// Which DOS and Windows code pages are in force, and the library's own descriptors for them.
#pragma once

#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::codepage {

std::uint16_t dos_code_page() noexcept;     // looked up afresh at every call
std::uint16_t windows_code_page() noexcept; // decided once, then kept

// Fills both of the library's descriptors from the code pages of the moment.
void fill_descriptors() noexcept;
// Fills them when they are not ready yet.
void ensure_descriptors() noexcept;
// Empties them, so that the next use fills them again.
void clear_descriptors() noexcept;

// The library's descriptors, filled at the first call.
const KxCodePage &ansi_descriptor() noexcept;
const KxCodePage &oem_descriptor() noexcept;

} // namespace kxstr::codepage
