#include <cstring>
#include <kxstr/prim.h>

#include "core/dbcs_copy.h"
#include "prim/strings.h"
#include "simd/nearest.h"

using namespace kxstr;

extern "C" {

[[gnu::aligned(64)]] uint32_t wstrlen(const char *string) {
    if (const std::uint32_t ends = simd::nearest_end_of(bytes_of(string)); ends != 0) [[likely]]
        return simd::place_of(ends);
    return string != nullptr ? simd::kernels().size8(bytes_of(string)) : 0;
}

char *wstrcpy(char *destination, const char *source) {
    if (destination == nullptr || source == nullptr) return nullptr;
    return static_cast<char *>(std::memmove(destination, source, std::strlen(source) + 1));
}

char *wstrcat(char *destination, const char *source) {
    prim::append(bytes_of(destination), bytes_of(source), prim::kUnlimited);
    return destination;
}

char *wstrncat(char *destination, const char *source, uint32_t count) {
    prim::append(bytes_of(destination), bytes_of(source), count);
    return destination;
}

char *wstrncpy(char *destination, const char *source, uint32_t count) {
    copy_whole_characters(bytes_of(destination), bytes_of(source), count);
    return destination;
}

void CopyUpToAndNullTerminate(char *destination, const char *source, int32_t size) {
    if (size <= 0) return;
    const std::size_t last = static_cast<std::size_t>(size) - 1;
    const std::size_t length = whole_characters(bytes_of(source), last);
    std::memmove(destination, source, length);
    destination[length] = 0;
    // The byte behind the terminator belongs to the result: the trail byte of the character left out, or a second 0.
    if (length < last) destination[length + 1] = source[length] != 0 ? source[length + 1] : '\0';
}

[[gnu::aligned(64)]] int32_t wstrcmp(const char *a, const char *b) {
    if (const std::uint32_t hits = simd::nearest_difference(bytes_of(a), bytes_of(b)); hits != 0) [[likely]]
        return bytes_of(a)[simd::place_of(hits)] - bytes_of(b)[simd::place_of(hits)];
    return a != nullptr && b != nullptr ? simd::kernels().compare8(bytes_of(a), bytes_of(b)) : 0;
}

int32_t wstrncmp(const char *a, const char *b, int32_t count) {
    return count > 0 ? prim::compare(bytes_of(a), bytes_of(b), static_cast<std::size_t>(count)) : 0;
}

[[gnu::aligned(64)]] char *wstrchr(const char *string, uint32_t byte) {
    const auto wanted = static_cast<std::uint8_t>(byte);
    if (wanted == 0) return nullptr;
    if (const std::uint32_t hits = simd::nearest_of(bytes_of(string), wanted); hits != 0) [[likely]] {
        const char *const place = string + simd::place_of(hits);
        if (*place == 0) [[unlikely]]
            return nullptr;
        return const_cast<char *>(place);
    }
    const std::uint8_t *const found = simd::kernels().find8(bytes_of(string), wanted);
    return const_cast<char *>(reinterpret_cast<const char *>(found));
}

char *wstrrchr(const char *string, uint32_t byte) {
    const auto wanted = static_cast<std::uint8_t>(byte);
    return string != nullptr && wanted != 0 ? const_cast<char *>(std::strrchr(string, wanted)) : nullptr;
}

} // extern "C"
