#include "letters/width.h"

#include <kxstr/letters.h>

#include "letters/case.h"
#include "letters/letter_forms.h"

namespace kxstr::letters {
namespace {

// In the index of a set-11 character: followed by a sound mark. The form tables list katakana with marks so; texts
// never hold such codes.
constexpr KxChar kVoiced = 0x40;
constexpr KxChar kHalfVoiced = 0x80;

constexpr KxChar without_marks(KxChar ch) noexcept {
    return static_cast<KxChar>(ch & ~(kVoiced | kHalfVoiced));
}

} // namespace

KxChar to_double(KxChar ch, KxChar *next) noexcept {
    if (next != nullptr && set_of(ch) == kKatakanaSet && (*next == kVoicingMark || *next == kHalfVoicingMark)) {
        const auto combined = static_cast<KxChar>(ch | (*next == kVoicingMark ? kVoiced : kHalfVoiced));
        const KxChar wide = convert_letter_form(LetterFormMode::kDouble, combined);
        if (wide != combined) {
            *next = 0;
            return wide;
        }
        ch = without_marks(combined);
    }
    return convert_letter_form(LetterFormMode::kDouble, ch);
}

KxChar to_single(KxChar ch, KxChar *mark) noexcept {
    const KxChar narrow = convert_letter_form(LetterFormMode::kSingle, ch);
    if (mark == nullptr) return narrow;
    *mark = 0;
    if (set_of(narrow) != kKatakanaSet) return narrow;
    if ((narrow & kVoiced) != 0) {
        *mark = kVoicingMark;
    } else if ((narrow & kHalfVoiced) != 0) {
        *mark = kHalfVoicingMark;
    }
    return without_marks(narrow);
}

KxChar to_hiragana(KxChar ch) noexcept {
    if (set_of(ch) == kKatakanaSet) ch = convert_letter_form(LetterFormMode::kDouble, ch);
    return convert_letter_form(LetterFormMode::kFirstKana, ch);
}

// A half-width katakana is found in the katakana row of its couple and so stays what it is.
KxChar to_katakana(KxChar ch) noexcept {
    return convert_letter_form(LetterFormMode::kSecondKana, ch);
}

bool is_upper(KxChar ch) noexcept {
    if (set_of(ch) >= kFirstSetByCountry) {
        const KxChar narrow = convert_letter_form(LetterFormMode::kSingle, ch);
        if (narrow == ch) return false;
        ch = narrow;
    }
    return to_lower(ch) != ch;
}

} // namespace kxstr::letters

extern "C" {

uint16_t wtoall(uint16_t mode, uint32_t ch) {
    return kxstr::letters::convert_letter_form(static_cast<kxstr::letters::LetterFormMode>(mode), kxstr::low16(ch));
}

uint16_t wtodouble(uint32_t ch, KxChar *next) {
    return kxstr::letters::to_double(kxstr::low16(ch), next);
}

uint16_t wtosingle(uint32_t ch, KxChar *mark) {
    return kxstr::letters::to_single(kxstr::low16(ch), mark);
}

uint16_t wtohiragana(uint32_t ch) {
    return kxstr::letters::to_hiragana(kxstr::low16(ch));
}

uint16_t wtokatakana(uint32_t ch) {
    return kxstr::letters::to_katakana(kxstr::low16(ch));
}

uint32_t wisupper(uint32_t ch) {
    return kxstr::letters::is_upper(kxstr::low16(ch)) ? 1 : 0;
}
}
