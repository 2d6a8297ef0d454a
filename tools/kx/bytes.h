// Vectors that do not clear what resize() adds: a kernel writes there next.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace kx {

template <class T> struct Uncleared : std::allocator<T> {
    template <class U> struct rebind { using other = Uncleared<U>; };
    template <class U> void construct(U *place) noexcept { ::new (static_cast<void *>(place)) U; }
    template <class U, class... Arguments> void construct(U *place, Arguments &&...arguments) {
        ::new (static_cast<void *>(place)) U(std::forward<Arguments>(arguments)...);
    }
};

using ByteBuffer = std::vector<std::uint8_t, Uncleared<std::uint8_t>>;

} // namespace kx
