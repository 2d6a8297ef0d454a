// Texts as messages show them.
#pragma once

#include <cstdio>
#include <string>
#include <type_traits>

namespace kxstr::test {

// The units of a text in hexadecimal.
std::string hex(const auto &text) {
    std::string all;
    for (const auto unit : text) {
        using Unit = std::make_unsigned_t<std::remove_const_t<decltype(unit)>>;
        char shown[16];
        std::snprintf(shown, sizeof shown, "%02X ", static_cast<unsigned>(static_cast<Unit>(unit)));
        all += shown;
    }
    return all;
}

} // namespace kxstr::test
