#include "platform/ansi_text.h"

#include <algorithm>

#include "platform/system.h"

namespace kxstr::platform {
namespace {

std::optional<std::uint16_t> wide_of(std::uint32_t code_page, std::string_view character) noexcept {
    const std::uint8_t bytes[2] = {static_cast<std::uint8_t>(character[0]),
                                   static_cast<std::uint8_t>(character.size() > 1 ? character[1] : 0)};
    return to_wide(code_page, {bytes, character.size()});
}

} // namespace

std::u16string ansi_to_wide(std::string_view bytes) {
    const std::uint32_t code_page = ansi_code_page();
    const auto is_ascii = [](char ch) { return static_cast<std::uint8_t>(ch) < 0x80; };
    const auto ascii_end = std::ranges::find_if_not(bytes, is_ascii);
    std::u16string units(bytes.begin(), ascii_end);
    units.reserve(bytes.size());
    for (std::size_t i = units.size(); i < bytes.size(); ++i) {
        const auto byte = static_cast<std::uint8_t>(bytes[i]);
        if (byte >= 0x80 && i + 1 < bytes.size() && is_lead_byte(byte)) {
            if (const auto unit = wide_of(code_page, bytes.substr(i, 2))) {
                units += static_cast<char16_t>(*unit);
                ++i;
                continue;
            }
        }
        units += static_cast<char16_t>(byte < 0x80 ? byte : wide_of(code_page, bytes.substr(i, 1)).value_or(byte));
    }
    return units;
}

std::string wide_to_ansi(std::u16string_view units) {
    const std::uint32_t code_page = ansi_code_page();
    std::string bytes;
    bytes.reserve(units.size());
    for (const char16_t unit : units) {
        if (unit < 0x80) {
            bytes += static_cast<char>(unit);
            continue;
        }
        const NativeBytes native = from_wide(code_page, unit);
        for (std::size_t i = 0; i < native.count; ++i)
            bytes += static_cast<char>(native.bytes[i]);
        if (native.count != 0) continue;
        const char same = static_cast<char>(unit);
        bytes += unit < 0x100 && !wide_of(code_page, {&same, 1}) ? same : '?';
    }
    return bytes;
}

} // namespace kxstr::platform
