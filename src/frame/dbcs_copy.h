// The one rule for copying and cutting byte text without splitting a double-byte character of the system's ANSI code
// page.
#pragma once

#include <cstddef>

#include "platform/system.h"

namespace kxstr {

// Copies at most `room` bytes of a zero-terminated string. A lead byte is written only together with the byte after it,
// and only when both fit; otherwise the copy stops before it. The byte after a lead byte may be the terminator: it is
// copied as such and ends the copy, so nothing behind it is read. Returns the number of bytes written, the terminator
// included when it was reached; the caller decides what becomes of the rest.
inline std::size_t copy_whole_characters(std::uint8_t *destination, const std::uint8_t *source,
                                         std::size_t room) noexcept {
    std::size_t written = 0;
    while (written < room) {
        const std::uint8_t byte = source[written];
        if (byte != 0 && platform::is_lead_byte(byte)) {
            if (room - written < 2) break;
            destination[written++] = byte;
            const std::uint8_t trail = source[written];
            destination[written++] = trail;
            if (trail == 0) break;
        } else {
            destination[written++] = byte;
            if (byte == 0) break;
        }
    }
    return written;
}

} // namespace kxstr
