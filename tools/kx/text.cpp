#include "text.h"

#include "codepage/country.h"
#include "core/kx_char.h"
#include "platform/system.h"

namespace kx {

std::size_t CharMap::translate(std::span<const std::uint16_t> from, std::uint16_t *to) {
    std::size_t done = 0;
    for (;;) {
        done += kxstr::simd::kernels().translate16(from.data() + done, from.size() - done, to + done, pages_.data());
        if (done == from.size() || pages_[from[done] >> 8] != nullptr) return done;
        fill(from[done] >> 8);
    }
}

void CharMap::fill(unsigned number) {
    auto page = std::make_unique<kxstr::simd::MapPage>();
    for (unsigned index = 0; index < 0x100; ++index)
        page->set(index, function_(kxstr::make_char(number, index)));
    pages_[number] = page.get();
    filled_.push_back(std::move(page));
}

CodePage system_page() {
    return page_of_windows_number(kxstr::platform::ansi_code_page());
}

void set_country(std::uint8_t id) {
    kxstr::codepage::set_country(id);
}

} // namespace kx
