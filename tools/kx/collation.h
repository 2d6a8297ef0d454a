// The order of a language, for lines: the comparison, and keys that an external sorter can compare as bytes.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <kxstr/types.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "lines.h"
#include "text.h"

namespace kx {

// Letters that KxWS6Cmpcoll takes for variants of another letter, while coltbl has them behind it.
struct Refinement {
    static constexpr KxChar kEnd = 0x200;
    std::array<std::uint8_t, kEnd> places{}; // by character: 0, or its place behind the letter
    std::array<bool, 0x100> is_divided{};    // by value of the first level: whether it has such letters

    std::uint8_t place_of(KxChar ch) const { return ch < kEnd ? places[ch] : std::uint8_t{0}; }
};

struct Collation {
    bool case_counts = true;
    bool kana_counts = false;

    // Makes the library take the language, and the country of an East Asian one, for its own. Before anything else
    // asks. `code`: the library's.
    void begin(const std::string &code);

    std::uint32_t language() const { return language_; } // its number
    // The code page of the East Asian languages; nothing for others.
    std::optional<CodePage> page() const;
    bool is_turkish() const;
    bool is_east_asian() const;

    // What coltbl adds to the first level. Where the comparison knows no letter of the language coltbl comes first;
    // elsewhere there may be a refinement, or null.
    bool by_coltbl() const { return by_coltbl_; }
    const Refinement *refinement() const { return refinement_.get(); }

    // Whether the library can compare such texts. It knows neither refinements nor what KX lacks.
    bool can_compare(const LineText &text) const;
    // Less than 0, 0 or more. Where only coltbl knows the letters of the language, it comes first.
    int compare(const LineText &a, const LineText &b) const;

    // The values in hexadecimal, level by level, with full stops between: from coltbl where that comes first, then the
    // first, second and third level. In pieces, since a key is much longer than its text.
    using Sink = std::function<void(std::string_view piece)>;
    void write_key(const LineText &text, const Sink &sink) const;

  private:
    std::uint32_t language_ = 0;
    bool by_coltbl_ = false;
    std::shared_ptr<const Refinement> refinement_;
};

} // namespace kx
