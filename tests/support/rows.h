// What the rows of a data file hold.
#pragma once

#include <string>
#include <vector>

namespace kxstr::test {

// The units of a text, joined by dots: each a character, or a number in hexadecimal; "-" is an empty text.
template <class Unit> std::vector<Unit> units_of(const std::string &field) {
    std::vector<Unit> units;
    for (std::size_t at = 0; field != "-" && at <= field.size();) {
        const std::size_t end = std::min(field.find('.', at), field.size());
        const std::string one = field.substr(at, end - at);
        units.push_back(
            static_cast<Unit>(one.size() == 1 ? static_cast<unsigned char>(one[0]) : std::stoul(one, nullptr, 16)));
        at = end + 1;
    }
    return units;
}

} // namespace kxstr::test
