// The settings in force.
#pragma once

namespace kxstr::platform {

// The path of the settings file, empty for none: the live store, which the next KxPlatformSet changes.
const char *settings_file() noexcept;

} // namespace kxstr::platform
