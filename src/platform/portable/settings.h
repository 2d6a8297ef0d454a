// The settings in force.
#pragma once

#include <cstdint>
#include <kxstr/platform.h>

namespace kxstr::platform {

// The live store. Hidden, and asked in place where a call for one character asks.
#pragma GCC visibility push(hidden)
extern constinit KxPlatformSettings live_settings;
#pragma GCC visibility pop

inline std::uint32_t ansi_code_page() noexcept {
    return live_settings.ansi_code_page;
}
inline bool is_double_byte_system() noexcept {
    return live_settings.double_byte != 0;
}

// The path of the settings file, empty for none: part of the store, which the next KxPlatformSet changes.
const char *settings_file() noexcept;

} // namespace kxstr::platform
