#include "simd/families.h"

namespace kxstr::simd::plain {
namespace {

constexpr std::uint8_t kFirstLongCode = 0xD0;
constexpr std::uint8_t kExtended = 0xF0;
constexpr std::size_t kExtendedSize = 4;

} // namespace

const std::uint8_t *skip_characters(const std::uint8_t *code) noexcept {
    for (;;) {
        if (*code == kExtended)
            code += kExtendedSize;
        else if (*code != 0 && *code < kFirstLongCode)
            ++code;
        else
            return code;
    }
}

Progress filter_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                             const std::uint8_t *kept) noexcept {
    std::size_t read = 0;
    std::size_t written = 0;
    while (written < room) {
        const std::uint8_t code = source[read];
        if (code == kExtended) {
            if (room - written < kExtendedSize) break;
            for (std::size_t i = 0; i < kExtendedSize; ++i)
                destination[written + i] = source[read + i];
            read += kExtendedSize;
            written += kExtendedSize;
        } else if (code != 0 && code < kFirstLongCode) {
            ++read;
            if (kept[code] != 0) destination[written++] = kept[code];
        } else {
            break;
        }
    }
    return {read, written};
}

Narrowed narrow_stream(std::uint8_t *stream, std::size_t length, const std::uint16_t *codes) noexcept {
    Narrowed result{0, 0};
    for (std::size_t read = 0; read < length;) {
        if (stream[read] != kExtended) {
            stream[result.written++] = stream[read++];
            continue;
        }
        const unsigned code = codes[stream[read + 1] | stream[read + 2] << 8];
        read += kExtendedSize;
        if (code == 0xFFFF) {
            ++result.dropped;
            continue;
        }
        if (code > 0xFF) stream[result.written++] = static_cast<std::uint8_t>(code >> 8);
        stream[result.written++] = static_cast<std::uint8_t>(code);
    }
    return result;
}

std::size_t widen_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                         const std::uint16_t *characters) noexcept {
    std::size_t read = 0;
    std::size_t written = 0;
    for (; written < room && source[read] != 0; ++read) {
        const std::uint8_t byte = source[read];
        const unsigned character = 0x20 <= byte && byte <= 0x7E ? byte : characters[byte];
        if (character <= 0xFF) {
            destination[written++] = static_cast<std::uint8_t>(character);
        } else if (character != 0xFFFF) {
            if (room - written < kExtendedSize) break;
            destination[written] = kExtended;
            destination[written + 1] = static_cast<std::uint8_t>(character);
            destination[written + 2] = static_cast<std::uint8_t>(character >> 8);
            destination[written + 3] = kExtended;
            written += kExtendedSize;
        }
    }
    return written;
}

} // namespace kxstr::simd::plain
