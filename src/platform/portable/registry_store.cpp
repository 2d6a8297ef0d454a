#include "platform/portable/registry_store.h"

#include <atomic>
#include <mutex>
#include <new>

#include "platform/portable/mutex.h"
#include "platform/portable/settings.h"
#include "platform/portable/settings_file.h"

namespace kxstr::platform {
namespace {

// The file as it was read last.
struct Cache {
    Mutex mutex;
    std::string path;
    FileContent content;
    std::shared_ptr<const RegistryFile> registry; // null: damaged
};

Cache &cache() {
    static Cache all;
    return all;
}

std::atomic<std::size_t> parse_count = 0;

std::uint32_t read_at(const char *path, std::shared_ptr<const RegistryFile> &registry) {
    if (*path == '\0') return kNotFound;
    // Before the lock, which is then held for a moment only: a file that is replaced in between has another identity
    // than the one kept, or the one found here, and is read.
    FileIdentity identity;
    std::uint32_t status = identify_file(path, identity);
    Cache &last = cache();
    const std::lock_guard guard(last.mutex);
    // The identity of a file that changed in this very moment proves nothing: its bytes must tell.
    const bool same = path == last.path && identity == last.content.identity && !last.content.just_changed;
    if (status == kSuccess && !same) {
        FileContent content;
        status = read_file(path, content);
        if (status == kSuccess && (path != last.path || content.bytes != last.content.bytes)) {
            ++parse_count;
            auto parsed = parse_registry(content.bytes);
            std::string its_path(path);
            last.registry = parsed ? std::make_shared<const RegistryFile>(std::move(*parsed)) : nullptr;
            last.path = std::move(its_path);
        }
        if (status == kSuccess) last.content = std::move(content);
    }
    if (status == kNotFound) {
        registry = std::make_shared<const RegistryFile>(empty_registry());
        return kSuccess;
    }
    if (status != kSuccess) return status;
    registry = last.registry;
    return registry != nullptr ? kSuccess : kDamaged;
}

} // namespace

std::uint32_t read_registry(std::shared_ptr<const RegistryFile> &registry) try {
    return read_at(settings_file(), registry);
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::uint32_t change_registry(const std::function<RegistryChange(const RegistryFile &)> &change,
                              WhenLocked when_locked) try {
    const std::string path = settings_file();
    std::shared_ptr<const RegistryFile> registry;
    // Before the lock too: a damaged file is left alone, down to the folder it lies in.
    std::uint32_t status = read_at(path.c_str(), registry);
    if (status != kSuccess) return status;
    FileReplacer replacer;
    status = replacer.open(path, when_locked);
    if (status == kSuccess) status = read_at(path.c_str(), registry);
    if (status != kSuccess) return status;
    const RegistryChange changed = change(*registry);
    return changed.status == kSuccess ? replacer.replace(changed.text) : changed.status;
} catch (const std::bad_alloc &) {
    return kNoResources;
}

std::size_t registry_parse_count() noexcept {
    return parse_count;
}

} // namespace kxstr::platform
