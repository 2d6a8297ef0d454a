#include <cstdlib>
#include <cstring>
#include <kxstr/platform.h>
#include <new>
#include <unistd.h>

#include "platform/portable/environment.h"
#include "platform/portable/settings.h"
#include "platform/system.h"

namespace kxstr::platform {

constinit KxPlatformSettings live_settings{1252, 437, 0, 0x0409, 0x0409, {}};
constinit Origins settings_origins{};

namespace {

// Null, too, in a process with more rights than the user who started it: that user chooses the environment.
[[gnu::cold]] const char *read_variable(const char *name) noexcept {
#if defined(__linux__) && !defined(__ANDROID__)
    return ::secure_getenv(name);
#else
    return ::getuid() == ::geteuid() && ::getgid() == ::getegid() ? std::getenv(name) : nullptr;
#endif
}

// Before the initialisers of a host that has the library linked in statically, which may call it already.
[[gnu::constructor(101)]] void load_settings() noexcept {
    new (&live_settings) KxPlatformSettings(settings_from(read_variable, &settings_origins)); // in place: no copy
}

} // namespace

std::uint32_t oem_code_page() noexcept {
    return live_settings.oem_code_page;
}
std::uint16_t system_language() noexcept {
    return live_settings.system_language;
}
std::uint16_t keyboard_language() noexcept {
    return live_settings.keyboard_language;
}
const char *settings_file() noexcept {
    return live_settings.registry_path;
}
Origins origins() noexcept {
    Origins from = settings_origins;
    from.store_path = live_settings.registry_path;
    return from;
}

} // namespace kxstr::platform

extern "C" {

void KxPlatformGet(KxPlatformSettings *out) {
    if (out != nullptr) *out = kxstr::platform::live_settings;
}

void KxPlatformSet(const KxPlatformSettings *in) {
    if (in == nullptr) return;
    namespace platform = kxstr::platform;
    const KxPlatformSettings before = platform::live_settings;
    KxPlatformSettings &now = platform::live_settings;
    now = *in;
    now.registry_path[KX_REGISTRY_PATH_SIZE - 1] = 0;
    // What the host left as it read it keeps its origin.
    const auto note = [](const char *&origin, bool changed) {
        if (changed) origin = "KxPlatformSet";
    };
    platform::Origins &from = platform::settings_origins;
    note(from.ansi_code_page, now.ansi_code_page != before.ansi_code_page);
    note(from.oem_code_page, now.oem_code_page != before.oem_code_page);
    note(from.double_byte, now.double_byte != before.double_byte);
    note(from.system_language, now.system_language != before.system_language);
    note(from.keyboard_language, now.keyboard_language != before.keyboard_language);
    note(from.store, std::strcmp(now.registry_path, before.registry_path) != 0);
}
}
