#include <cstring>
#include <kxstr/prim.h>

#include "frame/kx_char.h"
#include "prim/strings.h"

using namespace kxstr;

namespace {

bool begins_with(const KxChar *text, const KxChar *prefix) noexcept {
    while (*prefix != 0 && *text == *prefix) {
        ++text;
        ++prefix;
    }
    return *prefix == 0;
}

} // namespace

extern "C" {

uint32_t wwstrlen(const KxChar *string) {
    return string != nullptr ? static_cast<std::uint32_t>(length_of(string) * sizeof(KxChar)) : 0;
}

KxChar *wwstrcpy(KxChar *destination, const KxChar *source) {
    if (destination == nullptr || source == nullptr) return nullptr;
    std::memmove(destination, source, (length_of(source) + 1) * sizeof(KxChar));
    return destination;
}

KxChar *wwstrcat(KxChar *destination, const KxChar *source) {
    if (destination == nullptr || source == nullptr) return nullptr;
    prim::append(destination, source, prim::kUnlimited);
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
    return prim::compare(a, b);
}

int32_t wwstrncmp(const KxChar *a, const KxChar *b, int32_t count) {
    return prim::compare(a, b, prim::limit_by_bytes(count));
}

KxChar *wwstrchr(const KxChar *string, uint32_t ch) {
    return const_cast<KxChar *>(prim::find(string, low16(ch)));
}

KxChar *wwstrrchr(const KxChar *string, uint32_t ch) {
    return string != nullptr ? const_cast<KxChar *>(prim::find_last(string, low16(ch))) : nullptr;
}

KxChar *wwstrstr(const KxChar *string, const KxChar *to_find) {
    if (string == nullptr || to_find == nullptr || *to_find == 0) return nullptr;
    for (; *string != 0; ++string) {
        if (begins_with(string, to_find)) return const_cast<KxChar *>(string);
    }
    return nullptr;
}

} // extern "C"
