#include "text/converter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <optional>
#include <type_traits>

#include "codepage/descriptor.h"
#include "tables/compositions.h"

namespace kxstr::text {
namespace {

constexpr std::size_t kBlock = 2048;         // units on the way; both buffers stay in the nearest cache
constexpr std::size_t kBlockBehindStop = 32; // where one character went by itself the next such is often near
constexpr std::size_t kLongest = 4;          // bytes of a character
constexpr std::uint16_t kVietnamese = 1258;
// The lowest byte that can follow a lead byte. A lower one (a line end, a space, a digit) is a character of its own, so
// that a stray lead byte does not take it along.
constexpr std::uint8_t kFirstTrailByte = 0x40;

constexpr ByteOrder kOwnOrder =
    std::endian::native == std::endian::little ? ByteOrder::low_first : ByteOrder::high_first;

// ---- Forms ----

std::optional<CodePage> find_page(std::uint32_t number) noexcept {
    // 934 and 938 number the same characters as 949 and 950.
    if (number == 934) number = 949;
    if (number == 938) number = 950;
    for (const CodePage page : {page_of_kx_number(number), page_of_windows_number(number)})
        if (codepage::find_code_page(page.kx_number) != nullptr || is_double_byte(page)) return page;
    return std::nullopt;
}

std::optional<CodePage> find_page(const KxTextForm &form, std::uint32_t KxCodePage::*number) noexcept {
    if (form.page == nullptr) return find_page(form.code_page);
    const KxCodePage &given = *form.page;
    const tables::CodePage known = codepage::code_page_or_none(given.*number);
    const bool is_ours =
        given.low_table == known.low() && given.high_table == known.high() && given.reverse_table == known.reverse();
    CodePage page = find_page(given.*number).value_or(CodePage{given.*number, given.*number});
    if (!is_ours) page.own = form.page;
    return page;
}

// Without the page of KX text, which may come from the other side.
std::optional<Side> side_of(const KxTextForm &form, std::uint32_t KxCodePage::*number) noexcept {
    switch (form.form) {
    case KX_TEXT_CODE_PAGE: {
        const auto page = find_page(form, number);
        if (!page) return std::nullopt;
        return Side{is_double_byte(*page) ? Kind::double_byte : Kind::single_byte, kOwnOrder, *page};
    }
    case KX_TEXT_UTF8: return Side{Kind::utf8, kOwnOrder, {}};
    case KX_TEXT_UTF16: return Side{Kind::utf16, kOwnOrder, {}};
    case KX_TEXT_UTF16LE: return Side{Kind::utf16, ByteOrder::low_first, {}};
    case KX_TEXT_UTF16BE: return Side{Kind::utf16, ByteOrder::high_first, {}};
    case KX_TEXT_KX:
    case KX_TEXT_KXLE: {
        Side side{Kind::kx, form.form == KX_TEXT_KX ? kOwnOrder : ByteOrder::low_first, {}};
        if (form.code_page == 0 && form.page == nullptr) return side;
        const auto page = find_page(form, number);
        if (!page) return std::nullopt;
        side.page = *page;
        return side;
    }
    default: return std::nullopt;
    }
}

RuleOfPages rule_of(const Side &from, const Side &to, LineEnds ends) noexcept {
    if (from.kind != Kind::kx) {
        const Rule rule = from.is_code_page() ? Rule::kx_of_code : Rule::kx_of_unicode;
        return {rule, ends, to.page, from.page};
    }
    const Rule rule = to.kind == Kind::kx ? Rule::kx_of_kx : to.is_code_page() ? Rule::code_of_kx : Rule::unicode_of_kx;
    return {rule, ends, from.page, to.page};
}

// ---- Units ----

std::size_t most_bytes(Kind kind) noexcept {
    return kind == Kind::single_byte ? 1 : kind == Kind::utf8 ? 3 : 2;
}

// Where there is no table for it.
simd::Progress read_exact_codes(const Converter &converter, std::span<const std::uint8_t> bytes,
                                std::uint16_t *units) noexcept {
    simd::Progress done{0, 0};
    while (done.read < bytes.size()) {
        const std::uint8_t byte = bytes[done.read];
        unsigned code = byte;
        const std::size_t size = converter.leads[byte] != 0 ? 2 : 1;
        if (size > bytes.size() - done.read) break;
        if (size == 2) {
            if (bytes[done.read + 1] < kFirstTrailByte) break;
            code = code << 8 | bytes[done.read + 1];
        }
        units[done.written] = unit_of_code(converter.from.page, static_cast<std::uint16_t>(code));
        if (units[done.written] == KX_NONE) break;
        ++done.written;
        done.read += size;
    }
    return done;
}

// Units of 16 bits as bytes in an order of their own, many at a time; the two do not overlap.
void copy_units(const void *from, std::size_t count, ByteOrder order, void *to) noexcept {
    std::memcpy(to, from, 2 * count);
    if (order == kOwnOrder) return;
    auto *const bytes = static_cast<std::uint8_t *>(to);
    for (std::size_t i = 0; i < count; ++i)
        std::swap(bytes[2 * i], bytes[2 * i + 1]);
}

std::size_t before_surrogate(std::span<const std::uint16_t> units) noexcept {
    std::size_t done = 0;
    for (;; ++done) { // what lies above them is rare
        done += simd::kernels().outside16(units.data() + done, units.size() - done, 0, 0xD7FF);
        if (done == units.size() || is_surrogate(units[done])) return done;
    }
}

// The plain units at the start of some bytes, at most kBlock bytes.
simd::Progress read_units(const Converter &converter, std::span<const std::uint8_t> bytes,
                          std::uint16_t *units) noexcept {
    const simd::Kernels &kernels = simd::kernels();
    switch (converter.from.kind) {
    case Kind::single_byte: {
        const std::size_t done = kernels.translate8(bytes.data(), bytes.size(), units, converter.units);
        return {done, done};
    }
    case Kind::double_byte: {
        // A second byte that is too low makes a code without a character, at which the translation stops.
        if (converter.exact && converter.units_of_codes == nullptr) return read_exact_codes(converter, bytes, units);
        return kernels.decode_pairs(converter.units_of_codes, converter.leads, bytes.data(), bytes.size(), units);
    }
    case Kind::utf8: return kernels.units_of_utf8(bytes.data(), bytes.size(), units);
    case Kind::utf16:
    case Kind::kx: break;
    }
    std::size_t done = bytes.size() / 2;
    copy_units(bytes.data(), done, converter.from.order, units);
    if (converter.from.kind == Kind::utf16) done = before_surrogate({units, done});
    return {2 * done, done};
}

// What becomes of them, up to the first one that does not convert. Returns how many were done.
std::size_t translate(Converter &converter, std::uint16_t *units, std::size_t count) noexcept {
    const bool as_read = converter.from.kind == Kind::single_byte; // by their table
    if (converter.exact || converter.same || as_read) return count;
    std::size_t done = 0;
    for (;;) {
        done += simd::kernels().translate16(units + done, count - done, units + done, converter.pages);
        if (done == count) return done;
        const unsigned number = units[done] >> 8;
        if (converter.pages[number] != nullptr || converter.shared == nullptr) return done;
        converter.pages[number] = page_of(*converter.shared, number);
        if (converter.pages[number] == nullptr) return done;
    }
}

bool goes_by_map(const Converter &converter) noexcept {
    return converter.map != nullptr && converter.from.kind != Kind::single_byte; // which has it as its table
}

// The same by a map, KX_NONE included, at which the writing stops. Returns how many they became. `to` has room for two
// each.
std::size_t map_units(const Converter &converter, std::span<const std::uint16_t> units, std::uint16_t *to) noexcept {
    constexpr std::size_t group = 16; // where none becomes two, no place waits for those before
    std::size_t count = 0;
    for (std::size_t done = 0; done < units.size(); done += group) {
        const auto some = units.subspan(done, std::min(group, units.size() - done));
        unsigned seconds = 0;
        for (std::size_t i = 0; i < some.size(); ++i) {
            const Mapped mapped = converter.map[some[i]];
            to[count + i] = mapped.first;
            seconds |= mapped.second;
        }
        if (seconds == 0) {
            count += some.size();
            continue;
        }
        for (const std::uint16_t unit : some) {
            const Mapped mapped = converter.map[unit];
            to[count++] = mapped.first;
            if (mapped.second != 0) to[count++] = mapped.second;
        }
    }
    return count;
}

// From how many of these the first `count` were made.
std::size_t units_behind(const Converter &converter, std::span<const std::uint16_t> units, std::size_t count) noexcept {
    std::size_t done = 0;
    for (std::size_t made = 0; done < units.size(); ++done) {
        made += converter.map[units[done]].second != 0 ? 2 : 1;
        if (made > count) break;
    }
    return done;
}

simd::Progress write_units(const Converter &converter, std::span<const std::uint16_t> units,
                           std::uint8_t *bytes) noexcept {
    const simd::Kernels &kernels = simd::kernels();
    switch (converter.to.kind) {
    case Kind::utf8: return kernels.utf8_of_units(units.data(), units.size(), bytes);
    case Kind::single_byte:
    case Kind::double_byte:
        if (!converter.exact) return kernels.bytes_of_codes(units.data(), units.size(), bytes);
        if (converter.codes_of_units != nullptr)
            return kernels.bytes_of_mapped(converter.codes_of_units, units.data(), units.size(), bytes);
        if (converter.to.kind == Kind::double_byte) return {0, 0}; // one by one
        break;
    case Kind::utf16:
    case Kind::kx: break;
    }
    std::size_t done = 0;
    if (converter.to.kind == Kind::single_byte) {
        for (; done < units.size(); ++done) {
            bytes[done] = converter.bytes[units[done]];
            if (bytes[done] == 0 && units[done] != 0) break;
        }
        return {done, done};
    }
    done = converter.same ? units.size() : kernels.find_within16(units.data(), units.size(), KX_NONE);
    copy_units(units.data(), done, converter.to.order, bytes);
    return {done, 2 * done};
}

// ---- Letters and marks ----

bool is_mark(std::uint32_t unit) noexcept {
    return (0x0300 <= unit && unit <= 0x036F) || (0x0653 <= unit && unit <= 0x0655);
}

// A letter that may take a mark.
bool is_base(std::uint32_t unit) noexcept {
    const auto &all = tables::kCompositions;
    const auto *const found = std::ranges::lower_bound(all, unit, {}, &tables::Composition::letter);
    return found != all.end() && found->letter == unit;
}

// The character that they are, or 0.
std::uint16_t compose(std::uint16_t letter, std::uint16_t mark) noexcept {
    const tables::Composition wanted{letter, mark, 0};
    const auto &all = tables::kCompositions;
    const auto *const found = std::ranges::lower_bound(all, wanted.key(), {}, &tables::Composition::key);
    return found != all.end() && found->key() == wanted.key() ? found->character : std::uint16_t{0};
}

// How many of the units are plain: up to a letter with a mark, or one that what follows may give a mark.
std::size_t count_plain(std::span<const std::uint16_t> units, bool more_follows) noexcept {
    bool has_mark = false;
    for (const std::uint16_t unit : units) // to the end, as the compiler makes vectors of it
        has_mark |= is_mark(unit);
    if (has_mark) {
        const auto before = static_cast<std::size_t>(std::ranges::find_if(units, is_mark) - units.begin());
        return before == 0 ? 0 : before - 1;
    }
    return more_follows && !units.empty() && is_base(units.back()) ? units.size() - 1 : units.size();
}

// The bytes that so many units were read from.
std::size_t bytes_of_units(const Converter &converter, std::span<const std::uint8_t> bytes,
                           std::size_t units) noexcept {
    std::size_t at = 0;
    switch (converter.from.kind) {
    case Kind::single_byte: return units;
    case Kind::utf16:
    case Kind::kx: return 2 * units;
    case Kind::double_byte:
        for (; units != 0; --units)
            at += converter.leads[bytes[at]] != 0 ? 2 : 1;
        return at;
    case Kind::utf8:
        for (; units != 0; --units)
            at += bytes[at] < 0x80 ? 1 : bytes[at] < 0xE0 ? 2 : 3;
        return at;
    }
    return at;
}

// Blocks of plain units, as far as they go and surely fit. The first one has `block` bytes at most, and as long as they
// are plain they grow.
simd::Progress convert_blocks(Converter &converter, std::span<const std::uint8_t> source, bool last,
                              std::span<std::uint8_t> destination, std::size_t block) noexcept {
    const bool by_map = goes_by_map(converter);
    const std::size_t most = most_bytes(converter.to.kind) * (by_map ? 2 : 1);
    const bool from_single = converter.from.kind == Kind::single_byte;
    if (converter.by_bytes) {
        return simd::kernels().utf8_of_bytes(converter.utf8, source.data(),
                                             std::min(source.size(), destination.size() / most), destination.data());
    }
    if (converter.exact && converter.from.kind == Kind::utf8 && converter.to.kind == Kind::single_byte) {
        return simd::kernels().bytes_of_utf8(converter.bytes, source.data(),
                                             std::min(source.size(), destination.size()), destination.data());
    }
    std::uint16_t units[kBlock], mapped[2 * kBlock];
    simd::Progress done{0, 0};
    for (;;) {
        const auto bytes = source.subspan(
            done.read, std::min({block, source.size() - done.read, (destination.size() - done.written) / most}));
        simd::Progress read = read_units(converter, bytes, units);
        if (converter.composes) {
            const bool more_follows = !last || read.read < source.size() - done.read;
            if (from_single) simd::kernels().translate8(bytes.data(), read.read, units, converter.letters);
            const std::size_t plain = count_plain(std::span(units).first(read.written), more_follows);
            if (plain < read.written) read = {bytes_of_units(converter, bytes, plain), plain};
            if (from_single) read = read_units(converter, bytes.first(plain), units);
        }
        const auto source_units = std::span<const std::uint16_t>(units).first(read.written);
        const std::size_t good =
            by_map ? map_units(converter, source_units, mapped) : translate(converter, units, read.written);
        simd::Progress written =
            write_units(converter, {by_map ? mapped : units, good}, destination.data() + done.written);
        if (by_map)
            written.read = written.read == good ? read.written : units_behind(converter, source_units, written.read);
        done.written += written.written;
        if (written.read < read.written) {
            done.read += bytes_of_units(converter, bytes, written.read);
            return done;
        }
        done.read += read.read;
        const bool cut_short = read.read + kLongest <= bytes.size();
        if (read.read == 0 || cut_short) return done;
        block = std::min(2 * block, kBlock);
    }
}

// ---- One character ----

Scalar read_one(const Converter &converter, std::span<const std::uint8_t> bytes) noexcept {
    switch (converter.from.kind) {
    case Kind::single_byte: {
        const std::uint16_t unit = converter.units[bytes[0]];
        return {unit == KX_NONE ? Scalar::malformed : Scalar::character, 1, unit};
    }
    case Kind::double_byte: {
        const std::size_t length = converter.leads[bytes[0]] != 0 ? 2 : 1;
        if (length > bytes.size()) return {Scalar::incomplete, 1, 0};
        if (length == 2 && bytes[1] < kFirstTrailByte) return {Scalar::malformed, 1, 0};
        const auto code = static_cast<std::uint16_t>(length == 2 ? bytes[0] << 8 | bytes[1] : bytes[0]);
        if (!converter.exact) return {Scalar::character, length, code};
        const std::uint16_t unit = unit_of_code(converter.from.page, code);
        return {unit == KX_NONE ? Scalar::malformed : Scalar::character, length, unit};
    }
    case Kind::utf8: return read_utf8(bytes);
    case Kind::utf16: return read_utf16(bytes, converter.from.order);
    case Kind::kx: break;
    }
    if (bytes.size() < 2) return {Scalar::incomplete, 1, 0};
    return {Scalar::character, 2, load_unit(bytes.data(), converter.from.order)};
}

// The same with the marks behind it. One that may get some from what follows is incomplete.
Scalar read_with_marks(const Converter &converter, std::span<const std::uint8_t> bytes, bool last) noexcept {
    Scalar one = read_one(converter, bytes);
    if (!converter.composes || one.kind != Scalar::character) return one;
    const bool from_single = converter.from.kind == Kind::single_byte;
    std::uint32_t letter = from_single ? converter.letters[bytes[0]] : one.value;
    while (is_base(letter)) {
        const auto rest = bytes.subspan(one.length);
        const Scalar next = rest.empty() ? Scalar{Scalar::incomplete, 0, 0} : read_one(converter, rest);
        if (next.kind == Scalar::incomplete && !last) return {Scalar::incomplete, bytes.size(), 0};
        if (next.kind != Scalar::character) break;
        const std::uint32_t mark = from_single ? converter.letters[rest[0]] : next.value;
        const std::uint16_t both =
            is_mark(mark) ? compose(static_cast<std::uint16_t>(letter), static_cast<std::uint16_t>(mark)) : 0;
        if (both == 0) break;
        letter = both;
        one.value = from_single ? kx_of_unicode(converter.to.page, both, converter.rule.ends) : both;
        one.length += next.length;
    }
    return one;
}

std::size_t write_code(std::uint16_t code, std::uint8_t *bytes) noexcept {
    if (code == KX_NONE) return 0;
    std::size_t size = 0;
    if (code > 0xFF) bytes[size++] = static_cast<std::uint8_t>(code >> 8);
    bytes[size++] = static_cast<std::uint8_t>(code);
    return size;
}

// A letter and its mark to page 1258, which has marks under codes of their own.
std::size_t write_apart(const Converter &converter, LetterAndTone parts, std::uint8_t *bytes) noexcept {
    bytes[0] = converter.bytes[parts.letter];
    bytes[1] = converter.bytes[parts.tone];
    return bytes[0] != 0 && bytes[1] != 0 ? 2 : 0;
}

// What reading that page has made one character of.
LetterAndTone parts_of_kx(const CodePage &page, KxChar ch) noexcept {
    const auto &all = tables::kCompositions;
    const auto *const found = std::ranges::find(all, unicode_of_kx(page, ch), &tables::Composition::character);
    return found != all.end() ? LetterAndTone{found->letter, found->mark} : LetterAndTone{0, 0};
}

// The bytes of a character, at most kLongest; 0 when there are none.
std::size_t write_exact(const Converter &converter, std::uint32_t character, std::uint8_t *bytes) noexcept {
    switch (converter.to.kind) {
    case Kind::utf8: return write_utf8(character, bytes);
    case Kind::utf16: return write_utf16(character, bytes, converter.to.order);
    default: break;
    }
    if (character > 0xFFFF) return 0;
    const auto unit = static_cast<std::uint16_t>(character);
    if (converter.to.kind == Kind::double_byte) return write_code(double_byte_code_of(converter.to.page, unit), bytes);
    bytes[0] = converter.bytes[unit];
    if (bytes[0] != 0 || unit == 0) return 1;
    return converter.to.page.windows_number == kVietnamese ? write_apart(converter, vietnamese_parts(unit), bytes) : 0;
}

// A unit of the form that is written.
std::size_t write_unit(const Converter &converter, std::uint16_t unit, std::uint8_t *bytes) noexcept {
    switch (converter.to.kind) {
    case Kind::utf8: return is_surrogate(unit) ? 0 : write_utf8(unit, bytes);
    case Kind::utf16: return is_surrogate(unit) ? 0 : write_utf16(unit, bytes, converter.to.order);
    case Kind::single_byte:
    case Kind::double_byte: return write_code(unit, bytes);
    case Kind::kx: break;
    }
    store_unit(unit, bytes, converter.to.order);
    return 2;
}

std::size_t write_one(const Converter &converter, std::uint32_t character, std::uint8_t *bytes) noexcept {
    if (converter.exact) return write_exact(converter, character, bytes);
    if (character > 0xFFFF) return 0;
    auto unit = static_cast<std::uint16_t>(character);
    if (goes_by_map(converter)) {
        const Mapped mapped = converter.map[unit];
        if (mapped.first == KX_NONE) return 0;
        const std::size_t size = write_unit(converter, mapped.first, bytes);
        return mapped.second == 0 ? size : size + write_unit(converter, mapped.second, bytes + size);
    }
    if (!converter.same && converter.from.kind != Kind::single_byte) unit = converter.rule(unit);
    if (unit == KX_NONE && !converter.same) {
        const bool apart = converter.map == nullptr && converter.to.kind == Kind::single_byte &&
                           converter.to.page.windows_number == kVietnamese;
        const auto ch = static_cast<KxChar>(character);
        return apart ? write_apart(converter, parts_of_kx(converter.from.page, ch), bytes) : 0;
    }
    return write_unit(converter, unit, bytes);
}

} // namespace

bool prepare(Converter &converter, const KxTextForm &from, const KxTextForm &to, std::uint32_t flags) noexcept {
    const auto source = side_of(from, &KxCodePage::input_code_page);
    const auto target = side_of(to, &KxCodePage::output_code_page);
    if (!source || !target) return false;
    Side read = *source, written = *target;
    const auto lacks_page = [](const Side &side) { return side.kind == Kind::kx && side.page == CodePage{}; };
    const CodePage western = page_of_windows_number(1252);
    for (auto [side, other] : {std::pair{&read, &written}, std::pair{&written, &read}})
        if (lacks_page(*side)) side->page = other->page == CodePage{} ? western : other->page;

    converter = {};
    converter.from = read;
    converter.to = written;
    converter.exact = read.kind != Kind::kx && written.kind != Kind::kx;
    converter.same = read.kind == Kind::kx && written.kind == Kind::kx && read.page == written.page;
    const bool has_marks = read.kind == Kind::utf8 || read.kind == Kind::utf16 ||
                           (read.kind == Kind::single_byte && read.page.windows_number == kVietnamese);
    converter.composes = has_marks && written.kind == Kind::kx;
    converter.replaces = (flags & KX_TEXT_DROP) != 0;
    const LineEnds ends = (flags & KX_TEXT_GLYPHS) != 0 ? LineEnds::glyphs : LineEnds::codes;
    converter.rule = rule_of(read, written, ends);
    fill_leads(read.page, converter.leads);
    if (converter.composes && read.kind == Kind::single_byte) fill_units(read.page, converter.letters);
    if (!converter.exact && written.kind == Kind::single_byte && written.page.windows_number == kVietnamese) {
        simd::MapPage units;
        fill_units(written.page, units);
        fill_bytes(units, converter.bytes);
    }
    if (converter.exact) {
        if (read.kind == Kind::single_byte) {
            fill_units(read.page, converter.units);
            converter.by_bytes = written.kind == Kind::utf8 && fill_utf8(converter.units, converter.utf8);
        }
        if (read.kind == Kind::double_byte) converter.units_of_codes = units_of_codes(read.page);
        if (written.kind == Kind::double_byte) converter.codes_of_units = codes_of_units(written.page);
        if (written.kind == Kind::single_byte) {
            simd::MapPage units;
            fill_units(written.page, units);
            fill_bytes(units, converter.bytes);
        }
    } else if (read.kind == Kind::single_byte) {
        for (unsigned byte = 0; byte <= 0xFF; ++byte)
            converter.units.set(byte, converter.rule(static_cast<std::uint16_t>(byte)));
    } else if (!converter.same) {
        converter.shared = shared_pages(converter.rule);
    }
    return true;
}

bool set_substitute(Converter &converter, std::uint32_t character) noexcept {
    if (character > kLastScalar || is_surrogate(character)) return false;
    std::uint8_t bytes[kLongest];
    std::size_t size = 0;
    if (converter.exact) {
        size = write_exact(converter, character, bytes);
    } else if (character <= 0xFFFF) {
        // By way of the KX text: the page of the text that is written is the one that counts.
        const Side &to = converter.to;
        const CodePage &page = to.page == CodePage{} ? converter.from.page : to.page;
        const LineEnds ends = converter.rule.ends;
        const KxChar ch = kx_of_unicode(page, static_cast<std::uint16_t>(character), ends);
        if (ch == KX_NONE) return false;
        if (to.kind == Kind::kx) {
            store_unit(ch, bytes, to.order);
            size = 2;
        } else if (to.is_code_page()) {
            size = write_code(code_of_kx(to.page, page, ch, ends), bytes);
        } else if (const std::uint16_t unit = unicode_of_kx(page, ch); unit != KX_NONE) {
            size = to.kind == Kind::utf8 ? write_utf8(unit, bytes) : write_utf16(unit, bytes, to.order);
        }
    }
    if (size == 0) return false;
    std::copy_n(bytes, size, converter.substitute);
    converter.substitute_size = static_cast<std::uint8_t>(size);
    converter.replaces = true;
    return true;
}

std::uint32_t convert(Converter &converter, std::span<const std::uint8_t> source, bool last,
                      std::span<std::uint8_t> destination, KxTextResult &result) noexcept {
    result = {};
    for (std::size_t block = kBlock; result.read < source.size(); block = kBlockBehindStop) {
        const simd::Progress done =
            convert_blocks(converter, source.subspan(result.read), last, destination.subspan(result.written), block);
        result.read += done.read;
        result.written += done.written;
        if (result.read == source.size()) break;

        const Scalar one = read_with_marks(converter, source.subspan(result.read), last);
        if (one.kind == Scalar::incomplete && !last) {
            result.fault = one.length;
            return KX_TEXT_INCOMPLETE;
        }
        std::uint8_t bytes[2 * kLongest]; // by a map there may be two
        std::size_t size = one.kind == Scalar::character ? write_one(converter, one.value, bytes) : 0;
        const std::uint8_t *from = bytes;
        const bool converts = size != 0;
        if (!converts) {
            if (!converter.replaces) {
                result.fault = one.length;
                return one.kind == Scalar::character ? KX_TEXT_NO_EQUIVALENT : KX_TEXT_MALFORMED;
            }
            from = converter.substitute;
            size = converter.substitute_size;
        }
        if (size > destination.size() - result.written) return KX_TEXT_FULL;
        if (size != 0) std::memcpy(destination.data() + result.written, from, size);
        result.read += one.length;
        result.written += size;
        if (!converts) ++result.replaced;
    }
    return KX_TEXT_DONE;
}

namespace {

static_assert(sizeof(Converter) <= sizeof(KxTextConverter) && alignof(KxTextConverter) % alignof(Converter) == 0);
static_assert(std::is_trivially_copyable_v<Converter>);

Converter &converter_in(KxTextConverter *place) noexcept {
    return *std::launder(reinterpret_cast<Converter *>(place));
}

std::span<const std::uint8_t> bytes_of(const void *bytes, std::size_t count) noexcept {
    return {static_cast<const std::uint8_t *>(bytes), count};
}

} // namespace

void keep_marks_apart(KxTextConverter &converter) noexcept {
    converter_in(&converter).composes = false;
}

void set_map(KxTextConverter &place, const Mapped *map) noexcept {
    Converter &converter = converter_in(&place);
    converter.exact = false;
    converter.map = map;
    converter.units_of_codes = converter.codes_of_units = nullptr; // codes are read and written as they are
    if (converter.from.kind != Kind::single_byte) return;
    for (unsigned byte = 0; byte <= 0xFF; ++byte)
        converter.units.set(byte, map[byte].second == 0 ? map[byte].first : KX_NONE);
    converter.by_bytes = converter.to.kind == Kind::utf8 && fill_utf8(converter.units, converter.utf8);
}

std::size_t size_of_first(const KxTextConverter &converter, std::span<const std::uint8_t> source) noexcept {
    constexpr bool last = true;
    return read_with_marks(*std::launder(reinterpret_cast<const Converter *>(&converter)), source, last).length;
}

} // namespace kxstr::text

