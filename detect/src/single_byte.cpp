#include <algorithm>
#include <array>
#include <bit>
#include <limits>

#include "score.h"

namespace kxdetect {
namespace {

constexpr Cost kNat = 16;

// A letter that the language does not have: of the page's other letters, and beside another such letter.
constexpr Cost kStrangeLetter = 10 * kNat;
constexpr Cost kStrangePair = 7 * kNat;
constexpr Cost kAfterStrange = 2 * kNat;
constexpr Cost kNoLimit = std::numeric_limits<Cost>::max() / 2;
constexpr Cost kHopeless = 100 * kNat; // worse than the best by so much
constexpr Cost kUndefinedByte = 20 * kNat;
constexpr Cost kControlByte = 14 * kNat;
constexpr Cost kBoxSign = 5 * kNat / 2;
constexpr Cost kOtherBoxSign = 6 * kNat; // behind another than itself or a level one
constexpr Cost kFirstBoxSign = 4 * kNat;
constexpr Cost kLoneBoxSign = 8 * kNat;
// A sign where it does not stand: an opening quotation mark behind a letter, two letters with a star between them.
constexpr Cost kMisplacedSign = 3 * kNat;
constexpr Cost kLetterAtDigit = 3 * kNat;
constexpr Cost kSignInside = 4 * kNat;
// A word in another script than the text, and going over to it within a word.
constexpr Cost kOtherScript = 6 * kNat;
constexpr Cost kEnglishWords = 3 * kNat; // that what is in ASCII is English and not in the text's language

// Letters by what they say about their neighbours; `joined` are those forms of Arabic letters that have another behind
// them.
enum class Kind : std::uint8_t { edge, capital, small, plain, joined };
constexpr std::size_t kKinds = 5;

// Costs of one kind of letter behind another: in running text, and in text all in capitals.
using CaseCosts = std::array<std::array<std::uint8_t, kKinds>, kKinds>;
constexpr CaseCosts kRunningText{{
    // edge capital small plain joined
    {0, 32, 2, 0, 0},
    {0, 40, 4, 16, 16},
    {0, 100, 0, 16, 16},
    {0, 16, 16, 0, 0},
    {48, 48, 48, 0, 0},
}};
constexpr CaseCosts kCapitals{{
    {0, 3, 56, 0, 0},
    {0, 1, 72, 16, 16},
    {0, 120, 16, 16, 16},
    {0, 16, 16, 0, 0},
    {48, 48, 48, 0, 0},
}};

constexpr Cost kAllCapitals = 4 * kNat; // before the text is read

Kind kind_of(Code code) {
    if ((code & kLetterBit) == 0) return Kind::edge;
    switch (code & kKindMask) {
    case kCapitalBit: return Kind::capital;
    case kSmallBit: return Kind::small;
    case kJoinedBits: return Kind::joined;
    default: return Kind::plain;
    }
}

const Sign *sign_of(Code code) {
    const bool is_sign = (code & kLetterBit) == 0 && (code & kSignBit) != 0;
    return is_sign ? &kSigns[code & kNumberMask] : nullptr;
}

bool is_box(const Sign &sign) {
    return sign.kind == SignClass::box || sign.kind == SignClass::upright || sign.kind == SignClass::level;
}

// A frame goes on, or begins; of its signs only the upright ones stand alone.
Cost cost_of_box(const Sign &sign, Code before) {
    const Sign *previous = sign_of(before);
    if (previous != nullptr && is_box(*previous)) {
        const bool drawn = previous == &sign || sign.kind == SignClass::level || previous->kind == SignClass::level;
        return drawn ? kBoxSign : kOtherBoxSign;
    }
    return sign.kind == SignClass::upright ? kFirstBoxSign : kLoneBoxSign;
}

Cost cost_of_itself(Code code, Code before) {
    if ((code & kLetterBit) != 0) return 0;
    if (const Sign *sign = sign_of(code)) return is_box(*sign) ? cost_of_box(*sign, before) : Cost{sign->cost};
    return code == kUndefined ? kUndefinedByte : kControlByte;
}

// What the neighbours of a sign say.
Cost cost_of_place(Code first, Code second, const BytePair &pair) {
    if (pair.second >= 0x80 && (first & kLetterBit) != 0) {
        const Sign *sign = sign_of(second);
        if (sign == nullptr) return 0;
        if (sign->kind == SignClass::opening || is_box(*sign)) return kMisplacedSign;
        return sign->kind == SignClass::other ? kMisplacedSign / 2 : 0;
    }
    if (pair.first >= 0x80 && (second & kLetterBit) != 0) {
        const Sign *sign = sign_of(first);
        if (sign == nullptr) return 0;
        const bool behind = sign->kind == SignClass::closing || (pair.at_start && sign->kind == SignClass::joining);
        if (behind || sign->kind == SignClass::other) return kMisplacedSign;
        return is_box(*sign) ? kMisplacedSign / 2 : 0;
    }
    if (pair.first == kEdge) {
        const Sign *sign = sign_of(second);
        return sign != nullptr && sign->kind == SignClass::joining ? kMisplacedSign : 0;
    }
    return 0;
}

// Of a quotation mark, a dash and all other signs that do not stand inside of words.
Cost cost_inside(Code code) {
    const Sign *sign = sign_of(code);
    return sign != nullptr && sign->kind != SignClass::joining && !is_box(*sign) ? kSignInside : 0;
}

// The characters of all bytes of a page.
std::array<Code, 256> codes_of(const Page &page, std::span<const Code, 128> ascii) {
    std::array<Code, 256> codes{};
    std::ranges::copy(ascii, codes.begin());
    std::ranges::copy(page.upper, codes.begin() + 128);
    return codes;
}

// The letters of ASCII as codes; all else is the edge of a word.
std::array<Code, 128> ascii_codes() {
    std::array<Code, 128> codes{};
    const Model &english = kModels[0];
    // a to z come first: they are the smallest letters of all.
    for (unsigned letter = 0; letter < 26; ++letter) {
        const Code number = english.letters[letter];
        codes['a' + letter] = static_cast<Code>(kLetterBit | kSmallBit | number);
        codes['A' + letter] = static_cast<Code>(kLetterBit | kCapitalBit | number);
    }
    return codes;
}

struct Pair {
    Code first;
    Code second;
    bool both_ascii;
    bool at_start;
    std::uint32_t count;
};

// The pairs of the words with upper bytes as a page reads them, and what they cost in any language.
struct Reading {
    std::vector<Pair> pairs; // that have a letter
    Cost cost = 0;
    Cost running = 0;
    Cost capitals = kAllCapitals;
    Cost count = 0; // of all pairs

