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

Narrowed narrow_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept, const std::uint16_t *codes) noexcept {
    const std::uint8_t *code = source;
    std::uint8_t *to = destination;
    std::size_t left = room, dropped = 0;
    while (left != 0) {
        if (*code == kExtended) {
            if (left < kExtendedSize) break;
            const unsigned native = codes[code[1] | code[2] << 8];
            if (native > 0xFF && native != 0xFFFF) *to++ = static_cast<std::uint8_t>(native >> 8);
            if (native != 0xFFFF) *to++ = static_cast<std::uint8_t>(native);
            if (native == 0xFFFF) ++dropped;
            code += kExtendedSize;
            left -= kExtendedSize;
        } else if (*code != 0 && *code < kFirstLongCode) {
            const std::uint8_t byte = kept[*code++];
            if (byte == 0) continue;
            *to++ = byte;
            --left;
        } else {
            break;
        }
    }
    return {static_cast<std::size_t>(code - source), room - left, static_cast<std::size_t>(to - destination), dropped};
}

Progress write_stream(std::uint8_t *stream, const std::uint16_t *characters, std::size_t count,
                      std::size_t room) noexcept {
    std::uint8_t *to = stream;
    std::size_t read = 0;
    for (std::size_t left = room; read < count; ++read) {
        const unsigned character = characters[read];
        if (character <= 0xFF) {
            if (left == 0) break;
            *to++ = static_cast<std::uint8_t>(character);
            --left;
        } else if (character != 0xFFFF) {
            if (left < kExtendedSize) break;
            to[0] = kExtended;
            to[1] = static_cast<std::uint8_t>(character);
            to[2] = static_cast<std::uint8_t>(character >> 8);
            to[3] = kExtended;
            to += kExtendedSize;
            left -= kExtendedSize;
        }
    }
    return {read, static_cast<std::size_t>(to - stream)};
}

std::size_t stream_of_bytes(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                            std::size_t room) noexcept {
    std::size_t written = 0;
    for (; written < room && *source != 0; ++source) {
        const Progress one = write_stream(stream + written, map + *source, 1, room - written);
        if (one.read == 0) break;
        written += one.written;
    }
    return written;
}

} // namespace kxstr::simd::plain
