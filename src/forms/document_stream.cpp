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

} // extern "C"
