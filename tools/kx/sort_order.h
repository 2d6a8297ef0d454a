// The order that a command line of `kx sort` asks for: parts of lines, each compared in its own way, one after another.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "collation.h"
#include "lines.h"
#include "sort_key.h"

namespace kx {

// Where a part of a line begins and ends, as sort(1) tells it with -k and -b. Fields and characters count from 0.
struct Field {
    static constexpr std::size_t kLineEnd = std::numeric_limits<std::size_t>::max();

    std::size_t first = 0;
    std::size_t first_character = 0; // in the field
    std::size_t last = kLineEnd;
    std::size_t end_character = 0; // behind the part; 0: it ends with the field
    bool skip_blanks = false;      // before characters are counted from the first field's start
    bool skip_blanks_to_end = false;
};

struct SortPart {
    Field field;
    bool whole = false; // the whole line, whatever the field
    bool numeric = false;
    bool reverse = false;
    Collation collation{};
};

struct SortOrder {
    std::vector<SortPart> parts;     // one at least
    std::optional<KxChar> separator; // of fields; without one they begin with blanks
    NumberMarks number_marks;
};

// Reads the argument of -k. Gives what is wrong with it, or an empty string. `has_flags`: it says itself how the part
// is compared.
std::string read_key(const std::string &argument, SortPart &part, bool &has_flags);

class LineOrder {
  public:
    explicit LineOrder(const SortOrder &order);

    // Keys are cut to less than this, where they are long.
    static constexpr std::size_t kLongestKey = 1032;
    // Makes the key of a line. False when none can stand for it. A key has as many zeros behind it as are needed, and
    // none at its end.
    bool make_key(const LineText &line, std::vector<std::uint8_t> &key);

    // Less than 0, 0 or more.
    int compare(const LineText &a, const LineText &b);

  private:
    int compare_part(std::size_t number, const LineText &a, const LineText &b);

    const SortOrder &order_;
    std::vector<SortKeys> makers_; // by part
    std::vector<std::uint8_t> key_a_;
    std::vector<std::uint8_t> key_b_;
};

} // namespace kx
