#include <cstdlib>
#include <kxstr/platform.h>
#include <unistd.h>

#include "platform/portable/environment.h"
#include "platform/portable/settings.h"
#include "platform/system.h"

namespace kxstr::platform {

constinit KxPlatformSettings settings{1252, 437, 0, 0x0409, 0x0409, {}};

namespace {

// Null, too, in a process with more rights than the user who started it: that user chooses the environment.
const char *read_variable(const char *name) noexcept {
#if defined(__linux__) && !defined(__ANDROID__)
    return ::secure_getenv(name);
#else
    return ::getuid() == ::geteuid() && ::getgid() == ::getegid() ? std::getenv(name) : nullptr;
#endif
}

// Before the initialisers of a host that has the library linked in statically, which may call it already.
[[gnu::constructor(101)]] void load_settings() noexcept {
    settings = settings_from(read_variable);
}

} // namespace

std::uint32_t oem_code_page() noexcept {
    return settings.oem_code_page;
}
std::uint16_t system_language() noexcept {
    return settings.system_language;
}
std::uint16_t keyboard_language() noexcept {
    return settings.keyboard_language;
}
const char *settings_file() noexcept {
    return settings.registry_path;
}

} // namespace kxstr::platform

extern "C" {

void KxPlatformGet(KxPlatformSettings *out) {
    if (out != nullptr) *out = kxstr::platform::settings;
}

void KxPlatformSet(const KxPlatformSettings *in) {
    if (in == nullptr) return;
    kxstr::platform::settings = *in;
    kxstr::platform::settings.registry_path[KX_REGISTRY_PATH_SIZE - 1] = 0;
}
}
