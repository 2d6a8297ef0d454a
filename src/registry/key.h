// The registry key through which the library reaches its settings.
#pragma once

#include <cstdint>

#include "platform/system.h"

namespace kxstr::registry {

struct LinkEngine;

// One open key. Used by one thread at a time.
class CYWKey {
  public:
    // Opens a key by its full path, such as "HKEY_CURRENT_USER\Software\...", and creates it when it is missing, so
    // that reading a setting leaves its key behind (a reader should not wait for that: see WhenLocked). A path without
    // a known root (null too) gives status kBadKey.
    CYWKey(const char *path, std::uint32_t unused,
           platform::WhenLocked when_locked = platform::WhenLocked::waits) noexcept;
    // Opens or creates a key below the current user; null or an empty path is HKEY_CURRENT_USER itself.
    CYWKey(std::uint32_t unused, const char *subkey) noexcept;
    CYWKey(const CYWKey &) = delete;
    CYWKey &operator=(const CYWKey &) = delete;
    virtual ~CYWKey();

    bool is_open() const noexcept { return key != platform::KeyHandle::null; }

    // Readies the link engine at the first call. 1 when it is ready, 0 when it is not; a failure stays.
    std::uint32_t GetLinkEngine() noexcept;

    // Writes a value; returns a Windows status. A write-protected value is left alone, with kAccessDenied. With
    // `follow`, a link is not replaced: the value at its target (see target_of) is written, and the status is that of
    // this write. A link that cannot be evaluated writes nothing, and gives the error of the link engine.
    std::uint32_t SetValue(const char *name, std::uint32_t type, const void *data, std::uint32_t size,
                           std::uint32_t follow, std::uint32_t unused) noexcept;

    platform::KeyHandle key = platform::KeyHandle::null;
    std::uint32_t created_new = 0; // 1: the key was not there before
    std::uint32_t access = 0;      // kReadAndWrite once constructed
    std::uint32_t status = 0;      // of opening the key
    LinkEngine *link_engine = nullptr;
    std::uint32_t link_engine_ready = 0;

  private:
    void open(platform::KeyHandle root, const char *path, platform::WhenLocked when_locked) noexcept;
    std::uint32_t set_at_target(const char *name, std::uint32_t type, const void *data, std::uint32_t size) noexcept;
};

} // namespace kxstr::registry
