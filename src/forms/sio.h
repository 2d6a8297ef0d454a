// The sio form: a compact byte form of text with its own codes for line ends, extended characters and attributes.
#pragma once

#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::forms {

// `count`: the destination's size in bytes, the terminator included; 0 writes nothing and gives 0. `flags`: what is
// kept, KX_KEEP_ATTRIBUTES and so on. The result is the count of the output without its terminator, in which an
// attribute code of two bytes counts as three.
std::uint16_t stream_to_sio(std::uint8_t *destination, const std::uint8_t *source, std::uint16_t count,
                            std::uint32_t flags) noexcept;
// Gives 0 and writes nothing when there is no memory for a temporary buffer.
std::uint16_t string_to_sio(std::uint8_t *destination, const KxChar *source, std::uint16_t count, std::uint32_t flags,
                            bool double_byte_system) noexcept;

} // namespace kxstr::forms
