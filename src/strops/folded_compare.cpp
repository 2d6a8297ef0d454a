// Comparison without regard to case by the numbers of units: of KX strings, and of byte strings, whose bytes count as
// characters of set 0.
#include <kxstr/strops.h>

#include "letters/case.h"
#include "prim/strings.h"
#include "simd/nearest.h"

using namespace kxstr;
using letters::to_upper;

namespace {

// Difference of the first units that differ as capitals, or 0 when the terminators or `limit` units are reached.
int compare_folded(const KxChar *a, const KxChar *b, std::size_t limit) noexcept {
    for (std::size_t i = 0; i < limit; ++i) {
        // Where a unit differs its neighbours do, as a rule: equal units are leapt over only where there is one.
        if (a[i] == b[i]) {
            i += simd::kernels().mismatch16(a + i, b + i, limit - i);
            if (i == limit) break;
        }
        const int difference = to_upper(a[i]) - to_upper(b[i]);
        if (difference != 0 || a[i] == 0) return difference;
    }
    return 0;
}

constexpr int to_capital(std::uint8_t byte) noexcept {
    return byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte;
}

} // namespace

extern "C" {

[[gnu::aligned(64)]] int32_t w_stricmp(const char *a, const char *b) {
    if (const std::uint32_t hits = simd::nearest_caseless_difference(bytes_of(a), bytes_of(b)); hits != 0) [[likely]] {
        const std::uint8_t x = bytes_of(a)[simd::place_of(hits)], y = bytes_of(b)[simd::place_of(hits)];
        if (x == y) [[likely]]
            return 0; // the ends of both
        if (const int difference = to_capital(x) - to_capital(y); difference != 0) return difference;
    }
    return simd::kernels().compare8_caseless(bytes_of(a), bytes_of(b));
}

int32_t ww_stricmp(const KxChar *a, const KxChar *b) {
    return compare_folded(a, b, prim::kUnlimited);
}

int32_t wwstrincmp(const KxChar *a, const KxChar *b, int32_t size) {
    return compare_folded(a, b, prim::limit_by_bytes(size));
}

} // extern "C"
