#include "letters/chinese.h"

#include <kxstr/letters.h>

#include "tables/chinese.h"

namespace kxstr::letters {
namespace {

// Index 0xFF, which no character has, meets the first character of the next set; the last set of each table ends before
// its own 0xFF.
template <unsigned FirstSet, std::size_t Size>
constexpr KxChar convert(const std::array<KxChar, Size> &table, KxChar ch) noexcept {
    constexpr KxChar kLast = make_char(FirstSet + (Size - 1) / kPerChineseSet, (Size - 1) % kPerChineseSet);
    if (set_of(ch) < FirstSet || ch > kLast) return ch;
    const KxChar found = table[(set_of(ch) - FirstSet) * kPerChineseSet + index_of(ch)];
    return found != 0 ? found : ch;
}

} // namespace

KxChar big5_to_gb(KxChar ch) noexcept {
    return convert<kFirstTraditionalSet>(tables::kBig5ToGb, ch);
}

KxChar gb_to_big5(KxChar ch) noexcept {
    return convert<kFirstSimplifiedSet>(tables::kGbToBig5, ch);
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
