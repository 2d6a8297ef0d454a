#include "collate/language_setup.h"

#include <atomic>
#include <cstring>
#include <kxstr/collate.h>
#include <kxstr/strops.h>

#include "collate/collation_sequence.h"
#include "core/dbcs_copy.h"
#include "core/text.h"
#include "letters/case.h"
#include "platform/system.h"
#include "tables/collation.h"

namespace kxstr::collate {
namespace {

constexpr std::size_t kCodeLength = 2;

// What is remembered of a language: two bytes only, so a longer one is set up again every time. A lead byte at the
// second place is not remembered: the byte from the language before stays there.
LanguageStart start_of(const char *language, LanguageStart before) noexcept {
    copy_whole_characters(before.data(), bytes_of(language), kCodeLength);
    return before;
}

// Calls `take(value, wanted)` for the letters of a column until it returns false.
template <class Take> void for_each_letter(std::size_t column, Take take) noexcept {
    for (const tables::ColtblLetter &letter : tables::kColtblLetters) {
        std::uint8_t *value = find_in_coltbl(letter.ch);
        if (value == nullptr) return; // a host has rearranged the table
        if (!take(std::atomic_ref(*value), letter.values[column])) return;
    }
}

// Sees whole what another thread has put in place.
bool has_values(std::size_t column) noexcept {
    bool same = true;
    for_each_letter(column, [&same](std::atomic_ref<std::uint8_t> value, std::uint8_t wanted) {
        same = value.load(std::memory_order_acquire) == wanted;
        return same;
    });
    return same;
}

std::size_t column_of(const char *language) noexcept {
    if (language[0] == 0) return 0;
    const KxChar first = letters::to_upper(static_cast<std::uint8_t>(language[0]));
    const KxChar second = letters::to_upper(static_cast<std::uint8_t>(language[1]));
    for (const tables::ColtblLanguage &row : tables::kColtblLanguages) {
        if (row.code[0] == first && row.code[1] == second) return row.column;
    }
    return 0;
}

} // namespace

void set_up_language(const char *language) noexcept {
    const LanguageStart last = language_set_up();
    if (std::strcmp(language, reinterpret_cast<const char *>(last.data())) == 0) return;
    const LanguageStart start = start_of(language, last);
    const std::size_t column = column_of(language);
    if (start == last && has_values(column)) return; // as every comparison in a longer language but the first
    const platform::FirstUse guard;
    for_each_letter(column, [](std::atomic_ref<std::uint8_t> value, std::uint8_t wanted) {
        if (value.load(std::memory_order_relaxed) != wanted) value.store(wanted, std::memory_order_release);
        return true;
    });
    keep_language_set_up(start);
}

} // namespace kxstr::collate

extern "C" void lVaskSetupLang(void) {
    kxstr::collate::set_up_current_language();
}
