// The code pages that the portable platform layer converts, by the numbers that Windows gives them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace kxstr::tables {

inline constexpr std::uint8_t kFirstHighByte = 0x80; // the bytes below are ASCII in every page
inline constexpr std::uint8_t kFirstTrailByte = 0x40;
inline constexpr std::size_t kTrailBytes = 0x100 - kFirstTrailByte; // entries of a row

extern const std::uint16_t kWindowsPageData[];

// Places in kWindowsPageData in the place of addresses: there is nothing to relocate when the library is loaded.
struct WindowsPage {
    std::uint16_t number;
    std::uint16_t default_unit; // what a pair without a character converts to
    std::uint16_t units_at;
    std::uint16_t rows_at; // 0: a page of single bytes
    std::uint16_t blocks_at;

    // Of the single bytes 0x80..0xFF; a lead byte has the default unit.
    const std::uint16_t *units() const noexcept { return kWindowsPageData + units_at; }
    // Of the bytes 0x80..0xFF: 1 + number of a lead byte's row; 0: no lead byte. Or null.
    const std::uint16_t *rows() const noexcept { return rows_at != 0 ? kWindowsPageData + rows_at : nullptr; }
    // Of the high byte of a unit: the number of its block.
    const std::uint16_t *blocks() const noexcept { return kWindowsPageData + blocks_at; }
};

inline constexpr std::size_t kWindowsPageCount = 36;
extern const std::array<WindowsPage, kWindowsPageCount> kWindowsPages; // ascending by number

// The page of a number, or null.
inline const WindowsPage *find_windows_page(std::uint32_t number) noexcept {
    const auto *const found = std::ranges::lower_bound(kWindowsPages, number, {}, &WindowsPage::number);
    return found != kWindowsPages.end() && found->number == number ? found : nullptr;
}

// Bytes for which the published mapping of a page has another unit than Windows.
struct PublishedUnit {
    std::uint16_t page;
    std::uint8_t byte;
    std::uint16_t unit;
};
inline constexpr std::size_t kPublishedUnitCount = 8;
extern const std::array<PublishedUnit, kPublishedUnitCount> kPublishedUnits;

// Rows of kTrailBytes units, one for each trail byte from kFirstTrailByte up.
extern const std::uint16_t kWindowsRows[];

// The units of a lead byte's pairs, from kFirstTrailByte up; null for other bytes.
inline const std::uint16_t *find_row(const WindowsPage &page, std::uint8_t byte) noexcept {
    if (page.rows() == nullptr || byte < kFirstHighByte) return nullptr;
    const std::size_t row = page.rows()[byte - kFirstHighByte];
    return row == 0 ? nullptr : kWindowsRows + (row - 1) * kTrailBytes;
}

// Blocks of 256 codes, one for each low byte of a unit; lead byte high; 0: the unit has none.
extern const std::uint16_t kWindowsBlocks[];

// The code of a unit from kFirstHighByte up, or 0.
inline std::uint16_t find_code(const WindowsPage &page, std::uint16_t unit) noexcept {
    return kWindowsBlocks[page.blocks()[unit >> 8] * std::size_t{0x100} + (unit & 0xFF)];
}

} // namespace kxstr::tables
