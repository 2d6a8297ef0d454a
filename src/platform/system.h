// What the library needs of the system it runs on, and the only door to it. portable/ implements it with settings that
// a host can read and replace; a Windows build forwards to the system calls named beside each function. Every call
// gives the answer of the moment. (The settings file is parsed again only when it has changed; every call looks.)
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#ifndef _WIN32
#    include "platform/portable/settings.h"
#endif

namespace kxstr::platform {

// ---- Code pages, languages, keyboard ----

#ifdef _WIN32                            // else in place, in portable/settings.h
std::uint32_t ansi_code_page() noexcept; // GetACP
bool is_double_byte_system() noexcept;   // GetSystemMetrics(SM_DBCSENABLED)
#endif
std::uint32_t oem_code_page() noexcept;                                    // GetOEMCP
std::uint16_t system_language() noexcept;                                  // GetSystemDefaultLangID
std::uint16_t keyboard_language() noexcept;                                // low word of GetKeyboardLayout(0)
bool is_lead_byte(std::uint8_t byte) noexcept;                             // IsDBCSLeadByte: of the ANSI code page
bool is_lead_byte_of(std::uint32_t code_page, std::uint8_t byte) noexcept; // IsDBCSLeadByteEx

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
    std::uint8_t count; // 0 when the unit has no code of one or two bytes in the code page
};
NativeBytes from_wide(std::uint32_t code_page, std::uint16_t unit) noexcept;

// ---- Where the settings came from ----

// A variable's name, "default", "KxPlatformSet", what it follows ("the ANSI code page"), or "Windows".
struct Origins {
    const char *ansi_code_page;
    const char *oem_code_page;
    const char *double_byte;
    const char *system_language;
    const char *keyboard_language;
    const char *store;
    const char *store_path; // no origin but the path of the settings file, empty for none; on Windows "the registry"
};
Origins origins() noexcept;

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

// ---- First use ----

// One lock for the process. Whoever puts in place what is worked out once and then kept holds it; who only reads,
// never.
class FirstUse {
  public:
    FirstUse() noexcept;
    ~FirstUse();
    FirstUse(const FirstUse &) = delete;
    FirstUse &operator=(const FirstUse &) = delete;
};

// ---- Atoms: a number for a short text, the same for texts that differ only in case ----

// AddAtomA: 0xC000 and up; each call counts one use. 0 for null, an empty text, one of more than 255 bytes, or when
// there is no room (16,384 texts at once). `#` and a decimal number is the atom of that number, 1 to 0xBFFF, which is
// there always; 0 for 0 and 0xC000 to 0xFFFF.
std::uint16_t add_atom(const char *text) noexcept;
void delete_atom(std::uint16_t atom) noexcept; // DeleteAtom: ends one use

// ---- Registry: keys by handle, typed values; names are ANSI strings, compared without regard to case ----
//
// Every function returns a Windows status number. The data of the string types (kTextType, kExpandableTextType,
// kTextListType) crosses this border in the ANSI code page, all other data as it is.

enum RegistryStatus : std::uint32_t {
    kSuccess = 0,
    kNotFound = 2,
    kAccessDenied = 5,
    kBadHandle = 6,
    kOutOfMemory = 14,
    kBadParameter = 87,
    kDiskFull = 112,
    kBadPath = 161, // a key path that starts with a backslash
    kBusy = 170,    // another process keeps the settings locked
    kMoreData = 234,
    kNoMoreItems = 259,
    kDamaged = 1009, // the settings cannot be parsed
    kBadKey = 1010,
    kCannotOpen = 1011,
    kInputOutputError = 1016,
    kKeyDeleted = 1018,
    kNoResources = 1450,
};

inline constexpr std::uint32_t kTextType = 1;
inline constexpr std::uint32_t kExpandableTextType = 2;
inline constexpr std::uint32_t kTextListType = 7;

inline constexpr std::uint32_t kReadAndWrite = 0x2001F; // KEY_READ | KEY_WRITE

// The size of a pointer, so that handles of the system fit; null is no key.
enum class KeyHandle : std::uintptr_t { null = 0 };

// 0x80000000 and up: the roots. Wider handles hold them sign-extended, as the system does.
constexpr KeyHandle root_key(std::uint32_t number) noexcept {
    return static_cast<KeyHandle>(static_cast<std::intptr_t>(static_cast<std::int32_t>(number)));
}
inline constexpr KeyHandle kClassesRoot = root_key(0x80000000);
inline constexpr KeyHandle kCurrentUser = root_key(0x80000001);
inline constexpr KeyHandle kLocalMachine = root_key(0x80000002);
inline constexpr KeyHandle kUsers = root_key(0x80000003);
inline constexpr KeyHandle kPerformanceData = root_key(0x80000004);
inline constexpr KeyHandle kCurrentConfig = root_key(0x80000005);
inline constexpr KeyHandle kDynData = root_key(0x80000006);

// What a write does while another process is writing. Outside Windows it waits, for half a minute at most, or gives up
// at once, with kBusy. The system's own registry keeps nobody waiting.
enum class WhenLocked : bool { waits, gives_up };

// RegCreateKeyExA: opens `path` under `parent`, and creates what is missing of it. An empty path is the parent itself.
std::uint32_t create_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key, bool &created,
                         WhenLocked when_locked = WhenLocked::waits) noexcept;
// RegOpenKeyExA
std::uint32_t open_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key) noexcept;
// RegCloseKey: the roots stay open.
std::uint32_t close_key(KeyHandle key) noexcept;

// RegQueryValueExA. A null or empty name is the key's default value. `type` may be null. `size`: room at `data` in
// bytes, then the size of the value. Without `data` only type and size are told; with too little room the same and
// kMoreData, and nothing is written.
std::uint32_t query_value(KeyHandle key, const char *name, std::uint32_t *type, void *data,
                          std::uint32_t &size) noexcept;
// create_key, query_value and close_key in a row, with one look at the settings when the key is there. It keeps nobody
// waiting: while another process is writing a missing key stays missing, with kNotFound.
std::uint32_t query_value_at(KeyHandle parent, const char *path, const char *name, std::uint32_t *type, void *data,
                             std::uint32_t &size) noexcept;
// RegSetValueExA
std::uint32_t set_value(KeyHandle key, const char *name, std::uint32_t type, const void *data, std::uint32_t size,
                        WhenLocked when_locked = WhenLocked::waits) noexcept;

} // namespace kxstr::platform
