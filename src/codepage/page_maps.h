// Flat maps of code page descriptors: what to_kx and from_kx give, for all 65,536 codes and characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>

#include "core/map_cache.h"

namespace kxstr::codepage {

// The KX character of every native code (bytes are the first 256), and the native code of every KX character; kNone
// where there is none. Null where there is no map: a descriptor with tables of the caller's own, more than kPageMaps
// descriptors in one process, or a map that another thread is just building. Then the conversions of convert.h do.
// Built at the first call for a descriptor.
const std::uint16_t *to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;
const std::uint16_t *from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;

// 0x80 for every lead byte of the system's ANSI code page, 0 for the other bytes; or null, as above.
const std::uint8_t *lead_byte_map(std::uint32_t ansi_code_page) noexcept;

// For each direction. A map takes 128 KiB once it is built.
inline constexpr std::size_t kPageMaps = 8;

// What goes into the maps.
using MapValues = decltype(UnitMap::values);
void fill_to_kx_map(MapValues &values, const KxCodePage &page, bool double_byte_system) noexcept;
void fill_from_kx_map(MapValues &values, const KxCodePage &page, bool double_byte_system) noexcept;

} // namespace kxstr::codepage
