#include "registry/search_list.h"

#include <cstring>

#include "platform/system.h"

namespace kxstr::registry {
namespace {

constexpr std::uint32_t kGrowth = 16; // records

std::uint32_t load(const void *bytes) noexcept {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

} // namespace

YWSEARCHLIST::~YWSEARCHLIST() {
    clear();
}

bool YWSEARCHLIST::set_up(std::uint32_t key_bytes, std::uint32_t list_flags, std::uint32_t records) noexcept {
    clear();
    key_size = key_bytes;
    flags = list_flags;
    heap = platform::process_heap();
    array = static_cast<std::uint8_t *>(platform::heap_allocate(records * record_size()));
    if (array == nullptr) return false;
    capacity = records;
    return true;
}

void YWSEARCHLIST::clear() noexcept {
    platform::heap_free(array);
    array = nullptr;
    count = 0;
    capacity = 0;
}

int YWSEARCHLIST::compare(std::size_t index, const void *key) const noexcept {
    const std::uint8_t *own = key_at(index);
    if (key_size != sizeof(std::uint32_t)) return std::memcmp(own, key, key_size);
    const std::uint32_t left = load(own);
    const std::uint32_t right = load(key);
    return left < right ? -1 : left > right ? 1 : 0;
}

YWSEARCHLIST::Place YWSEARCHLIST::find(const void *key, std::uint32_t further) const noexcept {
    const auto used = static_cast<std::size_t>(count);
    std::size_t low = 0;
    std::size_t end = used;
    while (low < end) {
        std::size_t probe = (low + end - 1) / 2;
        const int order = compare(probe, key);
        if (order < 0) {
            low = probe + 1;
        } else if (order > 0) {
            end = probe;
        } else {
            if ((flags & kEqualKeys) != 0) {
                while (probe > 0 && compare(probe - 1, key) == 0)
                    --probe;
                for (; further > 0 && probe + 1 < used && compare(probe + 1, key) == 0; --further)
                    ++probe;
            }
            return {record(probe), static_cast<std::uint32_t>(probe), load(record(probe))};
        }
    }
    return {nullptr, static_cast<std::uint32_t>(low), 0};
}

bool YWSEARCHLIST::insert(std::uint32_t index, const void *key) noexcept {
    const auto used = static_cast<std::uint32_t>(count);
    if (index > used) return false;
    if (used == capacity) {
        void *grown = platform::heap_reallocate(array, (std::size_t{capacity} + kGrowth) * record_size());
        if (grown == nullptr) return false;
        array = static_cast<std::uint8_t *>(grown);
        capacity += kGrowth;
    }
    std::uint8_t *const place = record(index);
    std::memmove(place + record_size(), place, (used - index) * record_size());
    std::memset(place, 0, sizeof(std::uint32_t));
    std::memcpy(place + sizeof(std::uint32_t), key, key_size);
    ++count;
    return true;
}

void YWSEARCHLIST::remove(std::uint32_t index) noexcept {
    const auto used = static_cast<std::uint32_t>(count);
    if (index >= used) return;
    std::memmove(record(index), record(index + 1), (used - index - 1) * record_size());
    --count;
}

} // namespace kxstr::registry
