#include "registry/key.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "platform/ansi_text.h"
#include "platform/roots.h"
#include "registry/link_engine.h"
#include "registry/values.h"

namespace kxstr::registry {
namespace {

// The full path of the key to which a write through a link goes.
std::string key_path_of(const ValuePath &place) {
    std::string path(place.root->name);
    if (!place.key_path.empty()) path.append("\\").append(platform::wide_to_ansi(place.key_path));
    return path;
}

} // namespace

CYWKey::CYWKey(const char *path, std::uint32_t, platform::WhenLocked when_locked) noexcept
    : access(platform::kReadAndWrite) {
    const std::string_view text(path != nullptr ? path : "");
    const auto root = std::ranges::find_if(
        platform::kRoots, [&](const platform::Root &one) { return platform::starts_with_root(text, one); });
    if (root == platform::kRoots.end()) {
        status = platform::kBadKey;
        return;
    }
    // One character behind the root's name is skipped without a look: it is the backslash.
    open(root->key, path + std::min(root->name.size() + 1, text.size()), when_locked);
}

CYWKey::CYWKey(std::uint32_t, const char *subkey) noexcept : access(platform::kReadAndWrite) {
    open(platform::kCurrentUser, subkey != nullptr ? subkey : "", platform::WhenLocked::waits);
}

void CYWKey::open(platform::KeyHandle root, const char *path, platform::WhenLocked when_locked) noexcept {
    bool created = false;
    status = platform::create_key(root, path, platform::kReadAndWrite, key, created, when_locked);
    created_new = created ? 1 : 0;
}

CYWKey::~CYWKey() {
    if (is_open()) platform::close_key(key);
    if (link_engine != nullptr) release(*link_engine);
    delete link_engine;
}

std::uint32_t CYWKey::GetLinkEngine() noexcept {
    if (link_engine == nullptr) {
        link_engine = new (std::nothrow) LinkEngine;
        if (link_engine != nullptr) link_engine_ready = set_up(*link_engine) ? 1 : 0;
    }
    return link_engine_ready;
}

std::uint32_t CYWKey::SetValue(const char *name, std::uint32_t type, const void *data, std::uint32_t size,
                               std::uint32_t follow, std::uint32_t) noexcept {
    std::uint32_t old_type = 0;
    std::uint32_t old_size = 0;
    const std::uint32_t found = platform::query_value(key, name, &old_type, nullptr, old_size);
    if (found == platform::kSuccess) {
        if ((old_type & kWriteProtected) != 0) return platform::kAccessDenied;
        if (is_link(old_type) && follow != 0) return set_at_target(name, type, data, size);
    } else if (found != platform::kNotFound) {
        return found; // it may be a link, or protected
    }
    return platform::set_value(key, name, type, data, size);
}

std::uint32_t CYWKey::set_at_target(const char *name, std::uint32_t type, const void *data, std::uint32_t size) noexcept
    try {
    if (GetLinkEngine() == 0) return link_engine != nullptr ? link_engine->last_error : platform::kOutOfMemory;
    std::uint32_t link_type = 0;
    std::vector<std::uint8_t> link;
    const std::uint32_t read = read_value(key, name, link_type, link);
    if (read != platform::kSuccess) return read;
    const std::optional<std::u16string> target = target_text(*link_engine, link);
    if (!target) return link_engine->last_error;
    const ValuePath place = target_of(*target);
    CYWKey target_key(key_path_of(place).c_str(), 0);
    if (!target_key.is_open()) return target_key.status;
    return target_key.SetValue(platform::wide_to_ansi(place.value_name).c_str(), type, data, size, 0, 0);
} catch (const std::bad_alloc &) {
    return platform::kOutOfMemory;
}

} // namespace kxstr::registry