    void add(const BytePair &pair, const std::array<Code, 256> &codes) {
        const Code first = pair.first == kEdge ? kUndefined : codes[pair.first];
        const Code second = pair.second == kEdge ? kUndefined : codes[pair.second];
        Cost own = cost_of_place(first, second, pair);
        if (pair.second >= 0x80) own += cost_of_itself(second, first);
        cost += own * pair.count;
        count += pair.count;
        const auto from = static_cast<std::size_t>(kind_of(first));
        const auto to = static_cast<std::size_t>(kind_of(second));
        running += Cost{kRunningText[from][to]} * pair.count;
        capitals += Cost{kCapitals[from][to]} * pair.count;
        if (((first | second) & kLetterBit) != 0)
            pairs.push_back({first, second, pair.is_ascii(), pair.at_start, pair.count});
    }
};

// What all pages read alike.
Reading read_within(const TextPairs &text, const std::array<Code, 256> &codes) {
    Reading reading;
    for (const BytePair &pair : text.within)
        reading.add(pair, codes);
    return reading;
}

// The rest; the cost is that of both.
Reading read_upper(const TextPairs &text, const std::array<Code, 256> &codes, const Reading &within) {
    Reading reading;
    reading.running = within.running;
    reading.capitals = within.capitals;
    reading.pairs.reserve(text.upper.size());
    for (const BytePair &pair : text.upper)
        reading.add(pair, codes);
    for (std::size_t byte = 0x80; byte < 256; ++byte) {
        reading.cost += cost_inside(codes[byte]) * text.inside[byte];
        if ((codes[byte] & kLetterBit) != 0) reading.cost += kLetterAtDigit * text.beside_digit[byte];
    }
    reading.cost += std::min(reading.running, reading.capitals);
    return reading;
}

// The symbols of a language by the numbers of letters; 0 for those that it does not have.
std::vector<std::uint8_t> symbols_of(const Model &model) {
    std::vector<std::uint8_t> symbols(kLetterCount);
    for (std::size_t index = 0; index < model.letters.size(); ++index)
        symbols[model.letters[index]] = static_cast<std::uint8_t>(index + 1);
    return symbols;
}

class Language {
  public:
    explicit Language(const Model &model)
        : model_(&model), symbols_(symbols_of(model)), latin_(is_latin(model)), width_(model.letters.size() + 1) {}

