// What the tool takes from the library's rules of text, and what it adds: the system's code page and country, and maps
// of what the rules have answered.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "simd/kernels.h"
#include "text/rules.h"

namespace kx {

using kxstr::text::code_of_kx;
using kxstr::text::CodePage;
using kxstr::text::is_double_byte;
using kxstr::text::is_lead_byte;
using kxstr::text::kDoubleByteSystem;
using kxstr::text::kx_of_code;
using kxstr::text::kx_of_kx;
using kxstr::text::kx_of_unicode;
using kxstr::text::page_of_kx_number;
using kxstr::text::page_of_windows_number;
using kxstr::text::unicode_of_kx;

// The ANSI code page of the system.
CodePage system_page();

// Puts a country (1 to 4, or 0 for none) in the place of the system's, which the library asks for once and keeps.
void set_country(std::uint8_t id);

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
