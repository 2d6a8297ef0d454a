// Unicode to KX characters and back, one UTF-16 code unit at a time.
#pragma once

#include <cstddef>

#include "core/kx_char.h"
#include "core/map_cache.h"
#include "platform/system.h"

namespace kxstr::unicode {

// The double-byte characters go through the system's ANSI code page, when that is a double-byte one
// (platform::ansi_code_page()).
KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept;
std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept;

// Whole texts: units convert until a 0 has been stored or `limit` are, no-mapping values included; source and
// destination may be the same. The code page is asked for once. Give the units before the 0.
std::size_t to_kx(const std::uint16_t *source, std::size_t limit, KxChar *destination) noexcept;
std::size_t from_kx(const KxChar *source, std::size_t limit, std::uint16_t *destination) noexcept;

// A map of every unit for each code page that the conversions depend on.
inline constexpr std::size_t kUnicodeMaps = 8;
using UnicodeMaps = MapCache<std::uint32_t, kUnicodeMaps>;
#pragma GCC visibility push(hidden)
extern constinit UnicodeMaps maps_to_kx, maps_from_kx;
#pragma GCC visibility pop
// The one of the code page of the moment, if it is the first that the process came to have; else null. For texts that
// are shorter than the way to to_kx and from_kx.
inline const std::uint16_t *usual_map(const UnicodeMaps &maps) noexcept {
    return maps.find_first(platform::ansi_code_page());
}

} // namespace kxstr::unicode