    // `english` costs what is in ASCII where the language is in another script. A sum beyond the limit is not finished.
    Cost cost(const Reading &reading, const Language &english, Cost limit) const {
        Cost sum = 0;
        for (const Pair &pair : reading.pairs) {
            sum += cost(pair, english) * pair.count;
            if (sum > limit) break;
        }
        return sum;
    }

  private:
    Cost between(unsigned first, unsigned second, bool at_start) const {
        return (at_start && first != 0 ? model_->starts : model_->costs)[first * width_ + second];
    }
    unsigned symbol(Code code) const { return (code & kLetterBit) != 0 ? symbols_[code & kNumberMask] : 0; }

    Cost cost(const Pair &pair, const Language &english) const {
        const unsigned first = symbol(pair.first);
        const unsigned second = symbol(pair.second);
        const bool letter_first = (pair.first & kLetterBit) != 0;
        const bool letter_second = (pair.second & kLetterBit) != 0;
        if ((first != 0 || !letter_first) && (second != 0 || !letter_second))
            return between(first, second, pair.at_start);
        if (!latin_ && pair.both_ascii) {
            return english.between(english.symbol(pair.first), english.symbol(pair.second), pair.at_start) +
                   (letter_first ? 0 : kOtherScript / 2);
        }
        if (letter_second && second == 0) return first == 0 && letter_first ? kStrangePair : kStrangeLetter;
        return second != 0 ? 2 * kAfterStrange : kAfterStrange;
    }

