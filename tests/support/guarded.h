// A destination between guards: whatever is written in front of it or behind it shows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace kxstr::test {

template <class Unit> class Guarded {
  public:
    static constexpr Unit kUntouched = static_cast<Unit>(0xA5A5A5A5u);

    explicit Guarded(std::size_t size) : units_(size + 2 * kGuard, kUntouched) {}

    Unit *data() { return units_.data() + kGuard; }
    std::size_t size() const { return units_.size() - 2 * kGuard; }
    std::vector<Unit> contents() const { return {units_.begin() + kGuard, units_.end() - kGuard}; }
    void store(std::span<const Unit> text) { std::copy(text.begin(), text.end(), data()); }

    bool guards_hold() const {
        const auto untouched = [](Unit unit) { return unit == kUntouched; };
        return std::all_of(units_.begin(), units_.begin() + kGuard, untouched) &&
               std::all_of(units_.end() - kGuard, units_.end(), untouched);
    }

  private:
    static constexpr std::ptrdiff_t kGuard = 16;
    std::vector<Unit> units_;
};

} // namespace kxstr::test
