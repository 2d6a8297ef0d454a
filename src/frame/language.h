// The current language, a process-wide byte string.
#pragma once

namespace kxstr::frame {

// The live store: 8 bytes, always zero-terminated.
const char *language() noexcept;

} // namespace kxstr::frame
