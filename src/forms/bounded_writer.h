// Output with an end: the one place that decides whether a code still fits into a destination.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace kxstr::forms {

inline constexpr std::size_t kUnlimited = SIZE_MAX;

// Appends units (bytes or KX characters) to a destination. Without a destination it only counts them. The count can
// run ahead of what was written, where a form charges more for a code than it takes; room is measured by the count.
// The units appended may lie in the destination itself, behind what has been written.
template <class Unit> class BoundedWriter {
  public:
    // `room`: units before the terminator.
    constexpr BoundedWriter(Unit *destination, std::size_t room) noexcept : destination_(destination), room_(room) {}

    constexpr bool has_room() const noexcept { return count_ < room_; }
    constexpr bool fits(std::size_t units) const noexcept { return count_ <= room_ && units <= room_ - count_; }

    // Appends a whole code, or nothing of it when it does not fit.
    constexpr bool put(const Unit *code, std::size_t size) noexcept {
        if (!fits(size)) return false;
        if (destination_ != nullptr) std::copy_n(code, size, destination_ + written_);
        written_ += size;
        count_ += size;
        return true;
    }
    constexpr bool put(std::initializer_list<Unit> code) noexcept { return put(code.begin(), code.size()); }
    constexpr bool put(Unit unit) noexcept { return put(&unit, 1); }

    // Takes over units that the caller has put behind what was written.
    constexpr void advance(std::size_t units) noexcept {
        written_ += units;
        count_ += units;
    }

    // Counts units that are not written.
    constexpr void charge(std::size_t units) noexcept { count_ += units; }

    // Terminates what was written and returns the count, the terminator not included.
    constexpr std::size_t finish() noexcept {
        if (destination_ != nullptr) destination_[written_] = 0;
        return count_;
    }

  private:
    Unit *destination_;
    std::size_t room_;
    std::size_t written_ = 0;
    std::size_t count_ = 0;
};

using ByteWriter = BoundedWriter<std::uint8_t>;
using KxWriter = BoundedWriter<std::uint16_t>;

} // namespace kxstr::forms
