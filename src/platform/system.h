// What the library needs of the system it runs on, and the only door to it. portable/ implements it with settings that
// a host can read and replace; a Windows build forwards to the system calls named beside each function. Nothing is
// cached behind these functions: every call gives the answer of the moment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kxstr::platform {

// ---- Code pages, languages, keyboard ----

std::uint32_t ansi_code_page() noexcept;       // GetACP
std::uint32_t oem_code_page() noexcept;        // GetOEMCP
bool is_double_byte_system() noexcept;         // GetSystemMetrics(SM_DBCSENABLED)
std::uint16_t system_language() noexcept;      // GetSystemDefaultLangID
std::uint16_t keyboard_language() noexcept;    // low word of GetKeyboardLayout(0)
bool is_lead_byte(std::uint8_t byte) noexcept; // IsDBCSLeadByte: of the ANSI code page

// The default ANSI code page of a language: GetLocaleInfoA with LOCALE_IDEFAULTANSICODEPAGE. 0 for a language that has
// none of its own (Unicode only); nothing for a language that the system does not know.
std::optional<std::uint32_t> ansi_code_page_of(std::uint16_t language) noexcept;

// The font character set of a code page: TranslateCharsetInfo with TCI_SRCCODEPAGE.
std::optional<std::uint8_t> character_set_of(std::uint32_t code_page) noexcept;

// MultiByteToWideChar without flags, one character in and room for one unit. `bytes` holds one or two bytes. Nothing
// when the call converts nothing: an unknown code page, or bytes that do not make exactly one unit.
std::optional<std::uint16_t> to_wide(std::uint32_t code_page, std::span<const std::uint8_t> bytes) noexcept;

// WideCharToMultiByte without best fit and without a default character, one unit in.
struct NativeBytes {
    std::uint8_t bytes[2];
    std::uint8_t count; // 0 when the unit has no code in the code page
};
NativeBytes from_wide(std::uint32_t code_page, std::uint16_t unit) noexcept;

} // namespace kxstr::platform
