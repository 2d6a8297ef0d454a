// Searches in small tables of the caller's: lists with an end mark, and ranges of keys.
#include <cstring>
#include <kxstr/collate.h>

namespace {

// Addresses and words in a caller's table can lie at any address.
template <class Value> Value load(const void *table, std::size_t offset) noexcept {
    Value value;
    std::memcpy(&value, static_cast<const unsigned char *>(table) + offset, sizeof value);
    return value;
}

// The row of the key, else the row of the end mark. Rows have `stride` cells, the first of which is the key.
template <class Cell> const Cell *find_row(const Cell *table, std::size_t stride, Cell key) noexcept {
    constexpr Cell kEnd = static_cast<Cell>(-1);
    while (*table != key && *table != kEnd)
        table += stride;
    return table;
}

constexpr bool in_range(unsigned first, unsigned last, unsigned key) noexcept {
    return first <= key && key <= last;
}

} // namespace

extern "C" {

uint8_t b_table(const uint8_t *table, uint8_t key) {
    return *find_row(table, 1, key);
}

uint16_t w_table(const uint16_t *table, uint16_t key) {
    return *find_row(table, 1, key);
}

uint8_t b_b_table(const uint8_t *table, uint8_t key) {
    const uint8_t *row = find_row(table, 2, key);
    return row[0] == 0xFF ? uint8_t{0xFF} : row[1]; // the end mark may be the last byte of the table
}

uint16_t uw_uw_table(const uint16_t *table, uint16_t key) {
    return find_row(table, 2, key)[1];
}

void *ub_fp_table(const void *table, uint8_t key) {
    return load<void *>(find_row(static_cast<const uint8_t *>(table), 1 + sizeof(void *), key), 1);
}

void *ub_vfp_table(const void *table, uint8_t key) {
    return ub_fp_table(table, key);
}

uint8_t ub_lukup(const uint8_t *table, uint8_t key) {
    return in_range(table[0], table[1], key) ? table[2 + key - table[0]] : uint8_t{0xFF};
}

uint16_t uw_lukup(const uint16_t *table, uint8_t key) {
    const unsigned first = table[0] & 0xFFu;
    return in_range(first, table[1] & 0xFFu, key) ? table[2 + key - first] : uint16_t{0xFFFF};
}

uint32_t ubp_lukup(const void *table, uint8_t key) {
    const auto first = load<uint8_t>(table, 0);
    if (!in_range(first, load<uint8_t>(table, 1), key)) return 0;
    return load<const uint32_t *>(table, 2)[key - first];
}

uint32_t uw_fp_lukup(const void *table, uint16_t key) {
    const auto first = load<uint16_t>(table, 0);
    if (!in_range(first, load<uint16_t>(table, 2), key)) return 0xFFFFFFFF;
    return load<const uint32_t *>(table, 4)[key - first];
}

uint32_t ub_ub_lukup(const uint8_t *table, uint8_t key, uint8_t *out1, uint8_t *out2) {
    if (!in_range(table[0], table[1], key)) return 1;
    const uint8_t *pair = table + 2 + std::size_t{2} * (key - table[0]);
    *out1 = pair[0];
    *out2 = pair[1];
    return 0;
}
}
