// The order of a language, for lines: the comparison, and keys that an external sorter can compare as bytes.
#pragma once

#include <cstdint>
#include <kxstr/types.h>
#include <optional>
#include <string>
#include <vector>

#include "text.h"

namespace kx {

struct Collation {
    std::uint32_t language = 0; // its number
    bool case_counts = true;
    bool kana_counts = false;

    // By its two-letter code, in either case; nothing for an unknown one. "EN" is a name for the plain order.
    static std::optional<std::uint32_t> find_language(std::string code);
    static std::string list_of_languages();

    // The code page of the East Asian languages; nothing for others.
    std::optional<Page> page() const;
    // Makes the library take the country of an East Asian language for that of the system. Before anything else asks.
    void become_country() const;

    // Texts are zero-terminated. Less than 0, 0 or more.
    int compare(const std::vector<KxChar> &a, const std::vector<KxChar> &b) const;

    // The values in hexadecimal, level by level: all first-level values, a full stop, all second-level values, a full
    // stop, all third-level values.
    std::string key_of(const std::vector<KxChar> &text) const;
};

} // namespace kx
