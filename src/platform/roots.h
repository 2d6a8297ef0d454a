// The registry's roots by name.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/system.h"

namespace kxstr::platform {

struct Root {
    std::string_view name;
    KeyHandle key;
};

// In the order of their numbers. No name begins another, so that a path starts with one at most.
inline constexpr std::array<Root, 7> kRoots{{
    {"HKEY_CLASSES_ROOT", kClassesRoot},
    {"HKEY_CURRENT_USER", kCurrentUser},
    {"HKEY_LOCAL_MACHINE", kLocalMachine},
    {"HKEY_USERS", kUsers},
    {"HKEY_PERFORMANCE_DATA", kPerformanceData},
    {"HKEY_CURRENT_CONFIG", kCurrentConfig},
    {"HKEY_DYN_DATA", kDynData},
}};
inline constexpr const Root &kCurrentUserRoot = kRoots[1];

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

} // namespace kxstr::platform
