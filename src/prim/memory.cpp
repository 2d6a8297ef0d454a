#include <algorithm>
#include <cstring>
#include <kxstr/prim.h>

#include "frame/kx_char.h"

using namespace kxstr;

extern "C" {

KxChar *KXwmemwchr(const KxChar *area, uint32_t ch, uint32_t count) {
    if (area == nullptr) return nullptr;
    const KxChar *end = area + low16(count);
    const KxChar *found = std::find(area, end, low16(ch));
    return found != end ? const_cast<KxChar *>(found) : nullptr;
}

int32_t KXwmemcmp(const void *a, const void *b, uint32_t count) {
    if (a == nullptr || b == nullptr) return 0;
    const int order = std::memcmp(a, b, count);
    return (order > 0) - (order < 0);
}

void KXwhmemset(void *area, uint32_t value, uint32_t count) {
    if (area != nullptr) std::memset(area, static_cast<std::uint8_t>(value), count);
}

void KXwmemcpy(void *destination, const void *source, uint32_t count) {
    if (destination != nullptr && source != nullptr) std::memmove(destination, source, count);
}

void KXwhmemmove(void *destination, const void *source, uint32_t count) {
    KXwmemcpy(destination, source, count);
}

} // extern "C"
