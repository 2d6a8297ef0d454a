#include "letters/chinese.h"

#include <kxstr/letters.h>

#include "tables/chinese.h"

namespace kxstr::letters {
namespace {

// Both character sets lie 255 characters to a KX set. Index 0xFF, which no character has, meets the first character of
// the next set; the last set of each table ends before its own 0xFF.
constexpr unsigned kPerSet = 255;

template <unsigned FirstSet, std::size_t Size>
constexpr KxChar convert(const std::array<KxChar, Size> &table, KxChar ch) noexcept {
    constexpr KxChar kLast = make_char(FirstSet + (Size - 1) / kPerSet, (Size - 1) % kPerSet);
    if (set_of(ch) < FirstSet || ch > kLast) return ch;
    const KxChar found = table[(set_of(ch) - FirstSet) * kPerSet + index_of(ch)];
    return found != 0 ? found : ch;
}

} // namespace

KxChar big5_to_gb(KxChar ch) noexcept {
    return convert<0xA5>(tables::kBig5ToGb, ch);
}

KxChar gb_to_big5(KxChar ch) noexcept {
    return convert<0x82>(tables::kGbToBig5, ch);
}

} // namespace kxstr::letters

extern "C" {

uint16_t big5togb(uint32_t ch) {
    return kxstr::letters::big5_to_gb(kxstr::low16(ch));
}

uint16_t gbtobig5(uint32_t ch) {
    return kxstr::letters::gb_to_big5(kxstr::low16(ch));
}
}
