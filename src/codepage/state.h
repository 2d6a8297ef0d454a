// What this subsystem works out once and keeps for the process.
#pragma once

#include <array>
#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::codepage {

struct ProcessState {
    std::uint16_t windows_code_page; // 0: not decided yet
    KxCodePage ansi;
    KxCodePage oem;
    bool descriptors_ready;
    std::uint8_t country;
    bool country_decided;
    std::array<char, 100> registry_path; // the last path built; callers hold its address
};

// Plain data without a lock: whoever changes the code pages serialises that with everything else.
ProcessState &process_state() noexcept;

} // namespace kxstr::codepage
