// Binary sort keys: texts whose keys differ compare as their keys do, byte by byte. Keys of one Collation only.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "collation.h"
#include "lines.h"

namespace kx {

class SortKeys {
  public:
    explicit SortKeys(const Collation &collation) : collation_(collation) {}

    enum class Made {
        whole,
        cut, // it began to differ from no other text within the limit
        none // no key can stand for the text, because what the comparison makes of it depends on the other side
    };
    static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

    // Appends the key of a text. Whole keys that are not the same differ before one of them ends. From `limit`
    // characters on a key is cut; there are at least as many bytes of it then, or none.
    Made add(const LineText &text, std::size_t limit, std::vector<std::uint8_t> &key);
    // The same for a text that has none: a key that stands for it against texts that the library cannot compare.
    void add_always(const LineText &text, std::vector<std::uint8_t> &key);

  private:
    std::uint8_t *add_coltbl(const LineText &text, std::uint8_t *out) const;
    template <bool contractions, bool refined>
    std::uint8_t *add_letters(const LineText &text, bool always, std::uint8_t *out);
    std::uint8_t *add_east_asian(const LineText &text, std::uint8_t *out);
    std::uint8_t *add_first_level(const LineText &text, bool always, std::uint8_t *out);
    std::uint8_t *add_lower_levels(std::uint8_t *out) const;
    Made add(const LineText &text, bool always, std::size_t limit, std::vector<std::uint8_t> &key);

    const Collation &collation_;
    // The values of the lower levels of the text at hand.
    std::vector<std::uint16_t> second_;
    std::vector<std::uint8_t> third_; // 0 where the third level does not count
    std::size_t count_ = 0;
};

// Appends the key of the number that a text begins with: blanks, a minus sign, digits with the decimal point; zero
// where there is none.
struct NumberMarks {
    KxChar point = '.';
    KxChar thousands = kLacking; // between digits; kLacking: none
};
void add_number(const LineText &text, const NumberMarks &marks, std::vector<std::uint8_t> &key);

bool is_blank(KxChar ch);

} // namespace kx
