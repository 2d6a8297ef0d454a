#include "collate/language_number.h"

#include <array>
#include <kxstr/collate.h>

#include "core/kx_char.h"
#include "tables/collation.h"

namespace kxstr::collate {

namespace {

constexpr unsigned kFirstLetter = 0x40; // codes are made of bytes from here on, less than kLetters more
constexpr std::size_t kLetters = 32;

// By the two letters of a code; 0, where no code is, for what cannot be one.
constexpr std::size_t place_of(const char *code) noexcept {
    const std::size_t first = static_cast<unsigned char>(code[0]) ^ kFirstLetter;
    const std::size_t second = static_cast<unsigned char>(code[1]) ^ kFirstLetter;
    return first < kLetters && second < kLetters ? first * kLetters + second : 0;
}

struct Numbers {
    std::array<std::uint8_t, kLetters * kLetters> by_place{}; // 0 where no code is

    Numbers() noexcept {
        std::uint8_t number = 0;
        for (const tables::LanguageRules &language : tables::kCollationLanguages)
            by_place[place_of(language.code)] = number++;
    }
};

} // namespace

std::uint16_t language_number(const char *code) noexcept {
    static const Numbers numbers;
    if (code[0] == 0) return 0; // there is no second byte
    return numbers.by_place[place_of(code)];
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
