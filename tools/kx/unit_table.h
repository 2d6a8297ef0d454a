// What a command makes of single KX units, as a table for the library's kernels.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>

#include "core/kx_char.h"
#include "simd/kernels.h"

namespace kx {

// The values of a function of units, worked out set by set as texts come to have them. A copy begins without any, so
// that every thread works with one of its own.
class UnitTable {
  public:
    explicit UnitTable(std::function<KxChar(KxChar)> value) : value_(std::move(value)) {}
    UnitTable(const UnitTable &other) : value_(other.value_) {}
    UnitTable &operator=(const UnitTable &) = delete;
    ~UnitTable() = default;

    // Writes the values of the units, up to the first one that is KX_NONE; `to` may be where they are. Returns how many
    // these are. The value of 0 is 0: a NUL of the text stays, whatever the function says.
    std::size_t translate(std::span<const KxChar> units, KxChar *to) {
        std::size_t done = 0;
        for (;;) {
            done += kxstr::simd::kernels().translate16(&units[done], units.size() - done, to + done, pages_.data());
            if (done == units.size() || pages_[kxstr::set_of(units[done])] != nullptr) return done;
            make_page(kxstr::set_of(units[done]));
        }
    }

  private:
    void make_page(std::uint8_t set) {
        auto page = std::make_unique<kxstr::simd::MapPage>();
        for (unsigned index = 0; index < 0x100; ++index) {
            const KxChar ch = kxstr::make_char(set, index);
            page->set(index, ch != 0 ? value_(ch) : ch);
        }
        pages_[set] = page.get();
        made_[set] = std::move(page);
    }

    std::function<KxChar(KxChar)> value_;
    std::array<const kxstr::simd::MapPage *, 0x100> pages_{};
    std::array<std::unique_ptr<kxstr::simd::MapPage>, 0x100> made_;
};

} // namespace kx