extern "C" {

uint32_t KxTextPrepare(KxTextConverter *converter, const KxTextForm *from, const KxTextForm *to, uint32_t flags) {
    return kxstr::text::prepare(*new (converter) kxstr::text::Converter, *from, *to, flags) ? 1 : 0;
}

uint32_t KxTextSubstitute(KxTextConverter *converter, uint32_t character) {
    return kxstr::text::set_substitute(kxstr::text::converter_in(converter), character) ? 1 : 0;
}

uint32_t KxTextConvert(KxTextConverter *converter, const void *source, size_t length, uint32_t last, void *destination,
                       size_t room, KxTextResult *result) {
    return kxstr::text::convert(kxstr::text::converter_in(converter), kxstr::text::bytes_of(source, length), last != 0,
                                {static_cast<std::uint8_t *>(destination), room}, *result);
}

uint32_t KxTextMeasure(KxTextConverter *converter, const void *source, size_t length, uint32_t last,
                       KxTextResult *result) {
    std::uint8_t room[4096];
    KxTextResult all{};
    std::uint32_t status = 0;
    do {
        KxTextResult part;
        status = kxstr::text::convert(kxstr::text::converter_in(converter),
                                      kxstr::text::bytes_of(source, length).subspan(all.read), last != 0, room, part);
        all.read += part.read;
        all.written += part.written;
        all.replaced += part.replaced;
        all.fault = part.fault;
    } while (status == KX_TEXT_FULL);
    *result = all;
    return status;
}

size_t KxTextMark(uint32_t form, const void *source, size_t length) {
    KxTextForm marked{form, 0, nullptr};
    const auto side = kxstr::text::side_of(marked, &KxCodePage::input_code_page);
    if (!side || length == 0 || form == KX_TEXT_CODE_PAGE) return 0;
    const auto bytes = kxstr::text::bytes_of(source, length);
    const kxstr::text::Scalar first = side->kind == kxstr::text::Kind::utf8 ? kxstr::text::read_utf8(bytes)
                                      : side->kind == kxstr::text::Kind::utf16
                                          ? kxstr::text::read_utf16(bytes, side->order)
                                          : kxstr::text::Scalar{};
    constexpr std::uint32_t mark = 0xFEFF;
    return first.kind == kxstr::text::Scalar::character && first.value == mark ? first.length : 0;
}

} // extern "C"
