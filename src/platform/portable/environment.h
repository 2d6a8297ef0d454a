// What the environment and the locale ask the settings to be.
#pragma once

#include <kxstr/platform.h>

namespace kxstr::platform {

using ReadVariable = const char *(*)(const char *name); // as getenv: null when the variable is unset

// The settings as include/kxstr/platform.h tells them. Variables that do not parse count as unset.
KxPlatformSettings settings_from(ReadVariable read) noexcept;

} // namespace kxstr::platform
