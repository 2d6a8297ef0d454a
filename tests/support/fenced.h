// Memory between two pages that cannot be read or written: a kernel that goes one unit too far ends the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "platform/system.h"

namespace kxstr::test {

class Fenced {
  public:
    Fenced() : start_(static_cast<std::uint8_t *>(platform::reserve_address_space(3 * kSize))) {
        if (start_ == nullptr || !platform::commit_memory(start_ + kSize, kSize)) throw std::bad_alloc();
    }
    ~Fenced() { platform::release_address_space(start_, 3 * kSize); }
    Fenced(const Fenced &) = delete;
    Fenced &operator=(const Fenced &) = delete;

    std::uint8_t *begin() { return start_ + kSize; }
    std::uint8_t *end() { return begin() + kSize; }

    // Calls check(units, count) for areas of all lengths 0 to 200 at all distances 0 to 63 of the fence, in units,
    // first right behind it, then right before it. That makes all alignments, too.
    template <class Unit, class Check> void for_every_place(Check check) {
        for (std::size_t count = 0; count <= 200; ++count) {
            for (std::size_t distance = 0; distance < 64; ++distance) {
                check(reinterpret_cast<Unit *>(begin()) + distance, count);
                check(reinterpret_cast<Unit *>(end()) - distance - count, count);
            }
        }
    }

  private:
    static constexpr std::size_t kSize = 0x10000; // a multiple of every system's page
    std::uint8_t *start_;
};

} // namespace kxstr::test
