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

// ---- Memory: counts in bytes; null when there is no room; freeing null does nothing ----

void *process_heap() noexcept;                                 // GetProcessHeap: never null, always the same
void *heap_allocate(std::size_t size) noexcept;                // HeapAlloc on the process heap; not cleared
void *heap_reallocate(void *block, std::size_t size) noexcept; // HeapReAlloc: after a failure `block` is as it was
void heap_free(void *block) noexcept;                          // HeapFree
void *task_allocate(std::size_t size) noexcept;                // CoTaskMemAlloc: what results are handed out in
void task_free(void *block) noexcept;                          // CoTaskMemFree

// Address space first, memory later: VirtualAlloc with MEM_RESERVE, with MEM_COMMIT, and VirtualFree with MEM_RELEASE.
// Sizes and committed parts are multiples of 4096; a committed part is readable, writable and zero.
void *reserve_address_space(std::size_t size) noexcept;
bool commit_memory(void *start, std::size_t size) noexcept;
void release_address_space(void *start, std::size_t size) noexcept; // `size` as reserved; takes committed parts along

// ---- Atoms: a number for a short text, the same for texts that differ only in case ----

// AddAtomA: 0xC000 and up; each call counts one use. 0 for null, an empty text, one of more than 255 bytes, or when
// there is no room (16,384 texts at once).
std::uint16_t add_atom(const char *text) noexcept;
void delete_atom(std::uint16_t atom) noexcept; // DeleteAtom: ends one use

} // namespace kxstr::platform
