// The current language, a process-wide byte string.
#pragma once

#include <array>

namespace kxstr::core {

// 8 bytes, always zero-terminated.
extern constinit std::array<char, 8> language_store;

// The live store.
inline const char *language() noexcept {
    return language_store.data();
}

} // namespace kxstr::core
