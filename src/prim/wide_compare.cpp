// Comparison of KX strings without regard to case, by character numbers.
#include <kxstr/prim.h>

#include "prim/strings.h"
#include "strops/case.h"

using namespace kxstr;

extern "C" {

int32_t ww_stricmp(const KxChar *a, const KxChar *b) {
    return prim::compare(a, b, prim::kUnlimited, strops::to_upper);
}

int32_t wwstrincmp(const KxChar *a, const KxChar *b, int32_t size) {
    return prim::compare(a, b, prim::limit_by_bytes(size), strops::to_upper);
}

} // extern "C"
