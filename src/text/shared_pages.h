// What conversions by the rules of KX have answered, in pages of 256 units, for the whole process: texts ask for the
// same few thousand characters again and again, and the rules take their time.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "simd/kernels.h"
#include "text/rules.h"

namespace kxstr::text {

// The rule of a conversion: from a unit or a native code to another, or kNone.
enum class Rule : std::uint8_t { kx_of_code, kx_of_unicode, unicode_of_kx, code_of_kx, kx_of_kx };
struct RuleOfPages {
    Rule rule;
    LineEnds ends;
    CodePage text_page; // of the KX text; of the one that is read where there are two
    CodePage page;      // the other page, where the rule takes one

    bool operator==(const RuleOfPages &) const = default;
    std::uint16_t operator()(std::uint16_t unit) const noexcept;
};

struct SharedPages {
    std::atomic<int> state{};
    RuleOfPages rule{};
    std::atomic<const simd::MapPage *> pages[0x100]{};
};

// The pages of a rule, or null when all places are taken, when another thread is just taking one, or when the rule
// depends on tables of the caller's own.
SharedPages *shared_pages(const RuleOfPages &rule) noexcept;
// The answers for the units with this high byte; null when there is no room for more.
const simd::MapPage *page_of(SharedPages &shared, unsigned number) noexcept;

// For all rules together; a page takes 512 bytes.
inline constexpr std::size_t kSharedPages = 1024;
inline constexpr std::size_t kSharedRules = 12;

} // namespace kxstr::text
