#include "collation.h"

#include <algorithm>
#include <array>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "collate/values.h"

namespace kx {
namespace {

using kxstr::collate::LanguageKind;

constexpr const char *kPlainName = "EN"; // what the library itself starts with

struct EastAsianCountry {
    const char *code;
    std::uint8_t id; // as WtpiGetCountryID gives it
    std::uint32_t code_page;
};
constexpr EastAsianCountry kCountries[] = {{"JP", 1, 932}, {"KR", 2, 949}, {"CT", 3, 950}, {"CS", 4, 936}};

const EastAsianCountry *country_of(std::uint32_t language) {
    const auto *found = std::ranges::find_if(kCountries, [language](const EastAsianCountry &country) {
        return static_cast<std::uint32_t>(KxLanguage(country.code)) == language;
    });
    return found != std::end(kCountries) ? found : nullptr;
}

std::string code_of(std::uint32_t language) {
    std::array<char, 3> code{};
    KxNum2Lang(language, code.data());
    return code.data();
}

void append_hex(std::string &text, unsigned value, unsigned digits) {
    while (digits-- > 0)
        text += "0123456789ABCDEF"[(value >> (4 * digits)) & 0xF];
}

// Characters without a value lie behind all others, by their codes.
std::string coltbl_key(const std::vector<KxChar> &text) {
    std::string key;
    for (const KxChar *position = text.data(); *position != 0; ++position) {
        if (kxstr::is_code(*position)) continue;
        const KxChar lower = wtolower(*position);
        const unsigned value = W6wstrCollateCh(lower);
        append_hex(key, value, 2);
        if (value == kxstr::collate::kNoValue) append_hex(key, lower, 4);
    }
    return key;
}

} // namespace

std::optional<std::uint32_t> Collation::find_language(std::string code) {
    if (code.size() != 2) return std::nullopt;
    for (char &letter : code) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    const auto language = static_cast<std::uint32_t>(KxLanguage(code.c_str()));
    if (code != kPlainName && code != code_of(language)) return std::nullopt;
    return language;
}

std::string Collation::list_of_languages() {
    std::string text = kPlainName;
    for (std::uint32_t language = 0; language < std::size(kxstr::tables::kCollationLanguages); ++language)
        text += ' ' + code_of(language);
    return text;
}

std::optional<CodePage> Collation::page() const {
    const EastAsianCountry *country = country_of(language);
    if (country == nullptr) return std::nullopt;
    return page_of_windows_number(country->code_page);
}

void Collation::begin() const {
    VaskSetLanguage(code_of(language).c_str());
    const EastAsianCountry *country = country_of(language);
    if (country != nullptr) set_country(country->id);
}

bool Collation::by_coltbl() const {
    if (kxstr::collate::rules_of(kxstr::low16(language)).letter_column != 0) return false;
    const std::string code = code_of(language);
    return std::ranges::any_of(kxstr::tables::kColtblLanguages,
                               [&code](const auto &row) { return row.code[0] == code[0] && row.code[1] == code[1]; });
}

bool Collation::is_east_asian() const {
    return kxstr::collate::rules_of(kxstr::low16(language)).kind == LanguageKind::kEastAsian;
}

int Collation::compare(const std::vector<KxChar> &a, const std::vector<KxChar> &b) const {
    if (by_coltbl()) {
        if (const int result = W6w_stricmp(a.data(), b.data()); result != 0) return result;
    }
    return KxWS6Cmpcoll(a.data(), b.data(), language, case_counts ? 1 : 0, kana_counts ? 1 : 0);
}

std::string Collation::key_of(const std::vector<KxChar> &text) const {
    const auto &rules = kxstr::collate::rules_of(kxstr::low16(language));
    const bool east_asian = is_east_asian();
    std::string key;
    if (by_coltbl()) key = coltbl_key(text) + '.';
    std::string levels[3];
    const KxChar *position = text.data();
    if (kxstr::is_code(*position)) ++position; // as the comparison does
    unsigned previous = 0;
    while (*position != 0) {
        constexpr std::uint8_t untouched = 0;
        std::uint8_t primary[2] = {untouched, untouched};
        std::uint16_t secondary = 0;
        std::uint8_t tertiary = 0;
        const bool counts =
            getColValues(&position, primary, &secondary, &tertiary, case_counts ? 1 : 0, previous, language) != 0;
        previous = primary[0] * 0x100u + primary[1];
        // A contraction or an expansion has two values of each level; no value of a letter is 0.
        const bool two = !east_asian && counts && primary[1] != untouched;
        if (counts) append_hex(levels[0], two || east_asian ? previous : primary[0], two || east_asian ? 4 : 2);
        append_hex(levels[1], secondary, two ? 8 : 4);
        if (rules.upper_first) tertiary ^= 1;
        if (!case_counts) tertiary = kana_counts && east_asian ? tertiary & 1 : 0;
        append_hex(levels[2], two ? (tertiary & 2u) << 3 | (tertiary & 1u) : tertiary, two ? 2 : 1);
    }
    return key + levels[0] + '.' + levels[1] + '.' + (case_counts || kana_counts ? levels[2] : "");
}

} // namespace kx
