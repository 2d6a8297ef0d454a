// The names of the registry's roots.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/system.h"

namespace kxstr::registry {

struct Root {
    std::string_view name;
    platform::KeyHandle key;
};

// In the order in which the start of a path is matched against them.
inline constexpr std::array<Root, 7> kRoots{{
    {"HKEY_CURRENT_USER", platform::kCurrentUser},
    {"HKEY_LOCAL_MACHINE", platform::kLocalMachine},
    {"HKEY_CLASSES_ROOT", platform::kClassesRoot},
    {"HKEY_USERS", platform::kUsers},
    {"HKEY_PERFORMANCE_DATA", platform::kPerformanceData},
    {"HKEY_CURRENT_CONFIG", platform::kCurrentConfig},
    {"HKEY_DYN_DATA", platform::kDynData},
}};

// Whether `text`, of bytes or 16-bit units, starts with the name, whatever the case of its letters.
template <class Unit> constexpr bool starts_with_root(std::basic_string_view<Unit> text, const Root &root) noexcept {
    if (text.size() < root.name.size()) return false;
    for (std::size_t i = 0; i < root.name.size(); ++i) {
        const Unit unit = text[i];
        const Unit upper = 'a' <= unit && unit <= 'z' ? static_cast<Unit>(unit - 'a' + 'A') : unit;
        if (upper != static_cast<Unit>(root.name[i])) return false;
    }
    return true;
}

} // namespace kxstr::registry
