// Text as a list of whole codes, and what is left of it in a destination of so many bytes. The tests build their texts
// from codes, so nothing here has to find where a code begins.
#pragma once

#include <cstdint>
#include <vector>

namespace kxstr::reference {

using Code = std::vector<std::uint8_t>;
using Codes = std::vector<Code>;

inline Code joined(const Codes &codes) {
    Code all;
    for (const Code &code : codes)
        all.insert(all.end(), code.begin(), code.end());
    return all;
}

// The codes that fit into `room` bytes, up to the first that does not.
inline Codes cut(const Codes &codes, std::size_t room) {
    Codes kept;
    for (const Code &code : codes) {
        if (code.size() > room) break;
        room -= code.size();
        kept.push_back(code);
    }
    return kept;
}

} // namespace kxstr::reference
