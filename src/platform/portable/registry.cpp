#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>

#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/portable/mutex.h"
#include "platform/portable/registry_store.h"
#include "platform/roots.h"
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

// The full path of a key as it was given, and in upper case, by which keys are found.
struct KeyPath {
    std::u16string spelled;
    std::u16string upper;
};

struct OpenKey {
    KeyPath path;
    std::uint32_t access;
};
using SharedKey = std::shared_ptr<const OpenKey>; // another thread may close the handle of a key in use

// A handle is the address of what it stands for, and never taken for one before it is found here.
struct OpenKeys {
    Mutex mutex;
    std::map<KeyHandle, SharedKey> keys;
};

OpenKeys &open_keys() {
    static OpenKeys all;
    return all;
}

bool is_root(KeyHandle handle) noexcept {
    const auto number = static_cast<std::uintptr_t>(handle) - static_cast<std::uintptr_t>(kClassesRoot);
    return number < kRoots.size();
}

std::u16string root_name(KeyHandle root) {
    const auto number = static_cast<std::uintptr_t>(root) - static_cast<std::uintptr_t>(kClassesRoot);
    return {kRoots[number].name.begin(), kRoots[number].name.end()};
}

// Null for no handle of an open key.
SharedKey find_open_key(KeyHandle handle) {
    if (is_root(handle)) {
        const std::u16string name = root_name(handle);
        return std::make_shared<const OpenKey>(OpenKey{{name, name}, kReadAndWrite});
    }
    OpenKeys &all = open_keys();
    const std::lock_guard guard(all.mutex);
    const auto found = all.keys.find(handle);
    return found != all.keys.end() ? found->second : nullptr;
}

// The path of a key below an open one.
std::uint32_t full_path(KeyHandle parent, const char *path, KeyPath &key_path) {
    std::u16string &full = key_path.spelled;
    if (is_root(parent)) {
        full = root_name(parent);
    } else {
        const SharedKey key = find_open_key(parent);
        if (key == nullptr) return kBadHandle;
        full = key->path.spelled;
    }
    const std::u16string rest = ansi_to_wide(path != nullptr ? path : "");
    if (rest.starts_with(u'\\')) return kBadPath;
    full.reserve(full.size() + 1 + rest.size());
    for (std::size_t start = 0; start < rest.size();) {
        const std::size_t end = std::min(rest.find(u'\\', start), rest.size());
        if (end - start > kMaxKeyName) return kBadParameter;
        if (end != start) full.append(u"\\").append(rest, start, end - start);
        start = end + 1;
    }
    key_path.upper = upper_case(full);
    return kSuccess;
}

// Null when the key is not there.
const RegistryKey *find_key(const RegistryFile &registry, const KeyPath &path) {
    if (const RegistryKey *found = registry.find_upper_case_key(path.upper)) return found;
    static const RegistryKey empty_root{}; // there without a line in the file
    return path.upper.find(u'\\') == std::u16string::npos ? &empty_root : nullptr;
}

std::uint32_t add_open_key(KeyPath path, std::uint32_t access, KeyHandle &handle) {
    auto key = std::make_shared<const OpenKey>(OpenKey{std::move(path), access});
    OpenKeys &all = open_keys();
    const std::lock_guard guard(all.mutex);
    const auto address = static_cast<KeyHandle>(reinterpret_cast<std::uintptr_t>(key.get()));
    all.keys.emplace(address, std::move(key));
    handle = address;
    return kSuccess;
}

std::uint32_t open_path(KeyPath path, std::uint32_t access, KeyHandle &handle) {
    std::shared_ptr<const RegistryFile> registry;
    if (const std::uint32_t status = read_registry(registry); status != kSuccess) return status;
    if (find_key(*registry, path) == nullptr) return kNotFound;
    return add_open_key(std::move(path), access, handle);
}

