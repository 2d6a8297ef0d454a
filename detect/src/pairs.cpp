#include "pairs.h"

#include <algorithm>
#include <memory>

namespace kxdetect {
namespace {

constexpr std::size_t kLongestLine = 1000; // of a text that has no line ends

constexpr bool is_ascii_letter(unsigned byte) {
    return (byte | 0x20U) - 'a' < 26;
}
constexpr bool is_digit(unsigned byte) {
    return byte - '0' < 10;
}
constexpr bool is_word(unsigned byte) {
    return byte >= 0x80 || is_ascii_letter(byte);
}
constexpr unsigned ascii_symbol(unsigned byte) {
    return (byte & 0x1FU);
}

constexpr auto kIsWord = [] {
    std::array<bool, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte)
        table[byte] = is_word(byte);
    return table;
}();

// Counts pairs: few of them in a list, which is sorted in the end, many in a square of all pairs.
class PairCounter {
  public:
    void add(unsigned first, unsigned second) {
        const auto pair = static_cast<std::uint16_t>(first << 8 | second);
        if (square_ != nullptr) {
            ++square_[pair];
            return;
        }
        list_.push_back(pair);
        if (list_.size() == kLongestList) begin_square();
    }

    void move_to(TextPairs &result, bool at_start) {
        const auto add_to_result = [&](std::size_t index, std::uint32_t count) {
            const BytePair pair{static_cast<std::uint8_t>(index >> 8), static_cast<std::uint8_t>(index & 0xFFU),
                                at_start, count};
            (pair.is_ascii() ? result.within : result.upper).push_back(pair);
        };
        for (std::size_t pair = 0; square_ != nullptr && pair < kPairs; ++pair) {
            if (square_[pair] != 0) add_to_result(pair, square_[pair]);
        }
        std::ranges::sort(list_);
        for (auto next = list_.begin(); next != list_.end();) {
            const auto end = std::upper_bound(next, list_.end(), *next);
            add_to_result(*next, static_cast<std::uint32_t>(end - next));
            next = end;
        }
    }

  private:
    static constexpr std::size_t kPairs = std::size_t{256} * 256;
    static constexpr std::size_t kLongestList = 2000;

    void begin_square() {
        square_ = std::make_unique<std::uint32_t[]>(kPairs);
        for (const std::uint16_t pair : list_)
            ++square_[pair];
        list_.clear();
    }

    std::vector<std::uint16_t> list_;
    std::unique_ptr<std::uint32_t[]> square_;
};

struct UpperWords {
    PairCounter pairs;
    PairCounter starts;

    void add(std::span<const std::uint8_t> word, std::array<std::uint32_t, 256> &inside) {
        pairs.add(kEdge, word[0]);
        starts.add(word[0], word.size() > 1 ? word[1] : kEdge);
        for (std::size_t place = 2; place < word.size(); ++place) {
            ++inside[word[place - 1]];
            // A line drawn over the page says no more than its start.
            if (word[place] != word[place - 1] || word[place] != word[place - 2])
                pairs.add(word[place - 1], word[place]);
        }
        if (word.size() > 1) pairs.add(word.back(), kEdge);
    }
};

void add_ascii(AsciiPairs &pairs, std::span<const std::uint8_t> word) {
    unsigned previous = kEdge;
    for (const std::uint8_t byte : word) {
        const unsigned symbol = ascii_symbol(byte);
        ++pairs[std::size_t{previous} * kAsciiSymbols + symbol];
        previous = symbol;
    }
    ++pairs[std::size_t{previous} * kAsciiSymbols];
}

void count_line(std::span<const std::uint8_t> line, bool has_upper, UpperWords &upper, TextPairs &result) {
    std::size_t place = 0;
    while (place < line.size()) {
        if (!kIsWord[line[place]]) {
            ++place;
            continue;
        }
        std::size_t end = place;
        std::uint8_t in_word = 0;
        while (end < line.size() && kIsWord[line[end]])
            in_word |= line[end++];
        const std::span<const std::uint8_t> word = line.subspan(place, end - place);
        if (in_word >= 0x80) {
            upper.add(word, result.inside);
            if (place > 0 && is_digit(line[place - 1])) ++result.beside_digit[word.front()];
            if (end < line.size() && is_digit(line[end])) ++result.beside_digit[word.back()];
        } else {
            add_ascii(has_upper ? result.beside : result.apart, word);
        }
        place = end;
    }
}

} // namespace

TextPairs count_pairs(std::span<const std::uint8_t> text) {
    TextPairs result;
    UpperWords upper;
    bool upper_seen = false;
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::span<const std::uint8_t> rest = text.subspan(begin, std::min(kLongestLine, text.size() - begin));
        const auto length = static_cast<std::size_t>(std::ranges::find(rest, '\n') - rest.begin());
        const std::span<const std::uint8_t> line = rest.first(std::min(length + 1, rest.size()));
        std::uint8_t all = 0;
        for (const std::uint8_t byte : line) {
            ++result.bytes[byte];
            all |= byte;
        }
        const bool has_upper = all >= 0x80;
        if (has_upper && !upper_seen) result.first_upper_line = begin;
        upper_seen = upper_seen || has_upper;
        count_line(line, has_upper, upper, result);
        begin += line.size();
    }
    upper.pairs.move_to(result, false);
    upper.starts.move_to(result, true);
    for (unsigned byte = 0x80; byte < 256; ++byte)
        result.upper_bytes += result.bytes[byte];
    return result;
}

} // namespace kxdetect
