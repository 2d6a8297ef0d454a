// The system's own registry, call by call.
#include "platform/system.h"
#include "platform/windows/windows.h"

namespace kxstr::platform {
namespace {

HKEY to_system(KeyHandle key) noexcept {
    return reinterpret_cast<HKEY>(key);
}

std::uint32_t status_of(LSTATUS status) noexcept {
    return static_cast<std::uint32_t>(status);
}

} // namespace

std::uint32_t create_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key, bool &created,
                         WhenLocked) noexcept {
    HKEY opened = nullptr;
    DWORD disposition = 0;
    const LSTATUS status = RegCreateKeyExA(to_system(parent), path, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                           nullptr, &opened, &disposition);
    // Wine tells of an empty path, which is the parent itself, that it made it.
    const bool is_parent = path == nullptr || *path == '\0';
    created = status == ERROR_SUCCESS && disposition == REG_CREATED_NEW_KEY && !is_parent;
    key = status == ERROR_SUCCESS ? static_cast<KeyHandle>(reinterpret_cast<std::uintptr_t>(opened)) : KeyHandle::null;
    return status_of(status);
}

std::uint32_t open_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key) noexcept {
    HKEY opened = nullptr;
    const LSTATUS status = RegOpenKeyExA(to_system(parent), path, 0, access, &opened);
    key = status == ERROR_SUCCESS ? static_cast<KeyHandle>(reinterpret_cast<std::uintptr_t>(opened)) : KeyHandle::null;
    return status_of(status);
}

std::uint32_t close_key(KeyHandle key) noexcept {
    return status_of(RegCloseKey(to_system(key)));
}

std::uint32_t query_value(KeyHandle key, const char *name, std::uint32_t *type, void *data,
                          std::uint32_t &size) noexcept {
    DWORD found_type = 0;
    DWORD found_size = size;
    const LSTATUS status =
        RegQueryValueExA(to_system(key), name, nullptr, &found_type, static_cast<BYTE *>(data), &found_size);
    if (type != nullptr) *type = found_type;
    size = found_size;
    return status_of(status);
}

std::uint32_t query_value_at(KeyHandle parent, const char *path, const char *name, std::uint32_t *type, void *data,
                             std::uint32_t &size) noexcept {
    KeyHandle key = KeyHandle::null;
    bool created = false;
    std::uint32_t status = create_key(parent, path, kReadAndWrite, key, created, WhenLocked::gives_up);
    if (status != kSuccess) return status;
    status = query_value(key, name, type, data, size);
    close_key(key);
    return status;
}

std::uint32_t set_value(KeyHandle key, const char *name, std::uint32_t type, const void *data, std::uint32_t size,
                        WhenLocked) noexcept {
    if (data == nullptr && size != 0) return kBadParameter; // Wine reads it all the same
    return status_of(RegSetValueExA(to_system(key), name, 0, type, static_cast<const BYTE *>(data), size));
}

} // namespace kxstr::platform
