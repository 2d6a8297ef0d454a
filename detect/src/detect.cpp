#include "kxdetect/detect.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "pairs.h"
#include "score.h"
#include "unicode.h"

namespace kxdetect {
namespace {

constexpr std::size_t kUnitsRead = std::size_t{1} << 15; // of a Unicode text, for its language
constexpr Cost kUnitAtMost = Cost{9} * 16;               // of a text in UTF-16, on the average
constexpr Cost kUnmarkedUtf16 = Cost{4} * 16;
// Letters are no independent draws, so the odds of two readings are less than their costs say.
constexpr double kCostOfE = 24.0;

constexpr std::uint8_t kEscape = 0x1B;

std::vector<Candidate> binary() {
    return {{"binary", "", 0, 0}};
}

bool begins_with(std::span<const std::uint8_t> text, std::string_view mark) {
    return text.size() >= mark.size() && std::memcmp(text.data(), mark.data(), mark.size()) == 0;
}

// One reading of 16-bit units, when it is no nonsense.
std::optional<std::vector<Candidate>> read_units(const std::vector<std::uint16_t> &units, const char *page) {
    if (units.empty() || !is_likely_unicode(units)) return std::nullopt;
    std::vector<Candidate> candidates = score_unicode(units, page);
    const Cost best = std::ranges::min(candidates, {}, &Candidate::cost).cost;
    if (best > kUnitAtMost * static_cast<Cost>(units.size())) return std::nullopt;
    return candidates;
}

std::optional<std::vector<Candidate>> read_utf16(std::span<const std::uint8_t> text, bool high_first) {
    return read_units(units_of_utf16(text, high_first, kUnitsRead), high_first ? "utf-16be" : "utf-16le");
}

std::vector<Candidate> read_utf8(std::span<const std::uint8_t> text, const Utf8Check &check) {
    std::vector<Candidate> candidates = score_unicode(units_of_utf8(text, kUnitsRead), "utf-8");
    for (Candidate &candidate : candidates)
        candidate.broken = static_cast<std::uint32_t>(check.broken);
    return candidates;
}

std::vector<Candidate> candidates_of(std::span<const std::uint8_t> text) {
    if (begins_with(text, "\xEF\xBB\xBF")) return read_utf8(text, check_utf8(text));
    for (const bool order : {false, true}) {
        if (auto found = read_units(units_of_utf32(text, order, kUnitsRead), order ? "utf-32be" : "utf-32le"))
            return *found;
    }
    const bool high_first = begins_with(text, "\xFE\xFF");
    if (high_first || begins_with(text, "\xFF\xFE")) {
        if (auto found = read_utf16(text.subspan(2), high_first)) return *found;
        if (text.size() < 4) return {{high_first ? "utf-16be" : "utf-16le", "", 0, 0}};
    }

    std::vector<Candidate> candidates;
    for (const bool order : {false, true}) {
        auto found = read_utf16(text, order);
        if (!found) continue;
        for (Candidate &candidate : *found)
            candidate.cost += kUnmarkedUtf16;
        candidates.insert(candidates.end(), found->begin(), found->end());
    }
    const bool has_zero = std::ranges::find(text, 0) != text.end();
    if (has_zero || static_cast<std::size_t>(std::ranges::count_if(text, is_odd_control)) * 40 > text.size())
        return candidates.empty() ? binary() : candidates;

    const Utf8Check check = check_utf8(text);
    if (check.characters > 0 && check.broken * 4 <= check.characters) return read_utf8(text, check);

    const TextPairs pairs = count_pairs(text);
    if (pairs.upper_bytes == 0) {
        if (pairs.bytes[kEscape] != 0) candidates = score_shifting(text);
        if (candidates.empty() && pairs.bytes['+'] != 0) {
            const std::vector<std::uint16_t> units = units_of_utf7(text, kUnitsRead);
            if (!units.empty()) return score_unicode(units, "utf-7");
        }
        return candidates.empty() ? score_ascii(pairs) : candidates;
    }
    const AsciiWords ascii(pairs);
    for (auto &&found : {score_single_byte(pairs, ascii), score_double_byte(text, pairs, ascii)})
        candidates.insert(candidates.end(), found.begin(), found.end());
    return candidates.empty() ? binary() : candidates;
}

// The best language of each page, the best page first.
std::vector<Candidate> ranked(std::vector<Candidate> candidates) {
    std::ranges::stable_sort(candidates, {}, &Candidate::cost);
    std::vector<Candidate> best;
    for (const Candidate &candidate : candidates) {
        const bool known = std::ranges::any_of(
            best, [&](const Candidate &one) { return one.page == candidate.page || (one.same & candidate.same) != 0; });
        if (!known) best.push_back(candidate);
    }
    return best;
}

void write(std::span<const Candidate> answers, std::span<KxDetectGuess> guesses) {
    // The text may be in a page that is not known, too.
    double sum = answers[0].misfit == 0 ? 0 : std::exp(static_cast<double>(answers[0].misfit) / kCostOfE);
    const auto weight = [&](const Candidate &one) {
        return std::exp(static_cast<double>(answers[0].cost - one.cost) / kCostOfE);
    };
    for (const Candidate &answer : answers)
        sum += weight(answer);
    for (std::size_t index = 0; index < guesses.size(); ++index) {
        const Candidate &answer = answers[index];
        guesses[index] = {answer.page, answer.language,
                          static_cast<std::uint32_t>(std::lround(1000 * weight(answer) / sum)), answer.broken,
                          answer.same};
    }
}

} // namespace
} // namespace kxdetect

extern "C" std::size_t KxDetect(const std::uint8_t *text, std::size_t size, KxDetectGuess *guesses, std::size_t room) {
    if (room == 0) return 0;
    try {
        const auto answers = kxdetect::ranked(kxdetect::candidates_of({text, std::min(size, KXDETECT_LARGEST)}));
        const std::size_t count = std::min(room, answers.size());
        kxdetect::write(answers, {guesses, count});
        return count;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

extern "C" const char *KxDetectPageName(unsigned number) {
    return number < kxdetect::kPages.size() ? kxdetect::kPages[number].name : nullptr;
}

extern "C" const char *KxDetectLanguageName(const char *language) {
    const std::string_view wanted(language);
    for (const kxdetect::Model &model : kxdetect::kModels) {
        if (wanted == model.code) return model.name;
    }
    for (const kxdetect::CharacterModel &model : kxdetect::kCharacterModels) {
        if (wanted == model.code) return model.name;
    }
    return nullptr;
}
