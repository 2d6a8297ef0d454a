// Flat maps of code page descriptors: what to_kx and from_kx give, for all 65,536 codes and characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>

#include "core/map_cache.h"
#include "simd/kernels.h"

namespace kxstr::codepage {

// The KX character of every native code (bytes are the first 256), and the native code of every KX character; kNone
// where there is none: the values of a simd::PairMap. Null where there is no map: a descriptor with tables of the
// caller's own, more than kPageMaps descriptors in one process, or a map that another thread is just building. Then the
// conversions of convert.h do. Built at the first call for a descriptor.
const std::uint16_t *to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;
const std::uint16_t *from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;
// The same without the way to it, for calls that are short themselves; null, too, where the map is not the first one.
inline const std::uint16_t *first_to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;
inline const std::uint16_t *first_from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept;

// 0x80 for every lead byte of the system's ANSI code page, 0 for the other bytes; or null, as above.
const std::uint8_t *lead_byte_map(std::uint32_t ansi_code_page) noexcept;

inline const std::uint8_t *first_lead_byte_map(std::uint32_t ansi_code_page) noexcept;

// For each direction. A map takes 128 KiB once it is built.
inline constexpr std::size_t kPageMaps = 8;

// Everything that a conversion depends on. The library's tables are constant: their addresses stand for them.
struct PageMapKey {
    std::uint32_t code_page;
    bool double_byte_system;
    const std::uint8_t *table, *other_table;

    bool operator==(const PageMapKey &) const = default;
};
using PageMapCache = MapCache<PageMapKey, kPageMaps, simd::PairMap>;
#pragma GCC visibility push(hidden)
extern constinit PageMapCache to_kx_cache, from_kx_cache;
extern constinit MapCache<std::uint32_t, kPageMaps, ByteMap> lead_byte_cache;
#pragma GCC visibility pop

inline PageMapKey to_kx_key(const KxCodePage &page, bool double_byte_system) noexcept {
    return {page.input_code_page, double_byte_system, page.low_table, page.high_table};
}
inline PageMapKey from_kx_key(const KxCodePage &page, bool double_byte_system) noexcept {
    return {page.output_code_page, double_byte_system, page.reverse_table, nullptr};
}
inline const std::uint16_t *first_to_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return to_kx_cache.find_first(to_kx_key(page, double_byte_system));
}
inline const std::uint16_t *first_from_kx_map(const KxCodePage &page, bool double_byte_system) noexcept {
    return from_kx_cache.find_first(from_kx_key(page, double_byte_system));
}
inline const std::uint8_t *first_lead_byte_map(std::uint32_t ansi_code_page) noexcept {
    return lead_byte_cache.find_first(ansi_code_page);
}

// What goes into the maps.
void fill_to_kx_map(simd::PairMap &map, const KxCodePage &page, bool double_byte_system) noexcept;
void fill_from_kx_map(simd::PairMap &map, const KxCodePage &page, bool double_byte_system) noexcept;

} // namespace kxstr::codepage
