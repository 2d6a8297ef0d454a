// The one rule for copying and cutting byte text without splitting a double-byte character of the system's ANSI code
// page.
#pragma once

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

// Copies at most `room` bytes of a zero-terminated string. A lead byte is written only together with the byte after it,
// and only when both fit; otherwise the copy stops before it. The byte after a lead byte may be the terminator: it is
// copied as such and ends the copy. Returns the number of bytes written, the terminator included when it was reached;
// the caller decides what becomes of the rest.
inline std::size_t copy_whole_characters(std::uint8_t *destination, const std::uint8_t *source,
                                         std::size_t room) noexcept {
    std::size_t written = whole_characters(source, room);
    if (written < room) {
        // What ended the text, if not the room: the terminator, or a lead byte and the terminator.
        const std::size_t end_size = source[written] == 0 ? 1 : 2;
        if (end_size <= room - written) written += end_size;
    }
    std::memmove(destination, source, written);
    return written;
}

} // namespace kxstr
