// KX 5 and KX 6 characters in terms of each other, worked out for every index of the sets that differ.
#pragma once

#include <array>
#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::tables {

// The characters of a set by index. KX_NONE: no equivalent.
extern const std::array<std::array<KxChar, 256>, 16> kKx5Sets;

// By set: 1 + its number in kKx5Sets; 0: it is unchanged.
extern const std::array<std::uint8_t, 14> kKx6ToKx5;
extern const std::array<std::uint8_t, 14> kKx5ToKx6;

// The voicing mark that follows a KX 5 katakana letter as a second KX 6 character, by index; 0 for most.
extern const std::array<KxChar, 256> kKx5Marks;

} // namespace kxstr::tables
