#include "codepage/double_byte.h"

namespace kxstr::codepage {
namespace {

struct Range {
    unsigned first, last;

    constexpr unsigned size() const noexcept { return last - first + 1; }
    constexpr bool contains(unsigned byte) const noexcept { return first <= byte && byte <= last; }
};

// Two ranges of bytes that count through. Positions behind the last one go on with the bytes behind it: characters that
// no code leads to are taken back so.
struct Bytes {
    Range low, high; // size 0: high begins right behind low

    constexpr unsigned size() const noexcept { return low.size() + high.size(); }
    constexpr bool contains(unsigned byte) const noexcept { return low.contains(byte) || high.contains(byte); }
    constexpr unsigned position(unsigned byte) const noexcept {
        return low.contains(byte) ? byte - low.first : low.size() + (byte - high.first);
    }
    constexpr unsigned at(unsigned position) const noexcept {
        return position < low.size() ? low.first + position : high.first + (position - low.size());
    }
};

constexpr Bytes one_range(unsigned first, unsigned last) noexcept {
    return {{first, last}, {last + 1, last}};
}

// A run of characters by number: `per_set` to a set, from `first_index` of `first_set` up. Going back, the indices up
// to `last_index` and the characters up to `last` are taken, more than the codes lead to.
struct Area {
    unsigned first_set, first_index, per_set, last_index;
    unsigned last;

    constexpr KxChar character(unsigned n) const noexcept {
        return make_char(first_set + n / per_set, first_index + n % per_set);
    }
    constexpr bool contains(KxChar ch) const noexcept {
        return set_of(ch) >= first_set && first_index <= index_of(ch) && index_of(ch) <= last_index && ch <= last;
    }
    constexpr unsigned number(KxChar ch) const noexcept {
        return (set_of(ch) - first_set) * per_set + (index_of(ch) - first_index);
    }
};

// The extension area: the indices 0xBC..0xFB of sets 0x2B..0x79, which the main areas leave free, 64 characters to a
// set. The user-defined rows of 932 and the rows below lead byte 0xA1 of 936 and 950 lie there.
constexpr Area extension_up_to(unsigned last) noexcept {
    return {0x2B, 0xBC, 64, 0xFE, last};
}
constexpr Area main_area(unsigned first_set, unsigned per_set, unsigned last) noexcept {
    return {first_set, 0, per_set, per_set - 1, last};
}

// The codes in the order of their lead and then of their trail bytes are numbered through, in each area.
struct Rule {
    Bytes trails;
    Bytes leads;
    Area main;
    Bytes extension_leads;
    Area extension; // `last` is 0 where there is none
};

constexpr Bytes kNoBytes{{1, 0}, {1, 0}};

constexpr Rule kJapanese{
    {{0x40, 0x7E}, {0x80, 0xFC}}, {{0x81, 0x9F}, {0xE0, 0xEF}}, main_area(0x24, 188, 0x52BB),
    one_range(0xF0, 0xFC),        extension_up_to(0x52FE),
};
constexpr Rule kKorean{
    one_range(0xA1, 0xFE), one_range(0xA1, 0xFE), main_area(0x53, 188, 0x81BB), kNoBytes, extension_up_to(0),
};
constexpr Rule kSimplifiedChinese{
    one_range(0xA1, 0xFE), one_range(0xA1, 0xFE),   main_area(kFirstSimplifiedSet, kPerChineseSet, 0xA4FE),
    one_range(0x81, 0xA0), extension_up_to(0x81FB),
};
constexpr Rule kTraditionalChinese{
    {{0x40, 0x7E}, {0xA1, 0xFE}}, one_range(0xA1, 0xFE),   main_area(kFirstTraditionalSet, kPerChineseSet, 0xDEDE),
    one_range(0x81, 0xA0),        extension_up_to(0x81FB),
};

constexpr const Rule *find_rule(std::uint32_t code_page) noexcept {
    switch (code_page) {
    case 932: return &kJapanese;
    case 934:
    case 949: return &kKorean;
    case 936: return &kSimplifiedChinese;
    case 938:
    case 950: return &kTraditionalChinese;
    default: return nullptr;
    }
}

constexpr KxChar to_kx(const Rule &rule, std::uint16_t code) noexcept {
    const unsigned lead = code >> 8;
    const unsigned trail = code & 0xFF;
    if (!rule.trails.contains(trail)) return kNone;
    const bool is_main = rule.leads.contains(lead);
    if (!is_main && !rule.extension_leads.contains(lead)) return kNone;
    const Bytes &leads = is_main ? rule.leads : rule.extension_leads;
    const Area &area = is_main ? rule.main : rule.extension;
    return area.character(leads.position(lead) * rule.trails.size() + rule.trails.position(trail));
}

constexpr std::uint16_t from_kx(const Rule &rule, KxChar ch) noexcept {
    const bool is_main = rule.main.contains(ch);
    if (!is_main && !rule.extension.contains(ch)) return kNone;
    const unsigned n = is_main ? rule.main.number(ch) : rule.extension.number(ch);
    const Bytes &leads = is_main ? rule.leads : rule.extension_leads;
    return static_cast<std::uint16_t>(leads.at(n / rule.trails.size()) << 8 | rule.trails.at(n % rule.trails.size()));
}

} // namespace

bool has_double_byte_rule(std::uint32_t code_page) noexcept {
    return find_rule(code_page) != nullptr;
}

KxChar double_byte_to_kx(std::uint32_t code_page, std::uint16_t code) noexcept {
    const Rule *const rule = find_rule(code_page);
    return rule != nullptr ? to_kx(*rule, code) : kNone;
}

std::uint16_t kx_to_double_byte(std::uint32_t code_page, KxChar ch) noexcept {
    const Rule *const rule = find_rule(code_page);
    return rule != nullptr ? from_kx(*rule, ch) : kNone;
}

} // namespace kxstr::codepage
