#include "collate/language_number.h"

#include <array>
#include <kxstr/collate.h>

#include "core/kx_char.h"
#include "tables/collation.h"

namespace kxstr::collate {
namespace {

struct Numbers {
    std::array<std::uint8_t, kCodePlaces> by_place{}; // 0 where no code is

    Numbers() noexcept {
        std::uint8_t number = 0;
        for (const tables::LanguageRules &language : tables::kCollationLanguages)
            by_place[place_of_code(language.code)] = number++;
    }
};

} // namespace

std::uint16_t language_number(const char *code) noexcept {
    static const Numbers numbers;
    return numbers.by_place[place_of_code(code)];
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
