#include "collate/language_setup.h"

#include <cstring>
#include <kxstr/collate.h>
#include <kxstr/strops.h>

#include "collate/collation_sequence.h"
#include "core/dbcs_copy.h"
#include "core/text.h"
#include "letters/case.h"
#include "tables/collation.h"

namespace kxstr::collate {
namespace {

constexpr std::size_t kCodeLength = 2;

// Remembers two bytes only, so a longer language is set up again every time. A lead byte at the second place is not
// remembered: the byte from the language before stays there.
void remember(const char *language) noexcept {
    copy_whole_characters(last_language.data(), bytes_of(language), kCodeLength);
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
    if (std::strcmp(language, reinterpret_cast<const char *>(last_language.data())) == 0) return;
    remember(language);
    const std::size_t column = column_of(language);
    for (const tables::ColtblLetter &letter : tables::kColtblLetters) {
        std::uint8_t *value = find_in_coltbl(letter.ch);
        if (value == nullptr) return; // a host has rearranged the table
        *value = letter.values[column];
    }
}

} // namespace kxstr::collate

extern "C" void lVaskSetupLang(void) {
    kxstr::collate::set_up_current_language();
}
