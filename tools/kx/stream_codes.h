// The codes of a KX document stream that comes from outside, by the library's checked walk (KxStreamNext): a code that
// lies counts as a single byte.
#pragma once

#include <cstdint>
#include <kxstr/types.h>
#include <optional>
#include <span>
#include <vector>

#include "coders.h"
#include "files.h"

namespace kx {

struct StreamCode {
    std::size_t size;  // bytes it takes; at least 1
    const char *fault; // what it does wrong; null for a sound code
};

// The code at `at`, which lies in the chunk. Nothing when the bytes that tell are still to come.
std::optional<StreamCode> stream_code(const Chunk &chunk, std::size_t at);

// The KX unit of a sound code; nothing for codes that KX text does not know. The codes that are not text (attributes,
// the two hyphen codes) come `with_codes` only; else the hyphens are hyphens and the attributes are nothing.
std::optional<KxChar> unit_of_stream_code(std::span<const std::uint8_t> code, bool with_codes);

// Reads a stream code by code. What the codes of one byte become is asked for once, and what an extended character
// becomes at the first of it.
class CodeDecoder : public Decoder {
  public:
    Result decode(const Chunk &chunk, DecodedText &units) final;
    // Codes that give nothing may lie between a character and the next.
    std::size_t length(const Chunk &chunk, std::size_t place, std::size_t) const final {
        return stream_code(chunk, place)->size;
    }

  private:
    // The unit of a sound code, or nothing.
    virtual std::optional<KxChar> unit_of(std::span<const std::uint8_t> code) = 0;

    std::int32_t told_by(std::span<const std::uint8_t> code);
    std::int32_t unit_of_extended(std::span<const std::uint8_t> code);

    std::vector<std::int32_t> units_of_bytes_, units_of_extended_; // empty until one is wanted
};

} // namespace kx
