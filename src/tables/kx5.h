// KX 5 and KX 6 characters in terms of each other, worked out for every index of the sets that differ.
#pragma once

#include <array>
#include <kxstr/types.h>
#include <span>

namespace kxstr::tables {

// By set, then by index; a set without values is unchanged. KX_NONE: no equivalent.
extern const std::array<std::span<const KxChar>, 14> kKx6ToKx5;
extern const std::array<std::span<const KxChar>, 14> kKx5ToKx6;

// The voicing mark that follows a KX 5 katakana letter as a second KX 6 character, by index; 0 for most.
extern const std::array<KxChar, 256> kKx5Marks;

} // namespace kxstr::tables
