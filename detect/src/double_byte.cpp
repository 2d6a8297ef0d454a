#include <algorithm>
#include <optional>
#include <string_view>

#include "score.h"

namespace kxdetect {
namespace {

constexpr Cost kNat = 16;

constexpr std::size_t kLargestWindow = std::size_t{1} << 17; // bytes, which tell as much as more
constexpr Cost kRareCharacter = 13 * kNat;
constexpr Cost kBrokenByte = 20 * kNat;
constexpr Cost kHalfWidthKana = 5 * kNat;
constexpr Cost kFirstHalfWidthKana = 10 * kNat;
constexpr Cost kBehindLetter = 2 * kNat; // a letter of ASCII right before such a character
constexpr Cost kAsciiLetter = 52;        // in a word with upper bytes, as the other pages count it
constexpr Cost kPageCost = 2 * kNat;

// The bytes of a character of two bytes.
struct Shape {
    const char *page;
    const char *model; // the page whose codes the model has
    bool (*leads)(unsigned byte);
    bool (*trails)(unsigned lead, unsigned byte);
    bool half_width_kana;
    unsigned (*code)(unsigned lead, unsigned trail); // the code in that page
};

constexpr bool within(unsigned byte, unsigned first, unsigned last) {
    return byte - first <= last - first;
}

constexpr unsigned own_code(unsigned lead, unsigned trail) {
    return lead << 8 | trail;
}

// Both have the rows of 94 characters of one standard: this one has a row for each lead byte, 932 has two.
constexpr unsigned code_of_euc_jp(unsigned lead, unsigned trail) {
    const unsigned row = lead - 0xA1;
    const unsigned column = trail - 0xA1;
    const unsigned high = row / 2 + (row < 62 ? 0x81 : 0xC1);
    const unsigned low = row % 2 != 0 ? column + 0x9F : column + (column < 63 ? 0x40 : 0x41);
    return high << 8 | low;
}

constexpr bool is_upper_half(unsigned byte) {
    return within(byte, 0xA1, 0xFE);
}

// A byte before a half-width kana, and one before the two bytes of a rare character.
constexpr unsigned kKanaShift = 0x8E;
constexpr unsigned kRareShift = 0x8F;

constexpr Shape kEucJp{
    "euc-jp", "932", is_upper_half, [](unsigned, unsigned byte) { return is_upper_half(byte); }, false, code_of_euc_jp};

constexpr Shape kShapes[] = {
    {"932", "932", [](unsigned byte) { return within(byte, 0x81, 0x9F) || within(byte, 0xE0, 0xFC); },
     [](unsigned, unsigned byte) { return within(byte, 0x40, 0x7E) || within(byte, 0x80, 0xFC); }, true, own_code},
    {"936", "936", [](unsigned byte) { return within(byte, 0x81, 0xFE); },
     [](unsigned, unsigned byte) { return within(byte, 0x40, 0x7E) || within(byte, 0x80, 0xFE); }, false, own_code},
    {"949", "949", [](unsigned byte) { return within(byte, 0x81, 0xFD); },
     [](unsigned, unsigned byte) {
         return within(byte, 0x41, 0x5A) || within(byte, 0x61, 0x7A) || within(byte, 0x81, 0xFE);
     },
     false, own_code},
    {"950", "950", [](unsigned byte) { return within(byte, 0x81, 0xFE); },
     [](unsigned, unsigned byte) { return within(byte, 0x40, 0x7E) || within(byte, 0xA1, 0xFE); }, false, own_code},
};

Cost find_cost(std::span<const CharacterCost> costs, std::uint16_t character) {
    const auto found = std::ranges::lower_bound(costs, character, {}, &CharacterCost::character);
    return found != costs.end() && found->character == character ? Cost{found->cost} : kRareCharacter;
}

constexpr bool is_ascii_letter(unsigned byte) {
    return (byte | 0x20U) - 'a' < 26;
}

struct DoubleByteReading {
    Cost cost;
    Cost trailing_letters; // letters of ASCII that are second bytes
    Cost characters;
};

// Nothing when too many bytes cannot be.
std::optional<DoubleByteReading> read(std::span<const std::uint8_t> text, const Shape &shape,
                                      const CharacterModel &model) {
    DoubleByteReading reading{};
    std::size_t broken = 0;
    std::size_t characters = 0;
    bool behind_letter = false;
    bool behind_kana = false;
    for (std::size_t place = 0; place < text.size(); ++place) {
        const unsigned byte = text[place];
        if (byte < 0x80) {
            behind_letter = is_ascii_letter(byte);
            behind_kana = false;
            continue;
        }
        if (behind_letter) reading.cost += kBehindLetter;
        behind_letter = false;
        const bool shifts = &shape == &kEucJp && (byte == kKanaShift || byte == kRareShift);
        if (shifts && place + 1 < text.size() && is_upper_half(text[place + 1])) {
            const bool kana = byte == kKanaShift;
            reading.cost += !kana ? kRareCharacter : behind_kana ? kHalfWidthKana : kFirstHalfWidthKana;
            behind_kana = kana;
            ++characters;
            place += kana ? 1 : 2;
            continue;
        }
        if (shape.leads(byte)) {
            if (place + 1 == text.size()) break; // the text is cut off here
            const unsigned trail = text[place + 1];
            if (shape.trails(byte, trail)) {
                reading.cost += find_cost(model.in_page, static_cast<std::uint16_t>(shape.code(byte, trail)));
                if (is_ascii_letter(trail)) ++reading.trailing_letters;
                ++characters;
                behind_kana = false;
                ++place;
                continue;
            }
        } else if (shape.half_width_kana && within(byte, 0xA1, 0xDF)) {
            reading.cost += behind_kana ? kHalfWidthKana : kFirstHalfWidthKana;
            behind_kana = true;
            ++characters;
            continue;
        }
        reading.cost += kBrokenByte;
        ++broken;
    }
    if (broken * 50 > characters) return std::nullopt;
    reading.characters = static_cast<Cost>(characters);
    return reading;
}

const CharacterModel &model_of(const Shape &shape) {
    return *std::ranges::find_if(kCharacterModels,
                                 [&](const CharacterModel &one) { return std::string_view(one.page) == shape.model; });
}

} // namespace

std::vector<Candidate> score_double_byte(std::span<const std::uint8_t> text, const TextPairs &pairs,
                                         const AsciiWords &ascii) {
    const auto window = text.subspan(pairs.first_upper_line);
    const auto part = window.first(std::min(window.size(), kLargestWindow));
    const auto upper = static_cast<Cost>(std::ranges::count_if(part, [](std::uint8_t byte) { return byte >= 0x80; }));
    const auto all = static_cast<Cost>(pairs.upper_bytes);
    Cost letters = 0;
    for (const auto *words : {&pairs.upper, &pairs.within}) {
        for (const BytePair &pair : *words)
            letters += pair.second != kEdge && pair.second < 0x80 ? pair.count : 0;
    }
    std::vector<Candidate> candidates;
    const auto try_shape = [&](const Shape &shape) {
        const CharacterModel &model = model_of(shape);
        if (const auto reading = read(part, shape, model)) {
            const auto whole = [&](Cost cost) { return cost * all / std::max<Cost>(upper, 1); };
            const Cost others = std::max<Cost>(letters - whole(reading->trailing_letters), 0);
            const Cost cost = whole(reading->cost) + kAsciiLetter * others + ascii.english_cost() + kPageCost;
            const Cost misfit = misfit_of(reading->cost, model.usual, reading->characters, kMisfitOfCharacter);
            candidates.push_back({shape.page, model.code, cost, 0, misfit});
        }
    };
    std::ranges::for_each(kShapes, try_shape);
    try_shape(kEucJp);
    return candidates;
}

std::vector<Candidate> score_shifting(std::span<const std::uint8_t> text) {
    std::vector<std::uint8_t> euc;
    bool in_pairs = false;
    while (!text.empty()) {
        constexpr std::uint8_t escape = 0x1B;
        if (text[0] != escape) {
            const bool upper = in_pairs && within(text[0], 0x21, 0x7E);
            euc.push_back(static_cast<std::uint8_t>(upper ? text[0] | 0x80U : text[0]));
            text = text.subspan(1);
            continue;
        }
        if (text.size() < 3) break; // the text is cut off here
        const bool to_pairs = text[1] == '$' && (text[2] == '@' || text[2] == 'B');
        const bool to_letters = text[1] == '(' && (text[2] == 'B' || text[2] == 'J');
        if (!to_pairs && !to_letters) return {};
        in_pairs = to_pairs;
        text = text.subspan(3);
    }
    const CharacterModel &model = model_of(kEucJp);
    const auto reading = read(euc, kEucJp, model);
    if (!reading || reading->characters == 0) return {};
    return {{"iso-2022-jp", model.code, reading->cost, 0,
             misfit_of(reading->cost, model.usual, reading->characters, kMisfitOfCharacter)}};
}

} // namespace kxdetect
