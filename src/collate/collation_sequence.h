// The lookup in a collation sequence: coltbl, or one of the constant sequences of the collation by language number.
#pragma once

#include <kxstr/collate.h>

#include "core/kx_char.h"

namespace kxstr::collate {

inline constexpr std::uint8_t kEndOfSequence = 0xFF;
inline constexpr std::uint8_t kNoValue = 0xFF;

// The first entry from `entry` on that is of the set, else the end of the sequence, which has no block.
template <class Entry> const Entry *find_entry(const Entry *entry, std::uint8_t set) noexcept {
    while (entry->set != set && entry->set != kEndOfSequence)
        ++entry;
    return entry;
}

// Where a block (may be null) holds the value of an index, or null outside it.
template <class Byte> Byte *find_in_block(Byte *block, std::uint8_t index) noexcept {
    if (block == nullptr) return nullptr;
    const unsigned offset = static_cast<unsigned>(index) - block[0]; // wraps below the first index
    return offset < block[1] ? block + 2 + offset : nullptr;
}

// Where coltbl holds the value of a character, or null.
inline std::uint8_t *find_in_coltbl(KxChar ch) noexcept {
    return find_in_block<std::uint8_t>(find_entry(coltbl, set_of(ch))->block, index_of(ch));
}

inline std::uint8_t coltbl_value(KxChar ch) noexcept {
    const std::uint8_t *value = find_in_coltbl(ch);
    return value != nullptr ? *value : kNoValue;
}

} // namespace kxstr::collate
