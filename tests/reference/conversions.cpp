#include "reference/conversions.h"

namespace kxstr::reference {
namespace {

using Bytes = std::vector<unsigned>;

Bytes operator+(Bytes left, const Bytes &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes from_to(unsigned first, unsigned last) {
    Bytes bytes;
    while (first <= last)
        bytes.push_back(first++);
    return bytes;
}

// Codes are numbered in the order of their lead and then their trail bytes, main rows and extension rows apart. Main
// characters fill their sets from index 0, extension characters from index 0xBC of set 0x2B, 64 to a set.
struct DoubleBytePage {
    Bytes main_leads, extension_leads, trails;
    unsigned first_set, per_set;
    unsigned last_main, last_extension; // the last KX characters that are taken back
};

const DoubleBytePage *find(unsigned page) {
    // Lead bytes behind the last of a code page come out when characters are taken back that no code leads to.
    static const DoubleBytePage japanese{from_to(0x81, 0x9F) + from_to(0xE0, 0xEF),
                                         from_to(0xF0, 0xFC),
                                         from_to(0x40, 0x7E) + from_to(0x80, 0xFC),
                                         0x24,
                                         188,
                                         0x52BB,
                                         0x52FE};
    static const DoubleBytePage korean{from_to(0xA1, 0xFE), {}, from_to(0xA1, 0xFE), 0x53, 188, 0x81BB, 0};
    static const DoubleBytePage simplified{
        from_to(0xA1, 0xFE), from_to(0x81, 0xA0), from_to(0xA1, 0xFE), 0x82, 255, 0xA4FE, 0x81FB};
    static const DoubleBytePage traditional{
        from_to(0xA1, 0xFE), from_to(0x81, 0xA0), from_to(0x40, 0x7E) + from_to(0xA1, 0xFE), 0xA5, 255, 0xDEDE, 0x81FB};
    switch (page) {
    case 932: return &japanese;
    case 934:
    case 949: return &korean;
    case 936: return &simplified;
    case 938:
    case 950: return &traditional;
    default: return nullptr;
    }
}

unsigned nth_code(const Bytes &leads, const Bytes &trails, unsigned n) {
    const unsigned row = n / static_cast<unsigned>(trails.size());
    const unsigned count = static_cast<unsigned>(leads.size());
    const unsigned lead = row < count ? leads[row] : leads.back() + (row - count + 1);
    return lead * 256 + trails[n % trails.size()];
}

// All codes of a page.
Map enumerate(const DoubleBytePage &rule) {
    Map codes;
    for (unsigned n = 0; n < rule.main_leads.size() * rule.trails.size(); ++n)
        codes[nth_code(rule.main_leads, rule.trails, n)] = (rule.first_set + n / rule.per_set) * 256 + n % rule.per_set;
    for (unsigned n = 0; n < rule.extension_leads.size() * rule.trails.size(); ++n)
        codes[nth_code(rule.extension_leads, rule.trails, n)] = (0x2B + n / 64) * 256 + 0xBC + n % 64;
    return codes;
}

unsigned look_up(const Map &map, unsigned key) {
    const auto found = map.find(key);
    return found != map.end() ? found->second : kNone;
}

} // namespace

unsigned double_byte_to_kx(unsigned page, unsigned code) {
    static std::map<const DoubleBytePage *, Map> all;
    const DoubleBytePage *rule = find(page);
    if (rule == nullptr) return kNone;
    Map &codes = all[rule];
    if (codes.empty()) codes = enumerate(*rule);
    return look_up(codes, code);
}

unsigned kx_to_double_byte(unsigned page, unsigned kx) {
    const DoubleBytePage *rule = find(page);
    if (rule == nullptr) return kNone;
    const unsigned set = kx / 256, index = kx % 256;
    if (set >= rule->first_set && kx <= rule->last_main && index < rule->per_set)
        return nth_code(rule->main_leads, rule->trails, (set - rule->first_set) * rule->per_set + index);
    if (set >= 0x2B && kx <= rule->last_extension && index >= 0xBC && index <= 0xFE)
        return nth_code(rule->extension_leads, rule->trails, (set - 0x2B) * 64 + (index - 0xBC));
    return kNone;
}

unsigned native_to_kx(const Page &page, unsigned code, bool double_byte_system) {
    if (code < 32 && page.low.empty()) return look_up({{9, 0xF909}, {10, 0xF90A}, {12, 0xF90C}, {13, 0xF90D}}, code);
    if (code < 32) return look_up(page.low, code);
    if (code <= 126) return code;
    const unsigned kx = double_byte_system ? double_byte_to_kx(page.kx_number, code) : kNone;
    return kx != kNone ? kx : look_up(page.high, code);
}

unsigned kx_to_native(const Page &page, unsigned kx, bool double_byte_system) {
    if (kx == 0x80) return 0x20;
    if (kx < 0x100) return kx;
    if (kx / 256 == 12) return kx % 256;
    if (double_byte_system) {
        const unsigned code = kx_to_double_byte(page.kx_number, kx);
        if (code != kNone) return code;
        if (page.kx_number == 932 && kx == 0x040C) return 0x5C;
        if ((page.kx_number == 934 || page.kx_number == 949) && kx == 0x0456) return 0x5C;
    }
    const unsigned byte = look_up(page.reverse, kx);
    return byte != kNone ? byte : look_up({{0xF909, 9}, {0xF90A, 10}, {0xF90C, 12}, {0xF90D, 13}}, kx);
}

} // namespace kxstr::reference
