#include <cstring>
#include <kxstr/forms.h>

#include "forms/code_size.h"

using namespace kxstr;

namespace {

// Length first, then one block: the result is that of copying code by code, and overlap does no harm.
void copy_stream(std::uint8_t *destination, const std::uint8_t *source) noexcept {
    const std::size_t length = forms::stream_length(source);
    std::memmove(destination, source, length);
    destination[length] = 0;
}

// Counts arrive signed; a negative one moves nothing.
std::size_t byte_count(std::int32_t count) noexcept {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace

extern "C" {

uint16_t ufsize(const uint8_t *code) {
    return forms::forward_size(code);
}

uint16_t ubsize(const uint8_t *end) {
    return forms::backward_size(end);
}

int32_t wdstrlen(const uint8_t *stream) {
    return static_cast<int32_t>(forms::stream_length(stream));
}

uint8_t *wdstrcpy(uint8_t *destination, const uint8_t *source) {
    copy_stream(destination, source);
    return destination;
}

uint8_t *wdstrcat(uint8_t *destination, const uint8_t *source) {
    copy_stream(destination + forms::stream_length(destination), source);
    return destination;
}

void KXwmemmove(void *destination, const void *source, int32_t count) {
    if (const std::size_t bytes = byte_count(count)) std::memmove(destination, source, bytes);
}

void KXwmemset(void *area, uint32_t value, int32_t count) {
    if (const std::size_t bytes = byte_count(count)) std::memset(area, static_cast<std::uint8_t>(value), bytes);
}

} // extern "C"
