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
    Cost misfit = 0;    // by how much it is worse than the language in a page that nobody knows
    std::uint32_t broken = 0;
};

// A text that costs so much more, a pair or a character, than its language does in its own page is in another page. In
// few of them it may be chance.
inline constexpr Cost kMisfitEach = 24;
inline constexpr Cost kMisfitOfCharacter =
    48; // of East Asian text, whose choice of characters goes by what it is about
inline constexpr Cost kMisfitAtAll = Cost{8} * 16;

constexpr Cost misfit_of(Cost cost, Cost usual, Cost count, Cost each = kMisfitEach) {
    return cost - (usual + each) * count - kMisfitAtAll;
}

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
// ISO-2022-JP, which shifts by escape sequences; nothing for a text with other ones.
std::vector<Candidate> score_shifting(std::span<const std::uint8_t> text);
// The languages of 16-bit units.
std::vector<Candidate> score_unicode(std::span<const std::uint16_t> text, const char *page);

} // namespace kxdetect
