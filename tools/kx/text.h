// What text means to the tool: one character between a code page, KX text and Unicode. These are the library's
// conversions plus what a converter of whole texts needs: line ends stay line ends, and every byte of a code page has a
// unit in KX text. docs/convert.md tells the choices.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <kxstr/types.h>
#include <memory>
#include <span>
#include <vector>

#include "simd/kernels.h"

namespace kx {

// A code page under both of its numbers.
struct CodePage {
    std::uint32_t kx_number;
    std::uint32_t windows_number;

    bool operator==(const CodePage &) const = default;
};
CodePage page_of_kx_number(std::uint32_t number);
CodePage page_of_windows_number(std::uint32_t number);
// The ANSI code page of the system.
CodePage system_page();

// East Asian characters are some whatever the system: a converter names its code pages.
inline constexpr bool kDoubleByteSystem = true;

// Puts a country (1 to 4, or 0 for none) in the place of the system's, which the library asks for once and keeps.
void set_country(std::uint8_t id);

bool is_double_byte(const CodePage &page);
bool is_lead_byte(const CodePage &page, std::uint8_t byte);

// All results are KX_NONE where there is no equivalent. A code is a byte, or a double-byte code with its lead byte
// high.
//
// The East Asian sets of KX text and the native bytes in the upper halves of sets 0 and 12 mean something only together
// with a code page, the page of the text.
KxChar kx_of_code(const CodePage &page, std::uint16_t code);
KxChar kx_of_unicode(const CodePage &text_page, std::uint16_t unit);
std::uint16_t unicode_of_kx(const CodePage &text_page, KxChar ch);
// The code of a character of a text of `text_page` in another page, or in the same.
std::uint16_t code_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch);
// The same character in a text of another page.
KxChar kx_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch);

// One of the functions above with what it has answered, in pages of 256: texts ask for the same few thousand characters
// again and again.
class CharMap {
  public:
    using Function = std::function<std::uint16_t(std::uint16_t)>;
    explicit CharMap(Function function) : function_(std::move(function)) {}

    std::uint16_t operator[](std::uint16_t key) { return page(key >> 8)[key & 0xFF]; }

    // Up to the first one that gives KX_NONE. Returns how many were done. `to` may be where `from` is.
    std::size_t translate(std::span<const std::uint16_t> from, std::uint16_t *to);

    // The answers for the keys with this high byte.
    const kxstr::simd::MapPage &page(unsigned number) {
        if (pages_[number] == nullptr) fill(number);
        return *pages_[number];
    }

  private:
    void fill(unsigned number);

    Function function_;
    std::array<const kxstr::simd::MapPage *, 0x100> pages_{}; // null: not asked yet
    std::vector<std::unique_ptr<kxstr::simd::MapPage>> filled_;
};

} // namespace kx
