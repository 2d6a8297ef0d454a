// A list of fixed-size records sorted by key, in one array.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kxstr::registry {

inline constexpr std::uint32_t kEqualKeys = 1; // flag: equal keys may occur, and searches go to the first of a run

// A record is a 32-bit value followed by its key; records lie one after another without gaps. Keys of four bytes
// compare as 32-bit numbers, keys of other sizes byte by byte.
class YWSEARCHLIST {
  public:
    YWSEARCHLIST() = default;
    YWSEARCHLIST(const YWSEARCHLIST &) = delete;
    YWSEARCHLIST &operator=(const YWSEARCHLIST &) = delete;
    virtual ~YWSEARCHLIST();

    // Empties the list and takes room for `records`. False when there is no room; the list then holds none.
    bool set_up(std::uint32_t key_bytes, std::uint32_t list_flags, std::uint32_t records) noexcept;
    // Gives the array back; the list is as before its first set_up.
    void clear() noexcept;

    struct Place {
        std::uint8_t *record; // null when the key is not there
        std::uint32_t index;  // then of where it would go
        std::uint32_t value;
    };
    // With kEqualKeys the first record of the key's run, or the one up to `further` records behind it in the run.
    Place find(const void *key, std::uint32_t further = 0) const noexcept;

    // Puts a record with value 0 at `index`, where find has placed it. False when the array cannot grow, or for an
    // index behind the end.
    bool insert(std::uint32_t index, const void *key) noexcept;
    void remove(std::uint32_t index) noexcept; // nothing for an index behind the end

    // The key of a record; `index` is that of one in use.
    const std::uint8_t *key_at(std::size_t index) const noexcept { return record(index) + sizeof(std::uint32_t); }

    std::int32_t count = 0;     // records in use
    std::uint32_t capacity = 0; // records that the array can hold
    std::uint8_t *array = nullptr;
    void *heap = nullptr; // owner of the array
    std::uint32_t flags = 0;
    std::uint32_t key_size = 0; // bytes

  private:
    std::size_t record_size() const noexcept { return sizeof(std::uint32_t) + key_size; }
    std::uint8_t *record(std::size_t index) const noexcept { return array + index * record_size(); }
    int compare(std::size_t index, const void *key) const noexcept; // of the record's key with `key`
};

} // namespace kxstr::registry
