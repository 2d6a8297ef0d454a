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
    std::optional<CodePage> page() const;
    // Makes the library take the language, and the country of an East Asian one, for its own. Before anything else
    // asks.
    void begin() const;

    // Texts are zero-terminated. Less than 0, 0 or more. Where only coltbl knows the letters of the language, it comes
    // first.
    int compare(const std::vector<KxChar> &a, const std::vector<KxChar> &b) const;

    // The values in hexadecimal, level by level, with full stops between: from coltbl where that comes first, then the
    // first, second and third level.
    std::string key_of(const std::vector<KxChar> &text) const;

    // Whether coltbl comes first.
    bool by_coltbl() const;
    bool is_east_asian() const;
};

} // namespace kx
