#include "peers.h"

#include <stdexcept>

namespace kxbench {
namespace {

void expect_success(UErrorCode status, const std::string &what) {
    if (U_FAILURE(status)) throw std::runtime_error("ICU: " + what + ": " + u_errorName(status));
}

// A code's size by its first byte; a group carries its own.
std::size_t plain_code_size(const std::uint8_t *code) {
    static constexpr std::uint8_t kFixed[] = {4, 5, 3, 3, 3, 3, 4, 4, 4, 5, 5, 6, 6, 8, 8, 1};
    if (code[0] < 0xD0) return 1;
    if (code[0] >= 0xF0) return kFixed[code[0] - 0xF0];
    const std::size_t size = static_cast<std::size_t>(code[2] | code[3] << 8);
    return size == 0 ? 1 : size;
}

} // namespace

Iconv::Iconv(const char *to, const char *from) {
    iconv_t handle = iconv_open(to, from);
    if (reinterpret_cast<std::intptr_t>(handle) == -1) throw std::runtime_error(std::string("iconv: no ") + from);
    handle_ = {handle, iconv_close};
}

std::size_t Iconv::convert(const void *from, std::size_t size, void *to, std::size_t room) const {
    char *in = const_cast<char *>(static_cast<const char *>(from));
    char *out = static_cast<char *>(to);
    std::size_t left = room;
    iconv(handle_.get(), &in, &size, &out, &left);
    return size == 0 ? room - left : 0;
}

IcuConverter::IcuConverter(const char *name) {
    UErrorCode status = U_ZERO_ERROR;
    converter_ = {ucnv_open(name, &status), ucnv_close};
    expect_success(status, name);
}

std::size_t IcuConverter::to_unicode(const char *from, std::size_t size, std::uint16_t *to, std::size_t room) const {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t units = ucnv_toUChars(converter_.get(), uchars(to), static_cast<std::int32_t>(room), from,
                                             static_cast<std::int32_t>(size), &status);
    return U_SUCCESS(status) ? static_cast<std::size_t>(units) : 0;
}

std::size_t IcuConverter::from_unicode(const std::uint16_t *from, std::size_t size, char *to, std::size_t room) const {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t bytes = ucnv_fromUChars(converter_.get(), to, static_cast<std::int32_t>(room), uchars(from),
                                               static_cast<std::int32_t>(size), &status);
    return U_SUCCESS(status) ? static_cast<std::size_t>(bytes) : 0;
}

std::shared_ptr<UCollator> open_collator(const char *locale, UCollationStrength strength) {
    UErrorCode status = U_ZERO_ERROR;
    std::shared_ptr<UCollator> collator(ucol_open(locale, &status), ucol_close);
    expect_success(status, locale);
    ucol_setStrength(collator.get(), strength);
    return collator;
}

void plain_widen(const char *from, std::size_t size, std::uint16_t *to) {
    for (std::size_t i = 0; i < size; ++i)
        to[i] = static_cast<unsigned char>(from[i]);
}

void plain_narrow(const std::uint16_t *from, std::size_t size, char *to) {
    for (std::size_t i = 0; i < size; ++i)
        to[i] = static_cast<char>(from[i]);
}

std::size_t plain_stream_length(const std::uint8_t *stream) {
    const std::uint8_t *position = stream;
    while (*position != 0)
        position += plain_code_size(position);
    return static_cast<std::size_t>(position - stream);
}

std::size_t plain_strip(std::uint8_t *to, const std::uint8_t *from) {
    std::uint8_t *const start = to;
    while (*from != 0) {
        const std::size_t size = plain_code_size(from);
        const bool is_text = (*from >= 0x20 && *from <= 0x7E) || *from == 0x80 || *from == 0xCC || *from == 0xF0;
        if (is_text) {
            for (std::size_t i = 0; i < size; ++i)
                *to++ = from[i];
        }
        from += size;
    }
    *to++ = 0;
    return static_cast<std::size_t>(to - start);
}

} // namespace kxbench
