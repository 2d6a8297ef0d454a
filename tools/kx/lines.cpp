#include "lines.h"

#include <algorithm>
#include <cstring>

#include "core/kx_char.h"
#include "platform/system.h"
#include "platform/utf16.h"
#include "simd/kernels.h"
#include "text/scalars.h"

namespace kx {
namespace {

constexpr KxChar kDotlessCapital = 0x01EE;
constexpr KxChar kCapitalWithDot = 0x0182;

// How many bytes a character of UTF-8 has by its first one.
std::size_t size_by_first(std::uint8_t byte) {
    return byte < 0xC2 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

LineReader::LineReader(const LineForm &form)
    : form_(form),
      decoder_(make_decoder(form.form, form.text_page)),
      end_unit_(form.zero_ends ? KxChar{0} : KX_LINE_FEED) {
    make_encoder(form.form, form.text_page, form.text_page)->encode({&end_unit_, 1}, line_end_);
    units_.placed = false;
}

std::optional<std::size_t> LineReader::first_line(std::span<const std::uint8_t> bytes) const noexcept {
    // No trail byte and no continuation byte equals a line end, so one can be told without decoding.
    if (line_end_.size() == 1) {
        const void *found = bytes.empty() ? nullptr : std::memchr(bytes.data(), line_end_[0], bytes.size());
        if (found == nullptr) return std::nullopt;
        return static_cast<const std::uint8_t *>(found) - bytes.data() + 1;
    }
    const std::size_t unit = line_end_.size();
    for (std::size_t at = 0; bytes.size() - at >= unit; at += unit) {
        if (std::ranges::equal(bytes.subspan(at, unit), line_end_)) return at + unit;
    }
    return std::nullopt;
}

std::size_t LineReader::lines_of(std::span<const std::uint8_t> bytes, std::size_t size) const noexcept {
    if (size >= bytes.size()) return bytes.size();
    const std::size_t start =
        size < line_end_.size() ? 0 : size / line_end_.size() * line_end_.size() - line_end_.size();
    const auto more = first_line(bytes.subspan(start));
    return more ? start + *more : bytes.size();
}

std::size_t LineReader::mark_size(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t longest = 4;
    DecodedText units;
    const auto result = decoder_->decode({bytes.first(std::min(bytes.size(), longest)), 0, true}, units);
    return units.places.empty() ? result.consumed : units.places.front();
}

void LineReader::read(std::span<const std::uint8_t> lines) {
    // Not at the start of a file, where a byte order mark would be skipped.
    constexpr std::uint64_t inside = 1;
    units_.clear();
    values_.clear();
    next_unit_ = next_value_ = 0;
    // At once, since a line may be as long as memory has room for; decoders ask for somewhat more than they need.
    constexpr std::size_t more = 8192;
    units_.chars.reserve(lines.size() / line_end_.size() + more);
    for (std::size_t at = 0; at < lines.size();) {
        const auto result = decoder_->decode({lines.subspan(at), inside, true}, units_);
        at += result.consumed;
        if (result.bad_length == 0) break;
        const std::uint32_t value = value_of(lines.subspan(at, result.bad_length));
        if (values_.empty()) first_lacking_ = {value, at, result.bad_length};
        values_.push_back(value);
        units_.chars.push_back(kLacking);
        at += result.bad_length;
    }
    has_zeros_ =
        kxstr::simd::kernels().find_within16(units_.chars.data(), units_.chars.size(), 0) < units_.chars.size();
    units_.chars.push_back(0);
    if (!form_.turkish) return;
    for (KxChar &ch : units_.chars)
        ch = ch == 'I' ? kDotlessCapital : ch == kCapitalWithDot ? KxChar{'I'} : ch;
}

LineText LineReader::next() {
    KxChar *const begin = units_.chars.data() + next_unit_;
    KxChar *const limit = units_.chars.data() + units_.chars.size() - 1;
    KxChar *const end =
        begin + kxstr::simd::kernels().find_within16(begin, static_cast<std::size_t>(limit - begin), end_unit_);
    next_unit_ = static_cast<std::size_t>(std::min(end + 1, limit) - units_.chars.data());
    KxChar *last = end;
    if (!form_.zero_ends && last != begin && last[-1] == KX_CARRIAGE_RETURN) --last;
    *last = 0;
    LineText text{{begin, last}, values_.data() + next_value_};
    if (next_value_ < values_.size()) next_value_ += static_cast<std::size_t>(std::count(begin, last, kLacking));
    if (has_zeros_) text.chars = text.chars.first(kxstr::simd::kernels().find_within16(begin, text.chars.size(), 0));
    return text;
}

std::size_t LineReader::count_characters(std::span<const std::uint8_t> bytes) {
    read(bytes);
    return units_.chars.size() - 1;
}

std::uint32_t LineReader::value_of(std::span<const std::uint8_t> bytes) const {
    const auto order = form_.form.kind == EncodingKind::utf16le ? kxstr::text::ByteOrder::low_first
                                                                : kxstr::text::ByteOrder::high_first;
    const auto unit_at = [&](std::size_t at) -> std::uint32_t { return kxstr::text::load_unit(&bytes[at], order); };
    switch (form_.form.kind) {
    case EncodingKind::utf8:
        // Malformed bytes never have the size that the first one asks for, but for single ones.
        if (bytes.size() > 1 && bytes.size() == size_by_first(bytes[0])) return kxstr::text::read_utf8(bytes).value;
        break;
    case EncodingKind::utf16le:
    case EncodingKind::utf16be:
        if (bytes.size() == 2) return unit_at(0);
        if (bytes.size() == 4) return kxstr::join_halves(unit_at(0), unit_at(2));
        break;
    case EncodingKind::code_page:
        if (const auto unit = kxstr::platform::to_wide(form_.form.page.windows_number, bytes)) return *unit;
        break;
    default: break;
    }
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return kNoCodePoint + value;
}

} // namespace kx
