// Which DOS and Windows code pages are in force, and the library's own descriptors for them.
#pragma once

#include <atomic>
#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::codepage {

std::uint16_t dos_code_page() noexcept;     // looked up afresh at every call
std::uint16_t windows_code_page() noexcept; // decided once, then kept

// Stores the Windows code page for the current language. It is in force once it is stored, and not before.
bool store_windows_code_page(std::uint16_t code_page) noexcept;

// The full path of the registry key with the settings of the current language. The same address at every call.
const char *settings_key() noexcept;

// The keys of all languages begin so.
inline constexpr const char *kCodePageSettings =
    "HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\";
inline constexpr const char *kDosValue = "DOS Code Page";
inline constexpr const char *kWindowsValue = "Windows Code Page";

// The code page number stored under a name for the current language, through links too; 0 when there is none. Asking
// leaves the key behind.
std::uint16_t stored_code_page(const char *value_name) noexcept;

// What is in force where nothing is stored.
struct DefaultCodePage {
    std::uint16_t number;
    bool by_country; // else by the system's code pages
};
DefaultCodePage default_dos_code_page() noexcept;
DefaultCodePage default_windows_code_page() noexcept;

// What has been decided and is kept for the process. Threads may come to it at once, the first time, too; whoever
// changes the code pages afterwards serialises that with everything else.
struct CodePageState {
    std::atomic<std::uint16_t> windows_code_page; // 0: not decided yet
    KxCodePage ansi;
    KxCodePage oem;
    std::atomic<bool> descriptors_ready; // once it is set, nobody writes the descriptors
};
#pragma GCC visibility push(hidden)
extern constinit CodePageState kept_code_pages; // for this subsystem alone; the others have code_page_state()
#pragma GCC visibility pop
inline const CodePageState &code_page_state() noexcept {
    return kept_code_pages;
}
// Puts a Windows code page in force; 0 decides anew.
void keep_windows_code_page(std::uint16_t number) noexcept;
void forget_code_pages() noexcept;

// Fills both of the library's descriptors from the code pages of the moment.
void fill_descriptors() noexcept;
// Fills them when they are not ready yet.
void ensure_descriptors() noexcept;
// Empties them, so that the next use fills them again.
void clear_descriptors() noexcept;

// The library's descriptors, filled at the first call.
inline const KxCodePage &ansi_descriptor() noexcept {
    if (!code_page_state().descriptors_ready.load(std::memory_order_acquire)) ensure_descriptors();
    return code_page_state().ansi;
}
inline const KxCodePage &oem_descriptor() noexcept {
    if (!code_page_state().descriptors_ready.load(std::memory_order_acquire)) ensure_descriptors();
    return code_page_state().oem;
}

} // namespace kxstr::codepage
