#include <kxstr/prim.h>

#include "core/kx_char.h"
#include "prim/find_string.h"
#include "prim/strings.h"

using namespace kxstr;

extern "C" {

uint32_t wwstrlen(const KxChar *string) {
    return string != nullptr ? simd::kernels().size16(string) : 0;
}

KxChar *wwstrcpy(KxChar *destination, const KxChar *source) {
    if (destination == nullptr || source == nullptr) return nullptr;
    return simd::kernels().copy16(destination, source);
}

KxChar *wwstrcat(KxChar *destination, const KxChar *source) {
    if (destination == nullptr || source == nullptr) return nullptr;
    simd::kernels().copy16(destination + length_of(destination), source);
    return destination;
}

KxChar *wwstrncat(KxChar *destination, const KxChar *source, uint32_t count) {
    prim::append(destination, source, count);
    return destination;
}

KxChar *wwstrncpy(KxChar *destination, const KxChar *source, uint32_t count) {
    const std::size_t length = prim::length_within(source, count);
    std::fill_n(std::copy_n(source, length, destination), count - length, KxChar{0});
    return destination;
}

int32_t wwstrcmp(const KxChar *a, const KxChar *b) {
    return simd::kernels().compare16(a, b);
}

int32_t wwstrncmp(const KxChar *a, const KxChar *b, int32_t count) {
    return prim::compare(a, b, prim::limit_by_bytes(count));
}

KxChar *wwstrchr(const KxChar *string, uint32_t ch) {
    return const_cast<KxChar *>(simd::kernels().find16(string, low16(ch)));
}

KxChar *wwstrrchr(const KxChar *string, uint32_t ch) {
    return string != nullptr ? const_cast<KxChar *>(simd::kernels().find_last16(string, low16(ch))) : nullptr;
}

KxChar *wwstrstr(const KxChar *string, const KxChar *to_find) {
    if (string == nullptr || to_find == nullptr || *to_find == 0) return nullptr;
    return const_cast<KxChar *>(prim::find_string(string, to_find));
}

} // extern "C"
