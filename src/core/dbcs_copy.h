// The one rule for copying and cutting byte text without splitting a double-byte character of the system's ANSI code
// page.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/system.h"

namespace kxstr {

// Bytes of the whole characters at the start of a zero-terminated string that fit in `room`. A lead byte whose trail
// byte would be the terminator is no character; nothing behind the terminator is read.
inline std::size_t whole_characters(const std::uint8_t *text, std::size_t room) noexcept {
    std::size_t length = 0;
    while (length < room && text[length] != 0) {
        if (!platform::is_lead_byte(text[length]))
            length += 1;
        else if (room - length >= 2 && text[length + 1] != 0)
            length += 2;
        else
            break;
    }
    return length;
}

// Copies a zero-terminated string into `room` bytes. A lead byte goes over only together with the byte after it, and
// only when both fit; otherwise the copy stops before it, and the last byte of the room stays as it was. The byte after
// a lead byte may be the terminator, which ends the copy. What the text leaves of the room is filled with 0.
inline void copy_whole_characters(std::uint8_t *destination, const std::uint8_t *source, std::size_t room) noexcept {
    if (room == 0) return; // then the destination may be null
    std::size_t length = whole_characters(source, room);
    // With room for a pair, only a lead byte before the terminator can have ended the text early.
    if (room - length >= 2 && source[length] != 0) ++length;
    const bool ended = length < room && source[length] == 0;
    std::copy_n(source, length, destination);
    if (ended) std::memset(destination + length, 0, room - length);
}

} // namespace kxstr
