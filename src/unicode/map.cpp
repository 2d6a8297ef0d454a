#include "unicode/map.h"

#include <algorithm>
#include <kxstr/unicode.h>
#include <span>

#include "codepage/double_byte.h"
#include "core/map_cache.h"
#include "platform/system.h"
#include "simd/kernels.h"
#include "tables/unicode_map.h"

namespace kxstr::unicode {

constinit UnicodeMaps maps_to_kx{}, maps_from_kx{};

namespace {

KxChar find_pair(std::uint16_t unit) noexcept {
    const auto found = std::ranges::lower_bound(tables::kUnicodeToKx, unit, {}, &tables::UnicodePair::unicode);
    return found != tables::kUnicodeToKx.end() && found->unicode == unit ? found->kx : kNone;
}

// Ranges that a double-byte code page covers itself, so that the pair table is not asked: CJK symbols, kana and
// ideographs, and the Korean letters.
constexpr bool belongs_to_code_page(std::uint16_t unit) noexcept {
    return (unit >= 0x3000 && unit <= 0x9FFF) || (unit >= 0x1100 && unit <= 0x11FF);
}

std::uint16_t join(const platform::NativeBytes &native) noexcept {
    return static_cast<std::uint16_t>((native.bytes[0] << 8) | native.bytes[1]);
}

// Sets 0 and 12 hold ASCII and native bytes; the other sets of the table have an array each.
std::uint16_t from_table_set(std::uint8_t set, std::uint8_t index, std::uint32_t ansi_code_page) noexcept {
    if (set == kAsciiSet || set == kNativeByteSet) {
        if (index < 0x80) return index;
        return platform::to_wide(ansi_code_page, {&index, 1}).value_or(kNone);
    }
    if (set >= tables::kKxToUnicode.size()) return kNone;
    const std::span<const std::uint16_t> values = tables::kKxToUnicode[set];
    return index < values.size() ? values[index] : kNone;
}

template <class Convert>
const std::uint16_t *find_map(UnicodeMaps &maps, std::uint32_t ansi_code_page, Convert convert) noexcept {
    return maps.find(
        ansi_code_page, [] { return true; },
        [&](UnitMap &map) {
            for (unsigned unit = 0; unit < 0x10000; ++unit)
                map.values[unit] = convert(static_cast<std::uint16_t>(unit), ansi_code_page);
        });
}

template <class Convert>
std::size_t convert_units(UnicodeMaps &maps, const std::uint16_t *source, std::size_t limit, std::uint16_t *destination,
                          std::uint32_t ansi_code_page, Convert convert) noexcept {
    const std::uint16_t *const map = find_map(maps, ansi_code_page, convert);
    if (map != nullptr) return simd::kernels().map_units(map, source, limit, destination);
    std::size_t done = 0;
    while (done < limit && (destination[done] = convert(source[done], ansi_code_page)) != 0)
        ++done;
    return done;
}

using ConvertUnit = std::uint16_t(std::uint16_t, std::uint32_t) noexcept;
using ConvertText = std::size_t(const std::uint16_t *, std::size_t, std::uint16_t *) noexcept;

// The exported functions count the 0, and have two limits.
std::uint32_t convert_within(ConvertText convert, const std::uint16_t *source, std::size_t source_limit,
                             std::uint16_t *destination, std::size_t destination_limit) noexcept {
    const std::size_t limit = std::min(source_limit, destination_limit);
    return static_cast<std::uint32_t>(std::min(convert(source, limit, destination) + 1, limit));
}

} // namespace

KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept {
    if (unit < 0x7F) return unit;
    const bool double_byte = codepage::has_double_byte_rule(ansi_code_page);
    if (double_byte && belongs_to_code_page(unit)) {
        const auto native = platform::from_wide(ansi_code_page, unit);
        return native.count == 2 ? codepage::double_byte_to_kx(ansi_code_page, join(native)) : kNone;
    }
    const KxChar found = find_pair(unit);
    if (found != kNone || !double_byte || unit <= 0xFF) return found;
    const auto native = platform::from_wide(ansi_code_page, unit);
    if (native.count != 2 || !platform::is_lead_byte_of(ansi_code_page, native.bytes[0])) return kNone;
    return codepage::double_byte_to_kx(ansi_code_page, join(native));
}

std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept {
    const std::uint8_t set = set_of(ch);
    if (set <= 15) return from_table_set(set, index_of(ch), ansi_code_page);
    if (set < kFirstDoubleByteSet || set > kLastDoubleByteSet) return kNone;
    const std::uint16_t code = codepage::kx_to_double_byte(ansi_code_page, ch);
    if (code == kNone) return kNone;
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)};
    return platform::to_wide(ansi_code_page, bytes).value_or(kNone);
}

std::size_t to_kx(const std::uint16_t *source, std::size_t limit, KxChar *destination) noexcept {
    constexpr ConvertUnit *convert = to_kx;
    const std::uint32_t ansi_code_page = platform::ansi_code_page();
    return convert_units(maps_to_kx, source, limit, destination, ansi_code_page, convert);
}

std::size_t from_kx(const KxChar *source, std::size_t limit, std::uint16_t *destination) noexcept {
    constexpr ConvertUnit *convert = from_kx;
    const std::uint32_t ansi_code_page = platform::ansi_code_page();
    return convert_units(maps_from_kx, source, limit, destination, ansi_code_page, convert);
}

} // namespace kxstr::unicode

extern "C" {

uint32_t GetKXCCHARValue(uint32_t unicode) {
    return kxstr::unicode::find_pair(kxstr::low16(unicode));
}

uint16_t YWcharUnicodeToKX6x(uint32_t unicode) {
    return kxstr::unicode::to_kx(kxstr::low16(unicode), kxstr::platform::ansi_code_page());
}

uint32_t YWstrUnicodeToKX6x(const uint16_t *source, uint32_t source_limit, KxChar *destination,
                            uint32_t destination_limit) {
    using namespace kxstr::unicode;
    return convert_within(to_kx, source, source_limit, destination, destination_limit);
}

uint32_t GetUnicodeValue(uint32_t set, uint32_t index) {
    const std::uint16_t value = kxstr::unicode::from_table_set(
        static_cast<std::uint8_t>(set), static_cast<std::uint8_t>(index), kxstr::platform::ansi_code_page());
    return value != kxstr::kNone ? value : 0;
}

uint16_t YWcharKX6xToUnicode(uint32_t ch) {
    return kxstr::unicode::from_kx(kxstr::low16(ch), kxstr::platform::ansi_code_page());
}

uint32_t YWstrKX6xToUnicode(const KxChar *source, uint32_t source_limit, uint16_t *destination,
                            uint32_t destination_limit) {
    using namespace kxstr::unicode;
    return convert_within(from_kx, source, source_limit, destination, destination_limit);
}
}
