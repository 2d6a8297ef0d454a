// Windows answers for itself: each function here is the one call that the seam names.
#include <cstdlib>

#include "platform/system.h"
#include "platform/windows/windows.h"

namespace kxstr::platform {

std::uint32_t ansi_code_page() noexcept {
    return GetACP();
}
std::uint32_t oem_code_page() noexcept {
    return GetOEMCP();
}
bool is_double_byte_system() noexcept {
    return GetSystemMetrics(SM_DBCSENABLED) != 0;
}
std::uint16_t system_language() noexcept {
    return GetSystemDefaultLangID();
}
bool is_lead_byte(std::uint8_t byte) noexcept {
    return IsDBCSLeadByte(byte) != 0;
}
bool is_lead_byte_of(std::uint32_t code_page, std::uint8_t byte) noexcept {
    return IsDBCSLeadByteEx(code_page, byte) != 0;
}

std::uint16_t keyboard_language() noexcept {
    return LOWORD(reinterpret_cast<ULONG_PTR>(GetKeyboardLayout(0))); // of the calling thread
}

Origins origins() noexcept {
    constexpr const char *kSystem = "Windows";
    return {kSystem, kSystem, kSystem, kSystem, kSystem, kSystem, "the registry"};
}

std::optional<std::uint32_t> ansi_code_page_of(std::uint16_t language) noexcept {
    char digits[6];
    const LCID locale = MAKELCID(language, SORT_DEFAULT);
    if (GetLocaleInfoA(locale, LOCALE_IDEFAULTANSICODEPAGE, digits, sizeof digits) == 0) return std::nullopt;
    return static_cast<std::uint32_t>(std::atoi(digits));
}

std::optional<std::uint8_t> character_set_of(std::uint32_t code_page) noexcept {
    CHARSETINFO info;
    // The code page travels in the pointer argument itself.
    auto *source = reinterpret_cast<DWORD *>(static_cast<ULONG_PTR>(code_page));
    if (TranslateCharsetInfo(source, &info, TCI_SRCCODEPAGE) == 0) return std::nullopt;
    return static_cast<std::uint8_t>(info.ciCharset);
}

std::optional<std::uint16_t> to_wide(std::uint32_t code_page, std::span<const std::uint8_t> bytes) noexcept {
    wchar_t unit;
    const auto *text = reinterpret_cast<const char *>(bytes.data());
    if (MultiByteToWideChar(code_page, 0, text, static_cast<int>(bytes.size()), &unit, 1) != 1) return std::nullopt;
    return static_cast<std::uint16_t>(unit);
}

NativeBytes from_wide(std::uint32_t code_page, std::uint16_t unit) noexcept {
    const auto wide = static_cast<wchar_t>(unit);
    char bytes[2] = {};
    // UTF-8 refuses the flag and the pointer. It lacks only halves of surrogate pairs, and what stands for those has
    // three bytes: like all units from U+0800 up they do not fit.
    const bool utf8 = code_page == CP_UTF8;
    BOOL used_default = FALSE;
    const int count = WideCharToMultiByte(code_page, utf8 ? 0 : WC_NO_BEST_FIT_CHARS, &wide, 1, bytes, 2, nullptr,
                                          utf8 ? nullptr : &used_default);
    if (count < 1 || used_default) return {};
    return {{static_cast<std::uint8_t>(bytes[0]), static_cast<std::uint8_t>(bytes[1])},
            static_cast<std::uint8_t>(count)};
}

} // namespace kxstr::platform