// Adds a key that was missing a moment ago to the file.
std::uint32_t add_key(const KeyPath &path, bool &created, WhenLocked when_locked) {
    const auto add = [&](const RegistryFile &registry) -> RegistryChange {
        created = find_key(registry, path) == nullptr;
        if (!created) return {kSuccess, registry.text}; // another process was faster
        auto text = with_key(registry, path.spelled);
        return text ? RegistryChange{kSuccess, std::move(*text)} : RegistryChange{kBadParameter, {}};
    };
    const std::uint32_t status = change_registry(add, when_locked);
    if (status != kSuccess) created = false;
    return status;
}

// False for a name that is too long.
bool value_name_of(const char *name, std::u16string &value_name) {
    value_name = ansi_to_wide(name != nullptr ? name : "");
    return value_name.size() <= kMaxValueName;
}

// A value's place, checked against the handle's rights.
std::uint32_t find_value_place(KeyHandle handle, const char *name, std::uint32_t access, SharedKey &key,
                               std::u16string &value_name) {
    key = find_open_key(handle);
    if (key == nullptr) return kBadHandle;
    if ((key->access & access) == 0) return kAccessDenied;
    return value_name_of(name, value_name) ? kSuccess : kBadParameter;
}

bool is_string_type(std::uint32_t type) noexcept {
    return type == kTextType || type == kExpandableTextType || type == kTextListType;
}

// The data of a string type as a query hands it out. A lone unit without a terminator is no text that anybody wrote
// through set_value, but a 16-bit number under the wrong type: its two bytes go out as they are.
std::vector<std::uint8_t> to_caller(const std::vector<std::uint8_t> &data) {
    const bool lone_unit = data.size() == 2 && (data[0] | data[1]) != 0;
    if (lone_unit) return data;
    const std::string bytes = wide_to_ansi(units_of(data));
    return {bytes.begin(), bytes.end()};
}

std::uint32_t hand_out(std::span<const std::uint8_t> bytes, void *data, std::uint32_t &size) {
    const std::uint32_t room = size;
    size = static_cast<std::uint32_t>(bytes.size());
    if (data == nullptr) return kSuccess;
    if (room < bytes.size()) return kMoreData;
    std::ranges::copy(bytes, static_cast<std::uint8_t *>(data));
    return kSuccess;
}

// What a query answers; null: the key has no such value.
std::uint32_t answer(const RegistryValue *value, std::uint32_t *type, void *data, std::uint32_t &size) {
    if (value == nullptr) return kNotFound;
    if (type != nullptr) *type = value->type;
    return is_string_type(value->type) ? hand_out(to_caller(value->data), data, size)
                                       : hand_out(value->data, data, size);
}

// The value that was asked for last by a root and a path. Most programs ask for one again and again.
struct Question {
    KeyHandle root;
    std::string_view path;
    std::string_view name;
    std::uint32_t code_page; // of path and name
};
struct LastFound {
    Mutex mutex;
    KeyHandle root{};
    std::string path;
    std::string name;
    std::uint32_t code_page = 0;
    std::shared_ptr<const RegistryFile> registry; // the state of the file that holds the value; null: nothing is kept
    const RegistryValue *value = nullptr;         // null: it has no such value
};

LastFound &last_found() {
    static LastFound last;
    return last;
}

// Nothing when something else was asked last, or another state of the file.
std::optional<const RegistryValue *> value_found_last(const Question &question,
                                                      const std::shared_ptr<const RegistryFile> &registry) {
    LastFound &last = last_found();
    const std::lock_guard guard(last.mutex);
    if (last.registry != registry || last.root != question.root || last.code_page != question.code_page ||
        last.path != question.path || last.name != question.name) {
        return std::nullopt;
    }
    return last.value;
}

void keep_value_found(const Question &question, const std::shared_ptr<const RegistryFile> &registry,
                      const RegistryValue *value) {
    if (!is_root(question.root)) return; // the number of a closed handle may come back for another key
    LastFound &last = last_found();
    const std::lock_guard guard(last.mutex);
    last.registry = nullptr; // until all is in place: memory may run out
    last.path = question.path;
    last.name = question.name;
    last.root = question.root;
    last.code_page = question.code_page;
    last.value = value;
    last.registry = registry;
}

