#include "unicode.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "pairs.h"
#include "score.h"

namespace kxdetect {
namespace {

constexpr Cost kNat = 16;
constexpr Cost kStrangeLetter = 10 * kNat;
constexpr Cost kStrangeCharacter = 14 * kNat;
constexpr Cost kSign = 4 * kNat; // that all languages share
constexpr Cost kOtherScript = 3 * kNat;
constexpr std::uint16_t kBad = 0xFFFD;
constexpr std::uint32_t kMark = 0xFEFF;

// Bytes of the character that begins with this one; 0 when none does.
constexpr std::size_t length_of(unsigned lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
}

struct Step {
    std::size_t bytes;  // at least 1
    std::uint32_t code; // kBad for a byte that belongs to no character
    bool cut;           // the text ends inside of it
};

Step next_of(std::span<const std::uint8_t> text) {
    const unsigned lead = text[0];
    const std::size_t length = length_of(lead);
    if (length <= 1) return {1, length == 1 ? lead : kBad, false};
    std::uint32_t code = lead & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (index == text.size()) return {index, kBad, true};
        const unsigned byte = text[index];
        const bool too_low = index == 1 && ((lead == 0xE0 && byte < 0xA0) || (lead == 0xF0 && byte < 0x90));
        const bool too_high = index == 1 && ((lead == 0xED && byte > 0x9F) || (lead == 0xF4 && byte > 0x8F));
        if ((byte & 0xC0U) != 0x80 || too_low || too_high) return {1, kBad, false};
        code = code << 6 | (byte & 0x3FU);
    }
    return {length, code, false};
}

bool is_ascii_block(const std::uint8_t *bytes) {
    std::uint64_t block = 0;
    std::memcpy(&block, bytes, sizeof block);
    return (block & 0x8080808080808080U) == 0;
}

// The value of a digit of base 64; 64 for other bytes.
constexpr unsigned digit_of(std::uint8_t byte) {
    if (byte >= 'A' && byte <= 'Z') return byte - 'A';
    if (byte >= 'a' && byte <= 'z') return byte - 'a' + 26U;
    if (byte >= '0' && byte <= '9') return byte - '0' + 52U;
    return byte == '+' ? 62 : byte == '/' ? 63 : 64;
}

struct Symbols {
    std::uint16_t first;  // letter number; 0 for the edge of a word
    std::uint16_t second; // the mark that follows it, or 0
};

constexpr std::uint16_t kStrange = 0xFFFF;

// What a text has for the models of letters.
Symbols symbols_of(std::uint16_t unit) {
    if (unit < 0x80) {
        const unsigned letter = (unit | 0x20U) - 'a';
        return {static_cast<std::uint16_t>(letter < 26 ? kModels[0].letters[letter] : 0), 0};
    }
    const auto found = std::ranges::lower_bound(kUnicodeLetters, unit, {}, &UnicodeLetter::character);
    if (found != kUnicodeLetters.end() && found->character == unit) return {found->first, found->second};
    const bool sign = (unit >= 0xA0 && unit < 0xC0) || (unit >= 0x2000 && unit < 0x2C00) || unit == 0xFEFF ||
                      unit == 0x3000 || unit == 0x3001 || unit == 0x3002;
    return {static_cast<std::uint16_t>(sign ? 0 : kStrange), 0};
}

Cost cost_of_letters(std::span<const std::uint16_t> letters, const Model &model) {
    std::vector<std::uint8_t> symbols(kLetterCount);
    const std::size_t width = model.letters.size() + 1;
    for (std::size_t index = 0; index < model.letters.size(); ++index)
        symbols[model.letters[index]] = static_cast<std::uint8_t>(index + 1);
    const Model &english = kModels[0];
    const bool latin = is_latin(model);
    const std::size_t english_width = english.letters.size() + 1;
    Cost cost = 0;
    std::size_t previous = 0;       // symbol in the model
    std::size_t previous_latin = 0; // symbol in English, where the model has no letters of ASCII
    for (const std::uint16_t letter : letters) {
        if (letter == kStrange) {
            cost += kStrangeCharacter;
            previous = previous_latin = 0;
            continue;
        }
        if (letter != 0 && letter <= 26 && !latin) {
            cost += (previous_latin == 0 ? kOtherScript : 0) + english.costs[previous_latin * english_width + letter];
            previous = 0;
            previous_latin = letter;
            continue;
        }
        const std::size_t symbol = letter != 0 ? symbols[letter] : 0;
        if (letter != 0 && symbol == 0)
            cost += kStrangeLetter;
        else if (previous_latin != 0)
            cost += english.costs[previous_latin * english_width];
        else
            cost += model.costs[previous * width + symbol];
        previous = symbol;
        previous_latin = 0;
    }
    return cost;
}

Cost cost_of_characters(std::span<const std::uint16_t> text, const CharacterModel &model) {
    const Model &english = kModels[0];
    const std::size_t width = english.letters.size() + 1;
    Cost cost = 0;
    std::size_t previous = 0;
    for (const std::uint16_t unit : text) {
        if (unit < 0x80) {
            const std::size_t letter = symbols_of(unit).first;
            cost += english.costs[previous * width + letter];
            previous = letter;
            continue;
        }
        previous = 0;
        const auto found = std::ranges::lower_bound(model.in_unicode, unit, {}, &CharacterCost::character);
        const bool known = found != model.in_unicode.end() && found->character == unit;
        cost += known ? Cost{found->cost} : kStrangeCharacter;
    }
    return cost;
}

} // namespace

