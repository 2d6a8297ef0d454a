// Case, width and kana by a plain walk over the rows of the data files: no index, no table of the library.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "reference/data_files.h"

namespace kxstr::reference {

class Forms {
  public:
    // Countries 1 to 4 have a table.
    explicit Forms(unsigned country) {
        unsigned group = 0;
        for (const auto &row : read_rows("eastasia/forms" + std::to_string(country) + ".txt")) {
            const auto &cells = rows_.emplace_back(std::array{cell(row.at(1)), cell(row.at(2))});
            // The first row that holds a character in the column of its width counts.
            for (const unsigned column : {0u, 1u})
                if ((cells[column] >= 0x2400) == (column == 1))
                    found_.emplace(cells[column], Found{rows_.size() - 1, group, column});
            if (cells[0] == 0xFFFF) ++group;
        }
    }

    std::uint16_t all(unsigned mode, unsigned ch) const {
        const auto found = found_.find(static_cast<std::uint16_t>(ch));
        if (found == found_.end()) return static_cast<std::uint16_t>(ch);
        auto [row, group, column] = found->second;
        if ((mode == 1 && group == 0) || (mode == 6 && group == 2)) row |= 1;
        if ((mode == 2 && group == 0) || (mode == 5 && group == 2)) row &= ~std::size_t{1};
        if (mode == 3) column = 1;
        if (mode == 4) column = 0;
        const std::uint16_t other = rows_[row][column];
        return other == 0 ? static_cast<std::uint16_t>(ch) : other;
    }

  private:
    static std::uint16_t cell(const std::string &field) {
        return static_cast<std::uint16_t>(std::stoul(field, nullptr, 16));
    }

    struct Found {
        std::size_t row;
        unsigned group;
        unsigned column;
    };

    std::vector<std::array<std::uint16_t, 2>> rows_;
    std::map<std::uint16_t, Found> found_;
};

} // namespace kxstr::reference
