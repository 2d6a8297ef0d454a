// The exported functions that read and set up coltbl.
#include <cstddef>
#include <kxstr/collate.h>

#include "collate/coltbl_compare.h"
#include "collate/language_setup.h"

// Hosts walk the table by bytes: an address directly behind each set number, 5 bytes in a 32-bit process.
static_assert(offsetof(KxCollationEntry, block) == 1 && sizeof(KxCollationEntry) == 1 + sizeof(void *));

using kxstr::low16;
using namespace kxstr::collate;

extern "C" {

uint32_t fndcolv(uint32_t ch, uint8_t **out) {
    uint8_t *block = find_entry(coltbl, kxstr::set_of(low16(ch)))->block;
    uint8_t *value = find_in_block(block, kxstr::index_of(low16(ch)));
    *out = value != nullptr ? value : block;
    return value != nullptr ? 0 : 1;
}

uint8_t xch2col(uint32_t ch) {
    return coltbl_value(low16(ch));
}

int32_t xchcmp(uint32_t a, uint32_t b, uint8_t case_flag) {
    return compare_characters(low16(a), low16(b), case_flag != 0 ? Case::kCounts : Case::kIgnored);
}

void setsseq(const char *code) {
    if (code != nullptr) set_up_language(code);
}
}