Utf8Check check_utf8(std::span<const std::uint8_t> text) {
    Utf8Check check;
    std::size_t place = 0;
    while (place < text.size()) {
        if (place + 8 <= text.size() && is_ascii_block(text.data() + place)) {
            place += 8;
            continue;
        }
        const Step step = next_of(text.subspan(place));
        if (step.code == kBad && step.bytes == 1 && !step.cut)
            ++check.broken;
        else if (step.bytes > 1 && !step.cut)
            ++check.characters;
        place += step.bytes;
    }
    return check;
}

std::vector<std::uint16_t> units_of_utf8(std::span<const std::uint8_t> text, std::size_t most) {
    std::vector<std::uint16_t> units;
    std::size_t place = 0;
    while (place < text.size() && units.size() < most) {
        const Step step = next_of(text.subspan(place));
        if (!step.cut) units.push_back(step.code > 0xFFFF ? kBad : static_cast<std::uint16_t>(step.code));
        place += step.bytes;
    }
    return units;
}

std::vector<std::uint16_t> units_of_utf16(std::span<const std::uint8_t> text, bool high_first, std::size_t most) {
    std::vector<std::uint16_t> units;
    for (std::size_t place = 0; place + 1 < text.size() && units.size() < most; place += 2) {
        const unsigned high = text[place + (high_first ? 0 : 1)];
        const unsigned low = text[place + (high_first ? 1 : 0)];
        units.push_back(static_cast<std::uint16_t>(high << 8 | low));
    }
    return units;
}

std::vector<std::uint16_t> units_of_utf32(std::span<const std::uint8_t> text, bool high_first, std::size_t most) {
    std::vector<std::uint16_t> units;
    for (std::size_t place = 0; place + 3 < text.size() && units.size() < most; place += 4) {
        std::uint32_t code = 0;
        for (std::size_t byte = 0; byte < 4; ++byte)
            code = code << 8 | text[place + (high_first ? byte : 3 - byte)];
        if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
        if (place != 0 || code != kMark) units.push_back(code > 0xFFFF ? kBad : static_cast<std::uint16_t>(code));
    }
    return units;
}

std::vector<std::uint16_t> units_of_utf7(std::span<const std::uint8_t> text, std::size_t most) {
    constexpr std::uint16_t first_of_many = 0x0600; // below lie alphabets, above nearly all else
    constexpr std::size_t no_chance = 4;
    std::vector<std::uint16_t> units;
    std::vector<std::uint16_t> shifted;
    for (std::size_t place = 0; place < text.size() && units.size() < most;) {
        const std::uint8_t byte = text[place++];
        const bool shifts = byte == '+' && (place == text.size() || text[place] != '-');
        if (!shifts) {
            units.push_back(byte);
            if (byte == '+') ++place;
            continue;
        }
        std::uint32_t bits = 0;
        unsigned count = 0;
        const std::size_t before = shifted.size();
        for (; place < text.size() && digit_of(text[place]) < 64; ++place) {
            bits = bits << 6 | digit_of(text[place]);
            count += 6;
            if (count < 16) continue;
            count -= 16;
            shifted.push_back(static_cast<std::uint16_t>(bits >> count));
            bits &= (1U << count) - 1;
        }
        if (place == text.size()) break; // the text is cut off here
        if (shifted.size() == before || count >= 6 || bits != 0) return {};
        units.insert(units.end(), shifted.begin() + static_cast<std::ptrdiff_t>(before), shifted.end());
        if (text[place] == '-') ++place;
    }
    const bool letters = std::ranges::all_of(shifted, [](std::uint16_t unit) { return unit < first_of_many; });
    if (shifted.empty() || !(letters || shifted.size() >= no_chance) || !is_likely_unicode(shifted)) return {};
    return units;
}

bool is_likely_unicode(std::span<const std::uint16_t> text) {
    constexpr std::size_t kLooked = 64;
    const auto start = text.first(std::min(text.size(), kLooked));
    const auto known = std::ranges::count_if(start, [](std::uint16_t unit) {
        return symbols_of(unit).first != kStrange ||
               std::ranges::any_of(kCharacterModels, [&](const CharacterModel &model) {
                   return std::ranges::binary_search(model.in_unicode, unit, {}, &CharacterCost::character);
               });
    });
    return static_cast<std::size_t>(known) * 2 > start.size();
}

std::vector<Candidate> score_unicode(std::span<const std::uint16_t> text, const char *page) {
    std::vector<std::uint16_t> letters;
    letters.reserve(text.size());
    Cost controls = 0;
    for (const std::uint16_t unit : text) {
        const bool control = unit < 0x20 && is_odd_control(static_cast<std::uint8_t>(unit));
        if (control) controls += kStrangeCharacter;
        const Symbols symbols = symbols_of(unit);
        if (unit >= 0x80 && symbols.first == 0) controls += kSign;
        letters.push_back(symbols.first);
        if (symbols.second != 0) letters.push_back(symbols.second);
    }
    std::vector<Candidate> candidates;
    for (const Model &model : kModels)
        candidates.push_back({page, model.code, cost_of_letters(letters, model) + controls, 0});
    for (const CharacterModel &model : kCharacterModels)
        candidates.push_back({page, model.code, cost_of_characters(text, model) + controls, 0});
    return candidates;
}

} // namespace kxdetect
