// The code pages that the portable platform layer converts, by the numbers that Windows gives them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kxstr::tables {

inline constexpr std::uint8_t kFirstHighByte = 0x80; // the bytes below are ASCII in every page
inline constexpr std::uint8_t kFirstTrailByte = 0x40;
inline constexpr std::size_t kTrailBytes = 0x100 - kFirstTrailByte; // entries of a row

struct WindowsPage {
    std::uint16_t number;
    std::uint16_t default_unit; // what a pair without a character converts to

    const std::uint16_t *units;  // of the single bytes 0x80..0xFF; a lead byte has the default unit
    const std::uint16_t *rows;   // of the bytes 0x80..0xFF: 1 + number of a lead byte's row; 0: no lead byte. Or null
    const std::uint16_t *blocks; // of the high byte of a unit: the number of its block
};

inline constexpr std::size_t kWindowsPageCount = 36;
extern const std::array<WindowsPage, kWindowsPageCount> kWindowsPages; // ascending by number

// Rows of kTrailBytes units, one for each trail byte from kFirstTrailByte up.
extern const std::uint16_t kWindowsRows[];

// Blocks of 256 codes, one for each low byte of a unit; lead byte high; 0: the unit has none.
extern const std::uint16_t kWindowsBlocks[];

} // namespace kxstr::tables
