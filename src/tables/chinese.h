// Big5 characters to GB characters and back. The two are separate data, not inverses of each other.
#pragma once

#include <array>
#include <kxstr/types.h>

namespace kxstr::tables {

// By ordinal: 255 characters to a set, Big5 from set 0xA5 and GB from set 0x82 on. 0: no counterpart.
extern const std::array<KxChar, 13939> kBig5ToGb;
extern const std::array<KxChar, 8177> kGbToBig5;

} // namespace kxstr::tables
