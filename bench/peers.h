// What ours is held against: converters and collators of the C library and of ICU, opened once, and plain loops as
// one writes them without a thought of speed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iconv.h>
#include <memory>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>

namespace kxbench {

static_assert(sizeof(UChar) == sizeof(std::uint16_t));
inline const UChar *uchars(const std::uint16_t *units) {
    return reinterpret_cast<const UChar *>(units);
}
inline UChar *uchars(std::uint16_t *units) {
    return reinterpret_cast<UChar *>(units);
}

// iconv(3) between a code page and UTF-16 of this machine's byte order.
class Iconv {
  public:
    Iconv(const char *to, const char *from);
    // A whole text; gives the bytes written, 0 unless all of it went through.
    std::size_t convert(const void *from, std::size_t size, void *to, std::size_t room) const;

  private:
    std::shared_ptr<void> handle_;
};

inline constexpr const char *kUtf16 = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? "UTF-16LE" : "UTF-16BE";

class IcuConverter {
  public:
    explicit IcuConverter(const char *name);
    // Sizes and results in bytes on the native side, in units on the Unicode side; 0 unless all went through.
    std::size_t to_unicode(const char *from, std::size_t size, std::uint16_t *to, std::size_t room) const;
    std::size_t from_unicode(const std::uint16_t *from, std::size_t size, char *to, std::size_t room) const;

  private:
    std::shared_ptr<UConverter> converter_;
};

std::shared_ptr<UCollator> open_collator(const char *locale, UCollationStrength strength);

// ---- plain loops ----

void plain_widen(const char *from, std::size_t size, std::uint16_t *to);
void plain_narrow(const std::uint16_t *from, std::size_t size, char *to);

// Document streams, code by code.
std::size_t plain_stream_length(const std::uint8_t *stream);
// Text, and hard line ends; the result counts the terminator.
std::size_t plain_strip(std::uint8_t *to, const std::uint8_t *from);

} // namespace kxbench
