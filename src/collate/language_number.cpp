#include "collate/language_number.h"

#include <kxstr/collate.h>

#include "frame/kx_char.h"
#include "tables/collation.h"

namespace kxstr::collate {

std::uint16_t language_number(const char *code) noexcept {
    std::uint16_t number = 0;
    for (const tables::LanguageRules &language : tables::kCollationLanguages) {
        // An empty string has no second byte, and no first one that is known.
        if (language.code[0] == code[0] && language.code[1] == code[1]) return number;
        ++number;
    }
    return 0;
}

} // namespace kxstr::collate

extern "C" {

int32_t KxLanguage(const char *code) {
    return kxstr::collate::language_number(code);
}

void KxNum2Lang(uint32_t number, char *out) {
    const std::size_t language = kxstr::low16(number);
    const char *code =
        kxstr::tables::kCollationLanguages[language < std::size(kxstr::tables::kCollationLanguages) ? language : 0]
            .code;
    out[0] = code[0];
    out[1] = code[1];
    out[2] = 0;
}
}
