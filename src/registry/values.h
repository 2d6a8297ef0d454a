// Types of registry values, and reading a value whole.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/system.h"

namespace kxstr::registry {

inline constexpr std::uint32_t kWriteProtected = 0x40000000; // a bit of the type
inline constexpr std::uint32_t kLinkType = 0x80000008;
inline constexpr std::uint32_t kCodePageType = 0x80000002;

constexpr std::uint32_t base_type(std::uint32_t type) noexcept {
    return type & ~kWriteProtected;
}
constexpr bool is_link(std::uint32_t type) noexcept {
    return base_type(type) == kLinkType;
}

// A status that does not say whether a key or a value is there: reading failed. What cannot be read must not be taken
// for missing where something is to be written. (No rights count as missing: that is how a link goes on to its next
// place.)
constexpr bool is_unknown(std::uint32_t status) noexcept {
    return status == platform::kNoResources || status == platform::kInputOutputError ||
           status == platform::kOutOfMemory || status == platform::kDamaged;
}

// All data of a value, and its type. Returns the status of the last query; `data` is empty after a failure. Throws
// std::bad_alloc.
std::uint32_t read_value(platform::KeyHandle key, const char *name, std::uint32_t &type,
                         std::vector<std::uint8_t> &data);

} // namespace kxstr::registry
