#include "codepage/descriptor.h"

#include <algorithm>
#include <cstddef>
#include <kxstr/codepage.h>

#include "codepage/selection.h"

// Hosts lay descriptors out themselves: three addresses behind two numbers, 20 bytes in a 32-bit process.
static_assert(offsetof(KxCodePage, low_table) == 8 && sizeof(KxCodePage) == 8 + 3 * sizeof(void *));

namespace kxstr::codepage {

const tables::CodePage *find_code_page(std::uint32_t kx_number) noexcept {
    const auto found = std::ranges::find(tables::kCodePages, kx_number, &tables::CodePage::kx_number);
    return found != tables::kCodePages.end() ? &*found : nullptr;
}

tables::CodePage code_page_or_none(std::uint32_t kx_number) noexcept {
    const tables::CodePage *found = find_code_page(kx_number);
    return found != nullptr ? *found : tables::CodePage{};
}

void set_code_page(KxCodePage &page, std::uint32_t code_page, std::uint8_t directions) noexcept {
    const tables::CodePage entry = code_page_or_none(code_page);
    if ((directions & kTowardsKx) != 0 && page.input_code_page != code_page) {
        page.low_table = entry.low();
        page.high_table = entry.high();
        page.input_code_page = code_page;
    }
    if ((directions & kFromKx) != 0 && page.output_code_page != code_page) {
        page.reverse_table = entry.reverse();
        page.output_code_page = code_page;
    }
}

} // namespace kxstr::codepage

extern "C" {

void WcvtSetCodepage(uint32_t code_page, uint8_t directions, KxCodePage *page) {
    using namespace kxstr::codepage;
    set_code_page(*page, code_page == KX_WINDOWS_CODE_PAGE ? windows_code_page() : code_page, directions);
}

void WcvtClrCodepage(KxCodePage *page) {
    *page = KxCodePage{};
}

const uint8_t *WcvtFindCPTable(uint32_t code_page, uint32_t which) {
    const kxstr::tables::CodePage *entry = kxstr::codepage::find_code_page(code_page);
    if (entry == nullptr) return nullptr;
    switch (which) {
    case 0: return entry->low();
    case 1: return entry->high();
    case 2: return entry->reverse();
    default: return nullptr;
    }
}

uint32_t WcvtKXCodepageToWinCodepage(uint32_t kx_number) {
    const kxstr::tables::CodePage *entry = kxstr::codepage::find_code_page(kx_number);
    return entry != nullptr ? entry->windows_number : kx_number;
}

uint32_t WcvtWinCodepageToKXCodepage(uint32_t windows_number) {
    using kxstr::tables::CodePage;
    const auto &pages = kxstr::tables::kCodePages;
    const auto entry = std::ranges::find(pages, windows_number, &CodePage::windows_number);
    return entry != pages.end() ? entry->kx_number : windows_number;
}
}
