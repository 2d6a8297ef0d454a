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
    Narrowed done{};
    const auto put = [&](unsigned byte) { destination[done.written++] = static_cast<std::uint8_t>(byte); };
    while (done.filtered < room) {
        const std::uint8_t *const code = source + done.read;
        if (*code == kExtended) {
            if (room - done.filtered < kExtendedSize) break;
            const unsigned native = codes[code[1] | code[2] << 8];
            if (native == 0xFFFF) {
                ++done.dropped;
            } else {
                if (native > 0xFF) put(native >> 8);
                put(native);
            }
            done.read += kExtendedSize;
            done.filtered += kExtendedSize;
        } else if (*code != 0 && *code < kFirstLongCode) {
            ++done.read;
            if (kept[*code] == 0) continue;
            ++done.filtered;
            put(kept[*code]);
        } else {
            break;
        }
    }
    return done;
}

Progress write_stream(std::uint8_t *stream, const std::uint16_t *characters, std::size_t count,
                      std::size_t room) noexcept {
    Progress done{};
    for (; done.read < count; ++done.read) {
        const unsigned character = characters[done.read];
        if (character == 0xFFFF) continue;
        const std::size_t size = character <= 0xFF ? 1 : kExtendedSize;
        if (size > room - done.written) break;
        std::uint8_t *const to = stream + done.written;
        if (size == 1) {
            to[0] = static_cast<std::uint8_t>(character);
        } else {
            to[0] = kExtended;
            to[1] = static_cast<std::uint8_t>(character);
            to[2] = static_cast<std::uint8_t>(character >> 8);
            to[3] = kExtended;
        }
        done.written += size;
    }
    return done;
}

} // namespace kxstr::simd::plain
