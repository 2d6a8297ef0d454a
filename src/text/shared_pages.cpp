#include "text/shared_pages.h"

namespace kxstr::text {
namespace {

constexpr int kEmpty = 0, kTaking = 1, kReady = 2;

constinit SharedPages places[kSharedRules]{};
constinit simd::MapPage pool[kSharedPages]{};
constinit std::atomic<std::size_t> used{};

} // namespace

std::uint16_t RuleOfPages::operator()(std::uint16_t unit) const noexcept {
    switch (rule) {
    case Rule::kx_of_code: {
        const KxChar ch = text::kx_of_code(page, unit, ends);
        return ch == KX_NONE ? ch : text::kx_of_kx(text_page, page, ch, ends);
    }
    case Rule::kx_of_unicode: return text::kx_of_unicode(text_page, unit, ends);
    case Rule::unicode_of_kx: return text::unicode_of_kx(text_page, unit);
    case Rule::code_of_kx: return text::code_of_kx(page, text_page, unit, ends);
    case Rule::kx_of_kx: return text::kx_of_kx(page, text_page, unit, ends);
    }
    return KX_NONE;
}

SharedPages *shared_pages(const RuleOfPages &rule) noexcept {
    if (rule.page.own != nullptr || rule.text_page.own != nullptr) return nullptr;
    for (SharedPages &place : places) {
        int state = place.state.load(std::memory_order_acquire);
        if (state == kEmpty && place.state.compare_exchange_strong(state, kTaking, std::memory_order_relaxed)) {
            place.rule = rule;
            place.state.store(kReady, std::memory_order_release);
            return &place;
        }
        if (state == kTaking) return nullptr;
        if (place.rule == rule) return &place;
    }
    return nullptr;
}

const simd::MapPage *page_of(SharedPages &shared, unsigned number) noexcept {
    std::atomic<const simd::MapPage *> &place = shared.pages[number];
    const simd::MapPage *known = place.load(std::memory_order_acquire);
    if (known != nullptr) return known;
    if (used.load(std::memory_order_relaxed) >= kSharedPages) return nullptr;
    const std::size_t at = used.fetch_add(1, std::memory_order_relaxed);
    if (at >= kSharedPages) return nullptr;
    simd::MapPage &page = pool[at];
    for (unsigned index = 0; index < 0x100; ++index)
        page.set(index, shared.rule(static_cast<std::uint16_t>(number << 8 | index)));
    // Two threads may have built the same page; one of the two is lost.
    return place.compare_exchange_strong(known, &page, std::memory_order_acq_rel) ? &page : known;
}

} // namespace kxstr::text
