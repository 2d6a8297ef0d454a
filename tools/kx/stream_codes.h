// The codes of a KX document stream that comes from outside, by the library's checked walk (KxStreamNext): a code that
// lies counts as a single byte.
#pragma once

#include <cstdint>
#include <kxstr/types.h>
#include <optional>
#include <span>

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

} // namespace kx
