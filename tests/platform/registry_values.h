// Values of a registry in short, for the tests of its calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/system.h"

namespace kxstr::platform {

inline std::uint32_t set_text(const char *name, std::string_view text, KeyHandle key = kCurrentUser) {
    return set_value(key, name, kTextType, text.data(), static_cast<std::uint32_t>(text.size()));
}

inline std::uint32_t set_bytes(const char *name, std::string_view bytes, KeyHandle key = kCurrentUser) {
    return set_value(key, name, 3, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

// The data of a value, or the status of asking for it.
inline std::string get(const char *name, KeyHandle key = kCurrentUser) {
    std::string data(70000, '?');
    auto size = static_cast<std::uint32_t>(data.size());
    const std::uint32_t status = query_value(key, name, nullptr, data.data(), size);
    if (status != kSuccess) return "status " + std::to_string(status);
    data.resize(size);
    return data;
}

} // namespace kxstr::platform
