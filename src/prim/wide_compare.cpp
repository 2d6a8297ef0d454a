// Comparison of KX strings without regard to case, by character numbers.
#include <kxstr/prim.h>

#include "strops/case.h"

namespace kxstr::prim {
namespace {

std::int32_t difference_without_case(KxChar a, KxChar b) noexcept {
    return std::int32_t{strops::to_upper(a)} - std::int32_t{strops::to_upper(b)};
}

} // namespace
} // namespace kxstr::prim

extern "C" {

int32_t ww_stricmp(const KxChar *a, const KxChar *b) {
    for (;; ++a, ++b) {
        const int32_t difference = kxstr::prim::difference_without_case(*a, *b);
        if (difference != 0 || *a == 0) return difference;
    }
}

int32_t wwstrincmp(const KxChar *a, const KxChar *b, int32_t size) {
    if (size <= 0) return 0;
    // An odd size never becomes 0, and so does not end the comparison.
    for (auto left = static_cast<uint32_t>(size);; ++a, ++b) {
        const int32_t difference = kxstr::prim::difference_without_case(*a, *b);
        if (difference != 0 || *a == 0) return difference;
        left -= 2;
        if (left == 0) return 0;
    }
}
}
