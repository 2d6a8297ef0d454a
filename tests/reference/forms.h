// Case, width and kana by a plain walk over the rows of the data files: no index, no table of the library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "reference/data_files.h"

namespace kxstr::reference {

class Forms {
  public:
    struct Found {
        std::size_t row;
        unsigned group;
        unsigned column;
    };

    // Countries 1 to 4 have a table.
    explicit Forms(int country) {
        if (country >= 1 && country <= 4) read(std::to_string(country));
        for (std::uint32_t ch = 0; ch <= 0xFFFF; ++ch)
            found_.push_back(walk(static_cast<std::uint16_t>(ch)));
    }

    const std::vector<std::pair<std::uint16_t, std::uint16_t>> &rows() const { return rows_; }
    std::optional<Found> search(std::uint16_t ch) const { return found_[ch]; }

    std::uint16_t all(unsigned mode, std::uint16_t ch) const {
        const auto found = search(ch);
        if (!found) return ch;
        const bool letter = found->group == 0;
        const bool kana = found->group == 2;
        std::size_t row = found->row;
        unsigned column = found->column;
        if (mode == 1 && letter) row |= 1;
        if (mode == 2 && letter) row &= ~std::size_t{1};
        if (mode == 3) column = 1;
        if (mode == 4) column = 0;
        if (mode == 5 && kana) row &= ~std::size_t{1};
        if (mode == 6 && kana) row |= 1;
        const std::uint16_t cell = column == 0 ? rows_[row].first : rows_[row].second;
        return cell == 0 ? ch : cell;
    }

    std::uint16_t lower(std::uint16_t ch) const {
        if (ch >= 'A' && ch <= 'Z') return static_cast<std::uint16_t>(ch + 32);
        if (ch < 0x1000) return static_cast<std::uint16_t>(in_case_range(ch) && ch % 2 == 0 ? ch + 1 : ch);
        return all(1, ch);
    }

    std::uint16_t upper(std::uint16_t ch) const {
        if (ch >= 'a' && ch <= 'z') return static_cast<std::uint16_t>(ch - 32);
        if (ch < 0x1000) return static_cast<std::uint16_t>(in_case_range(ch) && ch % 2 != 0 ? ch - 1 : ch);
        return all(2, ch);
    }

    bool is_upper(std::uint16_t ch) const {
        if (ch >= 0x1000 && all(4, ch) == ch) return false;
        const std::uint16_t single = ch >= 0x1000 ? all(4, ch) : ch;
        return (single >= 'A' && single <= 'Z') || (in_case_range(single) && single % 2 == 0);
    }

    std::uint16_t hiragana(std::uint16_t ch) const { return all(5, ch >> 8 == 11 ? all(3, ch) : ch); }

  private:
    static bool in_case_range(std::uint16_t ch) {
        return (ch >= 0x011A && ch <= 0x01F1) || (ch >= 0x0800 && ch <= 0x0845) || (ch >= 0x0A00 && ch <= 0x0AC7);
    }

    void read(const std::string &country) {
        for (const auto &row : read_rows("eastasia/forms" + country + ".txt"))
            rows_.emplace_back(std::stoul(row.at(1), nullptr, 16), std::stoul(row.at(2), nullptr, 16));
    }

    std::optional<Found> walk(std::uint16_t ch) const {
        const unsigned column = ch >= 0x2400 ? 1 : 0;
        unsigned group = 0;
        for (std::size_t row = 0; row < rows_.size(); ++row) {
            const std::uint16_t cell = column == 0 ? rows_[row].first : rows_[row].second;
            if (cell == ch) return Found{row, group, column};
            if (cell == 0xFFFF && ++group == 4) break;
        }
        return std::nullopt;
    }

    std::vector<std::pair<std::uint16_t, std::uint16_t>> rows_;
    std::vector<std::optional<Found>> found_;
};

} // namespace kxstr::reference
