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
    return count - std::uint32_t{sizeof(Word)} <= sizeof(Word);
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

// Of two areas that differ in their first or last word. A function apart: what is read for it would have to be kept.
[[gnu::noinline]] int order_of_words(const void *a, const void *b, std::size_t last) noexcept {
    const std::size_t place = word_at(a, 0) != word_at(b, 0) ? 0 : last;
    return in_order(word_at(a, place)) > in_order(word_at(b, place)) ? 1 : -1;
}

} // namespace

extern "C" {

KxChar *KXwmemwchr(const KxChar *area, uint32_t ch, uint32_t count) {
    if (area == nullptr) return nullptr;
    const std::size_t found = simd::kernels().find_within16(area, low16(count), low16(ch));
    return found != low16(count) ? const_cast<KxChar *>(area) + found : nullptr;
}

[[gnu::aligned(64)]] int32_t KXwmemcmp(const void *a, const void *b, uint32_t count) {
    if (a == nullptr || b == nullptr) return 0;
    if (is_short(count)) {
        const std::uint32_t last = count - std::uint32_t{sizeof(Word)};
        if (((word_at(a, 0) ^ word_at(b, 0)) | (word_at(a, last) ^ word_at(b, last))) == 0) [[likely]]
            return 0;
        return order_of_words(a, b, last);
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
