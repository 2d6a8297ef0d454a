#include "collation.h"

#include <algorithm>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "collate/values.h"
#include "collate/weights.h"

namespace kx {
namespace {

using kxstr::collate::kNoValue;
using kxstr::collate::LanguageKind;

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

constexpr const char *kTurkish = "TK";

// Turkish has another code in coltbl than it has as a number.
std::string code_in_coltbl(const std::string &code) {
    return code == kTurkish ? "TR" : code;
}

const kxstr::collate::LanguageRules &rules_of(std::uint32_t language) {
    return kxstr::collate::rules_of(kxstr::low16(language));
}

// How far behind the plain letter of its value coltbl has each character, for a code of coltbl's. Letters that the
// comparison itself places for the language have no place here.
Refinement places_in_coltbl(const std::string &code, std::uint32_t language) {
    const auto &weights = kxstr::collate::weights_of(kxstr::low16(language));
    const auto &plain_weights = kxstr::collate::weights_of(0);
    std::array<KxChar, 0x100> plain_letters{}; // by value
    for (KxChar letter = 'a'; letter <= 'z'; ++letter)
        plain_letters[weights[letter].primary()] = letter;
    setsseq(code.c_str());
    Refinement refinement;
    for (KxChar ch = 0x100; ch < Refinement::kEnd; ++ch) {
        const std::uint8_t primary = weights[ch].primary();
        const KxChar letter = plain_letters[primary];
        if (letter == 0 || primary != plain_weights[ch].primary()) continue;
        const std::uint8_t value = xch2col(wtolower(ch));
        const std::uint8_t start = xch2col(letter);
        if (value == kNoValue || value <= start) continue;
        refinement.places[ch] = static_cast<std::uint8_t>(value - start);
        refinement.is_divided[primary] = true;
    }
    return refinement;
}

// Only languages for which coltbl has letters of their own are refined: the others keep what all have alike (ð behind
// d) for variants.
std::shared_ptr<const Refinement> refinement_of(const std::string &code, std::uint32_t language) {
    auto own = std::make_shared<Refinement>(places_in_coltbl(code_in_coltbl(code), language));
    const Refinement common = places_in_coltbl("EN", language);
    return own->places != common.places ? own : nullptr;
}

bool has_column_of_coltbl(const std::string &code) {
    return std::ranges::any_of(kxstr::tables::kColtblLanguages,
                               [&code](const auto &row) { return row.code[0] == code[0] && row.code[1] == code[1]; });
}

// Text on its way to a sink.
class Hexadecimal {
  public:
    explicit Hexadecimal(const Collation::Sink &sink) : sink_(sink) {}

    void add(char letter) {
        if (size_ == text_.size()) flush();
        text_[size_++] = letter;
    }
    void add(unsigned value, unsigned digits) {
        if (text_.size() - size_ < digits) flush();
        for (unsigned digit = digits; digit-- > 0; value >>= 4)
            text_[size_ + digit] = "0123456789ABCDEF"[value & 0xF];
        size_ += digits;
    }
    // Behind all values.
    void add_lacking(std::uint32_t value) {
        add('G');
        add(value, 8);
    }
    void flush() {
        sink_({text_.data(), size_});
        size_ = 0;
    }

  private:
    const Collation::Sink &sink_;
    std::array<char, 4096> text_;
    std::size_t size_ = 0;
};

// Characters without a value lie behind all others, by their codes.
void write_coltbl_level(const LineText &text, Hexadecimal &out) {
    const std::uint32_t *lacking = text.lacking;
    for (const KxChar ch : text.chars) {
        if (ch == kLacking) {
            out.add_lacking(*lacking++);
            continue;
        }
        if (kxstr::is_code(ch)) continue;
        const KxChar lower = wtolower(ch);
        const unsigned value = W6wstrCollateCh(lower);
        out.add(value, 2);
        if (value == kNoValue) out.add(lower, 4);
    }
}

} // namespace

void Collation::begin(const std::string &code) {
    language_ = static_cast<std::uint32_t>(KxLanguage(code.c_str()));
    const bool has_letters = rules_of(language_).letter_column != 0;
    by_coltbl_ = !has_letters && has_column_of_coltbl(code);
    if (has_letters) refinement_ = refinement_of(code, language_);
    VaskSetLanguage(code.c_str());
    lVaskSetupLang(); // now: threads may be the first to ask
    const EastAsianCountry *country = country_of(language_);
    if (country != nullptr) set_country(country->id);
}

std::optional<CodePage> Collation::page() const {
    const EastAsianCountry *country = country_of(language_);
    if (country == nullptr) return std::nullopt;
    return page_of_windows_number(country->code_page);
}

bool Collation::is_turkish() const {
    return language_ == static_cast<std::uint32_t>(KxLanguage(kTurkish));
}

bool Collation::is_east_asian() const {
    return rules_of(language_).kind == LanguageKind::kEastAsian;
}

bool Collation::can_compare(const LineText &text) const {
    return refinement_ == nullptr && std::ranges::find(text.chars, kLacking) == text.chars.end();
}

int Collation::compare(const LineText &a, const LineText &b) const {
    if (by_coltbl()) {
        if (const int result = W6w_stricmp(a.chars.data(), b.chars.data()); result != 0) return result;
    }
    return KxWS6Cmpcoll(a.chars.data(), b.chars.data(), language_, case_counts ? 1 : 0, kana_counts ? 1 : 0);
}

void Collation::write_key(const LineText &text, const Sink &sink) const {
    const auto &rules = rules_of(language_);
    const bool east_asian = is_east_asian();
    Hexadecimal out(sink);
    if (by_coltbl()) {
        write_coltbl_level(text, out);
        out.add('.');
    }
    for (unsigned level = 0; level < 3; ++level) {
        if (level > 0) out.add('.');
        if (level == 2 && !case_counts && !kana_counts) break;
        const KxChar *position = text.chars.data();
        const std::uint32_t *lacking = text.lacking;
        if (kxstr::is_code(*position) && *position != kLacking) ++position; // as the comparison does
        unsigned previous = 0;
        while (*position != 0) {
            if (*position == kLacking) {
                ++position;
                previous = 0;
                if (level == 0) out.add_lacking(*lacking++);
                if (level == 1) out.add(0, 4);
                if (level == 2) out.add(0, 1);
                continue;
            }
            constexpr std::uint8_t untouched = 0;
            const KxChar ch = *position;
            std::uint8_t primary[2] = {untouched, untouched};
            std::uint16_t secondary = 0;
            std::uint8_t tertiary = 0;
            const bool counts =
                getColValues(&position, primary, &secondary, &tertiary, case_counts ? 1 : 0, previous, language_) != 0;
            previous = primary[0] * 0x100u + primary[1];
            // A contraction or an expansion has two values of each level; no value of a letter is 0.
            const bool two = !east_asian && counts && primary[1] != untouched;
            if (level == 0) {
                if (counts) out.add(two || east_asian ? previous : primary[0], two || east_asian ? 4 : 2);
                if (refinement_ != nullptr && !two && refinement_->is_divided[primary[0]])
                    out.add(refinement_->place_of(ch), 2);
            } else if (level == 1) {
                out.add(secondary, two ? 8 : 4);
            } else {
                if (rules.upper_first) tertiary ^= 1;
                if (!case_counts) tertiary = east_asian ? tertiary & 1 : 0;
                out.add(two ? (tertiary & 2u) << 3 | (tertiary & 1u) : tertiary, two ? 2 : 1);
            }
        }
    }
    out.flush();
}

} // namespace kx
