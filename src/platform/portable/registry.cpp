#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "platform/ansi_text.h"
#include "platform/portable/registry_store.h"
#include "platform/system.h"

// The registry of a system that has none: the settings file behind the calls of one that has.
//
// Where it differs: the roots are separate (no root shows another's keys), rights are those of the file, and a key that
// exists opens also where nothing can be written. Names and strings are UTF-16 in the registry; ANSI text converts on
// the way in and out, and what the code page lacks comes out as question marks.
namespace kxstr::platform {
namespace {

constexpr std::uint32_t kQueryAccess = 1;
constexpr std::uint32_t kSetAccess = 2;
constexpr std::size_t kMaxValueName = 16383; // units

struct OpenKey {
    std::u16string path;
    std::uint32_t access;
};

// A handle is the address of what it stands for, and never taken for one before it is found here.
struct OpenKeys {
    std::mutex mutex;
    std::map<KeyHandle, std::unique_ptr<OpenKey>> keys;
};

OpenKeys &open_keys() {
    static OpenKeys all;
    return all;
}

bool is_root(KeyHandle handle) noexcept {
    const auto number = static_cast<std::uintptr_t>(handle) - static_cast<std::uintptr_t>(kClassesRoot);
    return number < kRootNames.size();
}

std::uint32_t find_open_key(KeyHandle handle, OpenKey &key) {
    if (is_root(handle)) {
        const auto number = static_cast<std::uintptr_t>(handle) - static_cast<std::uintptr_t>(kClassesRoot);
        key = {std::u16string(kRootNames[number]), kReadAndWrite};
        return kSuccess;
    }
    OpenKeys &all = open_keys();
    const std::lock_guard guard(all.mutex);
    const auto found = all.keys.find(handle);
    if (found == all.keys.end()) return kBadHandle;
    key = *found->second;
    return kSuccess;
}

// The full path of a key below an open one.
std::uint32_t full_path(KeyHandle parent, const char *path, std::u16string &full) {
    OpenKey key;
    if (const std::uint32_t status = find_open_key(parent, key); status != kSuccess) return status;
    full = std::move(key.path);
    std::u16string rest = ansi_to_wide(path != nullptr ? path : "");
    if (rest.starts_with(u'\\')) return kBadPath;
    for (std::size_t start = 0; start < rest.size();) {
        const std::size_t end = std::min(rest.find(u'\\', start), rest.size());
        if (end - start > kMaxKeyName) return kBadParameter;
        if (end != start) full.append(u"\\").append(rest, start, end - start);
        start = end + 1;
    }
    return kSuccess;
}

bool key_exists(const RegistryFile &registry, const std::u16string &path) {
    return path.find(u'\\') == std::u16string::npos || registry.find_key(path) != nullptr;
}

std::uint32_t add_open_key(std::u16string path, std::uint32_t access, KeyHandle &handle) {
    auto key = std::make_unique<OpenKey>(OpenKey{std::move(path), access});
    OpenKeys &all = open_keys();
    const std::lock_guard guard(all.mutex);
    const auto address = static_cast<KeyHandle>(reinterpret_cast<std::uintptr_t>(key.get()));
    all.keys.emplace(address, std::move(key));
    handle = address;
    return kSuccess;
}

std::uint32_t open_path(const std::u16string &path, std::uint32_t access, KeyHandle &handle) {
    std::shared_ptr<const RegistryFile> registry;
    if (const std::uint32_t status = read_registry(registry); status != kSuccess) return status;
    return key_exists(*registry, path) ? add_open_key(path, access, handle) : std::uint32_t{kNotFound};
}

// A value's place, checked against the handle's rights.
std::uint32_t find_value_place(KeyHandle handle, const char *name, std::uint32_t access, OpenKey &key,
                               std::u16string &value_name) {
    if (const std::uint32_t status = find_open_key(handle, key); status != kSuccess) return status;
    if ((key.access & access) == 0) return kAccessDenied;
    value_name = ansi_to_wide(name != nullptr ? name : "");
    return value_name.size() <= kMaxValueName ? kSuccess : kBadParameter;
}

bool is_string_type(std::uint32_t type) noexcept {
    return type == kTextType || type == kExpandableTextType || type == kTextListType;
}

// What a query hands out. A lone unit without a terminator is no text that anybody wrote through set_value, but a
// 16-bit number under the wrong type: its two bytes go out as they are.
std::vector<std::uint8_t> to_caller(const RegistryValue &value) {
    const auto &data = value.data;
    const bool lone_unit = data.size() == 2 && (data[0] | data[1]) != 0;
    if (!is_string_type(value.type) || lone_unit) return data;
    std::u16string units;
    for (std::size_t i = 0; i + 1 < data.size(); i += 2)
        units += static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    const std::string bytes = wide_to_ansi(units);
    return {bytes.begin(), bytes.end()};
}

// What a write stores. A lone unit gets its terminator, which keeps it apart from the case above.
std::vector<std::uint8_t> from_caller(std::uint32_t type, std::span<const std::uint8_t> bytes) {
    if (!is_string_type(type)) return {bytes.begin(), bytes.end()};
    std::u16string units = ansi_to_wide({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    if (units.size() == 1 && units[0] != 0) units += u'\0';
    std::vector<std::uint8_t> data;
    for (const char16_t unit : units) {
        data.push_back(static_cast<std::uint8_t>(unit));
        data.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return data;
}

} // namespace

std::uint32_t create_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key,
                         bool &created) noexcept try {
    key = KeyHandle::null;
    created = false;
    std::u16string full;
    if (const std::uint32_t status = full_path(parent, path, full); status != kSuccess) return status;
    std::uint32_t status = open_path(full, access, key);
    if (status != kNotFound) return status;
    status = change_registry([&](const RegistryFile &registry) -> RegistryChange {
        created = !key_exists(registry, full);
        if (!created) return {kSuccess, registry.text}; // another process was faster
        auto text = with_key(registry, full);
        return text ? RegistryChange{kSuccess, std::move(*text)} : RegistryChange{kBadParameter, {}};
    });
    if (status == kSuccess) return add_open_key(full, access, key);
    created = false;
    return status;
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t open_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key) noexcept try {
    key = KeyHandle::null;
    std::u16string full;
    if (const std::uint32_t status = full_path(parent, path, full); status != kSuccess) return status;
    return open_path(full, access, key);
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t close_key(KeyHandle key) noexcept {
    if (is_root(key)) return kSuccess;
    OpenKeys &all = open_keys();
    const std::lock_guard guard(all.mutex);
    return all.keys.erase(key) != 0 ? kSuccess : kBadHandle;
}

std::uint32_t query_value(KeyHandle handle, const char *name, std::uint32_t *type, void *data,
                          std::uint32_t &size) noexcept try {
    OpenKey key;
    std::u16string value_name;
    std::uint32_t status = find_value_place(handle, name, kQueryAccess, key, value_name);
    std::shared_ptr<const RegistryFile> registry;
    if (status == kSuccess) status = read_registry(registry);
    if (status != kSuccess) return status;
    if (!key_exists(*registry, key.path)) return kKeyDeleted;
    const RegistryValue *value = registry->find_value(key.path, value_name);
    if (value == nullptr) return kNotFound;
    const std::vector<std::uint8_t> bytes = to_caller(*value);
    const std::uint32_t room = size;
    size = static_cast<std::uint32_t>(bytes.size());
    if (type != nullptr) *type = value->type;
    if (data == nullptr) return kSuccess;
    if (room < bytes.size()) return kMoreData;
    std::ranges::copy(bytes, static_cast<std::uint8_t *>(data));
    return kSuccess;
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t set_value(KeyHandle handle, const char *name, std::uint32_t type, const void *data,
                        std::uint32_t size) noexcept try {
    if (data == nullptr && size != 0) return kBadParameter;
    OpenKey key;
    std::u16string value_name;
    const std::uint32_t status = find_value_place(handle, name, kSetAccess, key, value_name);
    if (status != kSuccess) return status;
    const auto stored = from_caller(type, {static_cast<const std::uint8_t *>(data), size});
    return change_registry([&](const RegistryFile &registry) -> RegistryChange {
        if (!key_exists(registry, key.path)) return {kKeyDeleted, {}};
        auto text = with_value(registry, key.path, value_name, type, stored);
        return text ? RegistryChange{kSuccess, std::move(*text)} : RegistryChange{kBadParameter, {}};
    });
} catch (const std::bad_alloc &) {
    return kNoResources;
}

} // namespace kxstr::platform
