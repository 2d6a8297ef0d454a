// What the environment and the locale ask the settings to be.
#pragma once

#include <kxstr/platform.h>

#include "platform/system.h"

namespace kxstr::platform {

using ReadVariable = const char *(*)(const char *name); // as getenv: null when the variable is unset

// The settings as include/kxstr/platform.h tells them. Variables that do not parse count as unset.
// `origins`, where it is wanted, gets where each came from.
KxPlatformSettings settings_from(ReadVariable read, Origins *origins = nullptr) noexcept;

} // namespace kxstr::platform
