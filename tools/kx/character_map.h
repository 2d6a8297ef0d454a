// What a command makes of single characters, as a map from form to form: one look-up for each in place of the way
// through KX text and back.
#pragma once

#include <bitset>
#include <functional>

#include "encodings.h"
#include "text/converter.h"

namespace kx {

class CharacterMap {
  public:
    // Null unless the library converts texts of both forms.
    static std::unique_ptr<CharacterMap> make(const Encoding &from, const Encoding &to);

    // Appends what becomes of a character, whatever stands beside it; false where that is not all, because its
    // neighbours have a say or there is something to tell about it.
    using Way = std::function<bool(std::span<const std::uint8_t> character, ByteBuffer &bytes)>;
    // Appends what becomes of the chunk's characters up to the first one that cannot go by the map. Returns how many
    // bytes these are. A mark is a character. The way is asked once for each character, and is always the same.
    std::size_t convert(const Chunk &chunk, ByteBuffer &bytes, const Way &way);

  private:
    static constexpr std::size_t kUnits = 0x10000;

    CharacterMap(const Encoding &from, const Encoding &to, const KxTextForm &source, const KxTextForm &target);
    bool learn(std::span<const std::uint8_t> character, const Way &way);

    Encoding from_, to_;
    KxTextConverter converter_;
    std::vector<kxstr::text::Mapped> units_; // of those that are read
    std::bitset<kUnits> known_;
    ByteBuffer written_;
};

} // namespace kx
