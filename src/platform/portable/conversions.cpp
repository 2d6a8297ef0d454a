#include "platform/system.h"
#include "tables/windows_pages.h"

namespace kxstr::platform {

bool is_lead_byte(std::uint8_t byte) noexcept {
    return is_lead_byte_of(ansi_code_page(), byte);
}

bool is_lead_byte_of(std::uint32_t code_page, std::uint8_t byte) noexcept {
    if (byte < tables::kFirstHighByte) return false;
    const auto *const page = tables::find_windows_page(code_page);
    return page != nullptr && tables::find_row(*page, byte) != nullptr;
}

std::optional<std::uint16_t> to_wide(std::uint32_t code_page, std::span<const std::uint8_t> bytes) noexcept {
    const auto *const page = tables::find_windows_page(code_page);
    if (page == nullptr || bytes.empty() || bytes.size() > 2) return std::nullopt;
    const std::uint8_t first = bytes[0];
    if (bytes.size() == 1)
        return first < tables::kFirstHighByte ? first : page->units()[first - tables::kFirstHighByte];

    // A zero is no trail byte: like two single bytes it comes to two units, for which there is no room.
    const std::uint8_t second = bytes[1];
    const std::uint16_t *const row = tables::find_row(*page, first);
    if (row == nullptr || second == 0) return std::nullopt;
    return second < tables::kFirstTrailByte ? page->default_unit : row[second - tables::kFirstTrailByte];
}

NativeBytes from_wide(std::uint32_t code_page, std::uint16_t unit) noexcept {
    const auto *const page = tables::find_windows_page(code_page);
    if (page == nullptr) return {{0, 0}, 0};
    if (unit < tables::kFirstHighByte) return {{static_cast<std::uint8_t>(unit), 0}, 1};
    const std::uint16_t code = tables::find_code(*page, unit);
    if (code == 0) return {{0, 0}, 0};
    if (code <= 0xFF) return {{static_cast<std::uint8_t>(code), 0}, 1};
    return {{static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)}, 2};
}

} // namespace kxstr::platform
