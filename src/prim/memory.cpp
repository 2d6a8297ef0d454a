#include <bit>
#include <cstdint>
#include <cstring>
#include <kxstr/prim.h>

#include "core/kx_char.h"
#include "simd/kernels.h"

using namespace kxstr;

namespace {

using Word = std::uint64_t;

// An area of one to two words is taken here, as its first and its last word: the way to the C library costs more.
constexpr bool is_short(std::uint32_t count) noexcept {
    return count - sizeof(Word) <= sizeof(Word);
}

Word word_at(const void *area, std::size_t offset) noexcept {
    Word word;
    std::memcpy(&word, static_cast<const char *>(area) + offset, sizeof word);
    return word;
}

// The greater the later in the order of bytes.
constexpr Word in_order(Word word) noexcept {
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

} // namespace

extern "C" {

KxChar *KXwmemwchr(const KxChar *area, uint32_t ch, uint32_t count) {
    if (area == nullptr) return nullptr;
    const std::size_t found = simd::kernels().find_within16(area, low16(count), low16(ch));
    return found != low16(count) ? const_cast<KxChar *>(area) + found : nullptr;
}

int32_t KXwmemcmp(const void *a, const void *b, uint32_t count) {
    if (a == nullptr || b == nullptr) return 0;
    if (is_short(count)) {
        const std::size_t last = count - sizeof(Word);
        const Word first_a = word_at(a, 0), first_b = word_at(b, 0), last_a = word_at(a, last),
                   last_b = word_at(b, last);
        if (((first_a ^ first_b) | (last_a ^ last_b)) == 0) return 0;
        const bool at_first = first_a != first_b;
        return in_order(at_first ? first_a : last_a) > in_order(at_first ? first_b : last_b) ? 1 : -1;
    }
    const int order = std::memcmp(a, b, count);
    return (order > 0) - (order < 0);
}

void KXwhmemset(void *area, uint32_t value, uint32_t count) {
    if (area != nullptr) std::memset(area, static_cast<std::uint8_t>(value), count);
}

void KXwmemcpy(void *destination, const void *source, uint32_t count) {
    if (destination == nullptr || source == nullptr) return;
    if (is_short(count)) {
        const std::size_t at_end = count - sizeof(Word);
        const Word first = word_at(source, 0), last = word_at(source, at_end);
        std::memcpy(destination, &first, sizeof first);
        std::memcpy(static_cast<char *>(destination) + at_end, &last, sizeof last);
        return;
    }
    std::memmove(destination, source, count);
}

void KXwhmemmove(void *destination, const void *source, uint32_t count) {
    KXwmemcpy(destination, source, count);
}

void KXwmemmove(void *destination, const void *source, int32_t count) {
    if (count > 0) std::memmove(destination, source, static_cast<std::size_t>(count));
}

void KXwmemset(void *area, uint32_t value, int32_t count) {
    if (count > 0) std::memset(area, static_cast<std::uint8_t>(value), static_cast<std::size_t>(count));
}

} // extern "C"
