// Flat maps of all 16-bit units (or of all bytes), each worked out at the first use of its key and kept for the life of
// the process.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kxstr {

// The value of every unit. Two more units follow, so that vector kernels may read 32 bits at the last one.
struct alignas(64) UnitMap {
    using Value = std::uint16_t;
    std::array<Value, 0x10000 + 2> values{};
};

// A mark for every byte.
struct alignas(64) ByteMap {
    using Value = std::uint8_t;
    std::array<Value, 0x100> values{};
};

// Room for `Count` maps in static storage (a UnitMap has 128 KiB; memory that is not used is never touched). There is
// no lock: a thread that comes while another builds a map, or when all places are taken, gets none and goes the plain
// way.
template <class Key, std::size_t Count, class Map = UnitMap> class MapCache {
  public:
    // The values, or null. `is_wanted()` tells whether a key that has no map yet may get one; `build(map)`
    // fills it.
    template <class IsWanted, class Build>
    const typename Map::Value *find(const Key &key, IsWanted is_wanted, Build build) noexcept {
        if (const auto *const values = find_first(key)) return values;
        return search(key, is_wanted, build);
    }

    // The values if they are those of the first key that the process came to have, as they mostly are; else null.
    const typename Map::Value *find_first(const Key &key) const noexcept {
        const Place &place = places_[0];
        return place.state.load(std::memory_order_acquire) == kReady && place.key == key ? place.map.values.data()
                                                                                         : nullptr;
    }

  private:
    // Apart, so that callers of find_first() need no frame.
    template <class IsWanted, class Build>
    [[gnu::noinline]] const typename Map::Value *search(const Key &key, IsWanted is_wanted, Build build) noexcept {
        for (Place &place : places_) {
            int state = place.state.load(std::memory_order_acquire);
            if (state == kReady) {
                if (place.key == key) return place.map.values.data();
                continue;
            }
            if (state != kEmpty || !is_wanted()) return nullptr;
            if (!place.state.compare_exchange_strong(state, kBuilding, std::memory_order_relaxed)) return nullptr;
            place.key = key;
            build(place.map);
            place.state.store(kReady, std::memory_order_release);
            return place.map.values.data();
        }
        return nullptr;
    }

    static constexpr int kEmpty = 0, kBuilding = 1, kReady = 2;
    struct Place {
        std::atomic<int> state{};
        Key key{};
        Map map{};
    };
    std::array<Place, Count> places_{};
};

} // namespace kxstr