// What a write stores. A lone unit gets its terminator, which keeps it apart from the case above.
std::vector<std::uint8_t> from_caller(std::uint32_t type, std::span<const std::uint8_t> bytes) {
    if (!is_string_type(type)) return {bytes.begin(), bytes.end()};
    std::u16string units = ansi_to_wide({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    if (units.size() == 1 && units[0] != 0) units += u'\0';
    std::vector<std::uint8_t> data;
    append_u16le(data, units);
    return data;
}

} // namespace

std::uint32_t create_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key, bool &created,
                         WhenLocked when_locked) noexcept try {
    key = KeyHandle::null;
    created = false;
    KeyPath full;
    if (const std::uint32_t status = full_path(parent, path, full); status != kSuccess) return status;
    std::uint32_t status = open_path(full, access, key);
    if (status != kNotFound) return status;
    status = add_key(full, created, when_locked);
    return status == kSuccess ? add_open_key(std::move(full), access, key) : status;
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t open_key(KeyHandle parent, const char *path, std::uint32_t access, KeyHandle &key) noexcept try {
    key = KeyHandle::null;
    KeyPath full;
    if (const std::uint32_t status = full_path(parent, path, full); status != kSuccess) return status;
    return open_path(std::move(full), access, key);
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
    SharedKey key;
    std::u16string value_name;
    std::uint32_t status = find_value_place(handle, name, kQueryAccess, key, value_name);
    std::shared_ptr<const RegistryFile> registry;
    if (status == kSuccess) status = read_registry(registry);
    if (status != kSuccess) return status;
    const RegistryKey *found = find_key(*registry, key->path);
    if (found == nullptr) return kKeyDeleted;
    return answer(found->find_value(value_name), type, data, size);
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t query_value_at(KeyHandle parent, const char *path, const char *name, std::uint32_t *type, void *data,
                             std::uint32_t &size) noexcept try {
    const Question question{parent, path != nullptr ? path : "", name != nullptr ? name : "", ansi_code_page()};
    std::shared_ptr<const RegistryFile> registry;
    std::uint32_t status = read_registry(registry);
    if (status == kSuccess) {
        if (const auto value = value_found_last(question, registry)) return answer(*value, type, data, size);
    }
    KeyPath full;
    if (const std::uint32_t bad = full_path(parent, path, full); bad != kSuccess) return bad;
    if (status != kSuccess) return status;
    const RegistryKey *key = find_key(*registry, full);
    if (key == nullptr) {
        bool created = false;
        status = add_key(full, created, WhenLocked::gives_up);
        if (status == kBusy) return kNotFound;
        if (status == kSuccess) status = read_registry(registry);
        if (status != kSuccess) return status;
        key = find_key(*registry, full);
        if (key == nullptr) return kKeyDeleted;
    }
    std::u16string value_name;
    if (!value_name_of(name, value_name)) return kBadParameter;
    const RegistryValue *const value = key->find_value(value_name);
    keep_value_found(question, registry, value);
    return answer(value, type, data, size);
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t set_value(KeyHandle handle, const char *name, std::uint32_t type, const void *data, std::uint32_t size,
                        WhenLocked when_locked) noexcept try {
    if (data == nullptr && size != 0) return kBadParameter;
    SharedKey key;
    std::u16string value_name;
    const std::uint32_t status = find_value_place(handle, name, kSetAccess, key, value_name);
    if (status != kSuccess) return status;
    const auto stored = from_caller(type, {static_cast<const std::uint8_t *>(data), size});
    const auto store = [&](const RegistryFile &registry) -> RegistryChange {
        if (find_key(registry, key->path) == nullptr) return {kKeyDeleted, {}};
        auto text = with_value(registry, key->path.spelled, value_name, type, stored);
        return text ? RegistryChange{kSuccess, std::move(*text)} : RegistryChange{kBadParameter, {}};
    };
    return change_registry(store, when_locked);
} catch (const std::bad_alloc &) {
    return kNoResources;
}

} // namespace kxstr::platform
