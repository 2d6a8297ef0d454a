#include "platform/system.h"

namespace kxstr::platform {

bool is_lead_byte(std::uint8_t byte) noexcept {
    switch (ansi_code_page()) {
    case 932: return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    case 936:
    case 949:
    case 950: return byte >= 0x81 && byte <= 0xFE;
    default: return false;
    }
}

std::optional<std::uint16_t> to_wide(std::uint32_t code_page, std::span<const std::uint8_t> bytes) noexcept {
    if (bytes.size() != 1) return std::nullopt;
    if (bytes[0] < 0x80 || (code_page == 1252 && bytes[0] >= 0xA0)) return bytes[0];
    return std::nullopt;
}

NativeBytes from_wide(std::uint32_t code_page, std::uint16_t unit) noexcept {
    if (unit < 0x80 || (code_page == 1252 && unit >= 0xA0 && unit <= 0xFF))
        return {{static_cast<std::uint8_t>(unit), 0}, 1};
    return {{0, 0}, 0};
}

} // namespace kxstr::platform
