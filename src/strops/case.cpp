#include "strops/case.h"

#include "strops/form_tables.h"

namespace kxstr::strops {

KxChar to_lower_by_form(KxChar ch) noexcept {
    return convert_form(FormMode::kLower, ch);
}

KxChar to_upper_by_form(KxChar ch) noexcept {
    return convert_form(FormMode::kUpper, ch);
}

} // namespace kxstr::strops

extern "C" {

const uint8_t rngchr[30] = {
    0x1A, 0xF1,                               // set 1, Latin
    0,    0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, // 2 to 7
    0x00, 0x45,                               // 8, Greek
    0,    0,                                  // 9
    0x00, 0xC7,                               // 10, Cyrillic
    0,    0,    0, 0, 0, 0, 0, 0, 0, 0,       // 11 to 15
};

uint16_t wtolower(uint32_t ch) {
    return kxstr::strops::to_lower(kxstr::low16(ch));
}

uint16_t wtoupper(uint32_t ch) {
    return kxstr::strops::to_upper(kxstr::low16(ch));
}

uint16_t W6wstrLowerCh(uint32_t ch) {
    return wtolower(ch);
}

uint16_t W6wstrUpperCh(uint32_t ch) {
    return wtoupper(ch);
}
}
