// Native text, that is zero-terminated byte strings in the ANSI or OEM code page: reading and writing its codes, and
// converting them by the library's own descriptors.
#pragma once

#include "codepage/convert.h"
#include "codepage/page_maps.h"
#include "codepage/selection.h"
#include "core/text.h"
#include "forms/bounded_writer.h"
#include "platform/system.h"

namespace kxstr::forms {

enum class Native : std::uint8_t { kAnsi, kOem };

// The native equivalent of characters that have none, where a form wants one.
inline constexpr std::uint8_t kNoNativeByte = 0x80;

// The map of the library's code page, if it has been built, is the first one of the process, and the system is a
// single-byte one; else null: the usual way of short texts, which to ask in any other way would take as long as to
// convert.
inline const std::uint16_t *usual_to_kx_map(Native which) noexcept {
    const codepage::CodePageState &state = codepage::code_page_state();
    if (platform::is_double_byte_system() || !state.descriptors_ready.load(std::memory_order_acquire)) return nullptr;
    return codepage::first_to_kx_map(which == Native::kAnsi ? state.ansi : state.oem, false);
}
// What a double-byte system has in its place. Null, too, where it has not been built, and on single-byte systems.
struct PairMaps {
    const std::uint16_t *to_kx;
    const std::uint8_t *leads;
};
inline PairMaps usual_pair_maps(Native which) noexcept {
    const codepage::CodePageState &state = codepage::code_page_state();
    if (!platform::is_double_byte_system() || !state.descriptors_ready.load(std::memory_order_acquire)) return {};
    return {codepage::first_to_kx_map(which == Native::kAnsi ? state.ansi : state.oem, true),
            codepage::first_lead_byte_map(platform::ansi_code_page())};
}
// The same from KX characters, of every system.
inline const std::uint16_t *usual_from_kx_map(Native which) noexcept {
    const codepage::CodePageState &state = codepage::code_page_state();
    if (!state.descriptors_ready.load(std::memory_order_acquire)) return nullptr;
    return codepage::first_from_kx_map(which == Native::kAnsi ? state.ansi : state.oem,
                                       platform::is_double_byte_system());
}

// The library's code page for native text, for the length of one call: what cannot change meanwhile is asked for once.
// The descriptor is asked for when the first code converts, since filling it reads the user's settings.
class NativePage {
  public:
    explicit NativePage(Native which) noexcept : which_(which), double_byte_(platform::is_double_byte_system()) {}

    // `code`: a byte, or a double-byte code with its lead byte high.
    KxChar to_kx(std::uint16_t code) noexcept { return codepage::to_kx(descriptor(), code, double_byte_); }
    std::uint16_t from_kx(KxChar ch) noexcept { return codepage::from_kx(descriptor(), ch, double_byte_); }

    // The same for whole texts; null where there is no map.
    const std::uint16_t *to_kx_map() noexcept { return codepage::to_kx_map(descriptor(), double_byte_); }
    const std::uint16_t *from_kx_map() noexcept { return codepage::from_kx_map(descriptor(), double_byte_); }

    // Whether asking for a map or a conversion fills no descriptor any more.
    static bool is_filled() noexcept { return codepage::code_page_state().descriptors_ready; }

    bool is_double_byte_system() const noexcept { return double_byte_; }

  private:
    const KxCodePage &descriptor() noexcept {
        if (page_ == nullptr)
            page_ = which_ == Native::kAnsi ? &codepage::ansi_descriptor() : &codepage::oem_descriptor();
        return *page_;
    }

    const KxCodePage *page_ = nullptr;
    Native which_;
    bool double_byte_;
};

// Reads native text code by code.
class NativeReader {
  public:
    NativeReader(const std::uint8_t *text, bool double_byte) noexcept
        : at_(text),
          lead_bytes_(double_byte ? codepage::lead_byte_map(platform::ansi_code_page()) : nullptr),
          double_byte_(double_byte) {}

    // The next code, 0 at the end. A lead byte is joined with the byte behind it, whatever that is; when that is the
    // terminator, the lead byte is dropped.
    std::uint16_t next() noexcept {
        const std::uint8_t byte = *at_;
        if (byte == 0) return 0;
        ++at_;
        // No code page has lead bytes below 0x80: ASCII goes by without asking the system.
        if (!double_byte_ || byte < 0x80 || !is_lead(byte)) return byte;
        const std::uint8_t trail = *at_;
        if (trail == 0) return 0;
        ++at_;
        return static_cast<std::uint16_t>((byte << 8) | trail);
    }

  private:
    bool is_lead(std::uint8_t byte) const noexcept {
        return lead_bytes_ != nullptr ? lead_bytes_[byte] != 0 : platform::is_lead_byte(byte);
    }

    const std::uint8_t *at_;
    const std::uint8_t *lead_bytes_;
    bool double_byte_;
};

// Appends a native code, one byte or a lead byte and its trail byte.
inline bool put_native(ByteWriter &out, std::uint16_t code) noexcept {
    const auto high = static_cast<std::uint8_t>(code >> 8);
    const auto low = static_cast<std::uint8_t>(code);
    return high != 0 ? out.put({high, low}) : out.put(low);
}

} // namespace kxstr::forms
