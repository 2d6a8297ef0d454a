// What it costs to take a text for one in a page and a language.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "pairs.h"
#include "tables.h"

namespace kxdetect {

using Cost = std::int64_t; // sixteenths of a nat

struct Candidate {
    const char *page;
    const char *language;
    Cost cost;
    std::uint64_t same; // the pages, for those of one byte a character
    std::uint32_t broken = 0;
};

// The words of ASCII, which are in the language or in English, by language.
class AsciiWords {
  public:
    explicit AsciiWords(const TextPairs &pairs);
    Cost cost(std::size_t model) const { return costs_[model]; } // index into kModels
    Cost english_cost() const { return costs_[0]; }

  private:
    std::vector<Cost> costs_;
};

bool is_latin(const Model &model);

// All languages, for a text without bytes from 80 on.
std::vector<Candidate> score_ascii(const TextPairs &pairs);
// The pages of one byte a character, each with each of its languages.
std::vector<Candidate> score_single_byte(const TextPairs &pairs, const AsciiWords &ascii);
// The pages of two bytes that can be read so.
std::vector<Candidate> score_double_byte(std::span<const std::uint8_t> text, const TextPairs &pairs,
                                         const AsciiWords &ascii);
// The languages of 16-bit units.
std::vector<Candidate> score_unicode(std::span<const std::uint16_t> text, const char *page);

} // namespace kxdetect