    const Model *model_;
    std::vector<std::uint8_t> symbols_;
    bool latin_;
    std::size_t width_;
};

struct AsciiPair {
    std::size_t first;
    std::size_t second;
    std::uint32_t count;
};

std::vector<AsciiPair> list_of(const AsciiPairs &pairs) {
    std::vector<AsciiPair> list;
    for (std::size_t index = 0; index < pairs.size(); ++index) {
        if (pairs[index] != 0) list.push_back({index / kAsciiSymbols, index % kAsciiSymbols, pairs[index]});
    }
    return list;
}

Cost cost_of_ascii(std::span<const AsciiPair> pairs, const Model &model) {
    const std::size_t width = model.letters.size() + 1;
    Cost sum = 0;
    for (const AsciiPair &pair : pairs)
        sum += Cost{model.costs[pair.first * width + pair.second]} * pair.count;
    return sum;
}

// The bytes from 80 on that a text has.
std::vector<std::size_t> upper_bytes_of(const TextPairs &pairs) {
    std::vector<std::size_t> bytes;
    for (std::size_t byte = 0x80; byte < 256; ++byte) {
        if (pairs.bytes[byte] != 0) bytes.push_back(byte);
    }
    return bytes;
}

} // namespace

// The letters of a model ascend, so the letters of ASCII are its first symbols where it has them.
bool is_latin(const Model &model) {
    return model.letters[0] == kModels[0].letters[0];
}

AsciiWords::AsciiWords(const TextPairs &pairs) {
    const std::vector<AsciiPair> words_beside = list_of(pairs.beside);
    const std::vector<AsciiPair> words_apart = list_of(pairs.apart);
    const Cost beside = cost_of_ascii(words_beside, kModels[0]) + kEnglishWords;
    const Cost apart = cost_of_ascii(words_apart, kModels[0]) + kEnglishWords;
    for (const Model &model : kModels) {
        const bool latin = is_latin(model);
        costs_.push_back((latin ? std::min(beside, cost_of_ascii(words_beside, model)) : beside) +
                         (latin ? std::min(apart, cost_of_ascii(words_apart, model)) : apart));
    }
}

std::vector<Candidate> score_ascii(const TextPairs &pairs) {
    const std::vector<AsciiPair> words = list_of(pairs.apart);
    if (words.empty()) return {{"ascii", "", 0, 0}};
    std::vector<Candidate> candidates;
    for (const Model &model : kModels) {
        if (is_latin(model)) candidates.push_back({"ascii", model.code, cost_of_ascii(words, model), 0});
    }
    return candidates;
}

std::vector<Candidate> score_single_byte(const TextPairs &pairs, const AsciiWords &ascii) {
    const std::array<Code, 128> lower = ascii_codes();
    const std::vector<std::size_t> bytes = upper_bytes_of(pairs);
    const Reading within = read_within(pairs, codes_of(kPages[0], lower));
    std::vector<Language> languages;
    std::vector<Cost> ascii_costs; // of the words, and of what is in ASCII within those that tell the page
    for (std::size_t index = 0; index < kModels.size(); ++index) {
        languages.emplace_back(kModels[index]);
        ascii_costs.push_back(ascii.cost(index) + languages[index].cost(within, languages[0], kNoLimit));
    }

    std::vector<Candidate> candidates;
    std::vector<bool> done(kPages.size());
    Cost best = kNoLimit;
    for (std::size_t number = 0; number < kPages.size(); ++number) {
        const Page &page = kPages[number];
        std::uint64_t same = 0;
        std::uint32_t undefined = 0;
        const auto reads_alike = [&](const Page &other) {
            return std::ranges::all_of(
                bytes, [&](std::size_t byte) { return page.upper[byte - 0x80] == other.upper[byte - 0x80]; });
        };
        for (const std::size_t byte : bytes)
            undefined += page.upper[byte - 0x80] == kUndefined ? pairs.bytes[byte] : 0;
        if (done[number] || std::size_t{undefined} * 20 > pairs.upper_bytes) continue;
        Cost page_cost = page.cost;
        std::uint64_t written = 0;
        for (std::size_t other = number; other < kPages.size(); ++other) {
            if (!reads_alike(kPages[other])) continue;
            done[other] = true;
            same |= std::uint64_t{1} << other;
            page_cost = std::min(page_cost, Cost{kPages[other].cost});
        }
        const Reading reading = read_upper(pairs, codes_of(page, lower), within);
        for (std::size_t index = 0; index < kModels.size(); ++index) {
            written = kModels[index].pages & same;
            if (written == 0) continue;
            // The most usual of the pages in which the language was written gives its name.
            const auto name = static_cast<std::size_t>(std::countr_zero(written));
            const Cost others = reading.cost + page_cost + ascii_costs[index];
            const Cost letters = languages[index].cost(reading, languages[0], best + kHopeless - others);
            const Cost cost = others + letters;
            best = std::min(best, cost);
            const Cost fit = letters + reading.cost - std::min(within.running, within.capitals);
            const Cost misfit = misfit_of(fit, kModels[index].usual, reading.count);
            candidates.push_back({kPages[name].name, kModels[index].code, cost, same, misfit});
        }
    }
    return candidates;
}

} // namespace kxdetect
