// Zero-terminated strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <kxstr/types.h>

#include "simd/kernels.h"

namespace kxstr {

// The exported functions take byte strings as `char`, everything inside reads them as unsigned bytes.
inline const std::uint8_t *bytes_of(const char *text) noexcept {
    return reinterpret_cast<const std::uint8_t *>(text);
}
inline std::uint8_t *bytes_of(char *text) noexcept {
    return reinterpret_cast<std::uint8_t *>(text);
}

// In units, of either size.
inline std::size_t length_of(const KxChar *text) noexcept {
    return static_cast<std::size_t>(simd::kernels().find_zero16(text) - text);
}
inline std::size_t length_of(const std::uint8_t *text) noexcept {
    return std::strlen(reinterpret_cast<const char *>(text));
}

} // namespace kxstr
