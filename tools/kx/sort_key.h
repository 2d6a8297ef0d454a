// Binary sort keys: lines whose keys differ compare as their keys do, byte by byte. Keys of one Collation only.
#pragma once

#include <cstdint>
#include <kxstr/types.h>
#include <optional>
#include <span>
#include <vector>

#include "collation.h"

namespace kx {

class SortKeys {
  public:
    explicit SortKeys(const Collation &collation) : collation_(collation) {}

    // The key of a zero-terminated text, until the next call. Nothing when no key can stand for the text, because what
    // the comparison makes of it depends on the other side. A key has as many zeros behind it as are needed; none of
    // them are given.
    std::optional<std::span<const std::uint8_t>> make(std::span<const KxChar> text);

  private:
    // All of these write behind `out`, where there is room, and give the new end.
    std::uint8_t *add_coltbl(const KxChar *text, std::uint8_t *out) const;
    std::uint8_t *add_letters(const KxChar *text, std::uint8_t *out); // null when there is no key
    std::uint8_t *add_east_asian(const KxChar *text, std::uint8_t *out);
    std::uint8_t *add_lower_levels(std::uint8_t *out, std::size_t count, unsigned third_bits) const;

    const Collation &collation_;
    std::vector<std::uint8_t> key_;
    std::vector<std::uint16_t> second_;
    std::vector<std::uint8_t> third_; // 0 where the third level does not count
};

} // namespace kx
