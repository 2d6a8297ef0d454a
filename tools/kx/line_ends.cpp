#include "line_ends.h"

#include <algorithm>

#include "core/kx_char.h"
#include "through_unicode.h"

namespace kx {
namespace {

using Bytes = std::span<const std::uint8_t>;

// In sums of a byte each, as many as processors add at once.
std::uint64_t count_of(Bytes bytes, std::uint8_t wanted) {
    constexpr std::size_t most = 255; // that a byte can count
    std::uint64_t count = 0;
    while (!bytes.empty()) {
        constexpr std::size_t lanes = 32;
        const std::size_t rows = std::min(bytes.size() / lanes, most);
        std::array<std::uint8_t, lanes> sums{};
        for (std::size_t row = 0; row < rows; ++row)
            for (std::size_t lane = 0; lane < lanes; ++lane)
                sums[lane] = static_cast<std::uint8_t>(sums[lane] + (bytes[row * lanes + lane] == wanted ? 1 : 0));
        for (const std::uint8_t sum : sums)
            count += sum;
        bytes = bytes.subspan(rows * lanes);
        if (rows == most) continue;
        count += static_cast<std::uint64_t>(std::ranges::count(bytes, wanted));
        break;
    }
    return count;
}

} // namespace

std::optional<LineEnds> find_line_ends(const std::string &name) {
    if (name == "keep") return LineEnds::keep;
    if (name == "lf") return LineEnds::lf;
    if (name == "crlf") return LineEnds::crlf;
    return std::nullopt;
}

ByteBuffer unit_of_control(std::uint8_t control, const Encoding &form) {
    if (form.kind == EncodingKind::system) { // which may put it elsewhere, or behind other bytes
        ByteBuffer bytes = bytes_of_character(control, form);
        if (bytes.size() != 1) bytes.clear();
        return bytes;
    }
    if (is_kx_encoding(form) && form.kind != EncodingKind::kx) return {};
    std::uint16_t value = control;
    for (const KxChar code : {KX_TAB, KX_LINE_FEED, KX_FORM_FEED, KX_CARRIAGE_RETURN})
        if (form.kind == EncodingKind::kx && kxstr::control_of_code(code) == control) value = code;
    const std::size_t size = unit_size(form);
    std::array<std::uint8_t, 4> unit{};
    for (std::size_t i = 0; i < sizeof value && i < size; ++i)
        unit[is_high_first(form) ? size - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
    return {unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size)};
}

bool has_lines(const Encoding &form) {
    return !unit_of_control('\n', form).empty() && !unit_of_control('\r', form).empty();
}

ByteBuffer byte_order_mark(const Encoding &form) {
    constexpr char32_t mark = 0xFEFF;
    if (form.kind == EncodingKind::utf8) return {0xEF, 0xBB, 0xBF};
    if (form.kind == EncodingKind::utf16le) return {0xFF, 0xFE};
    if (form.kind == EncodingKind::utf16be) return {0xFE, 0xFF};
    return goes_through_unicode(form) ? bytes_of_character(mark, form) : ByteBuffer{};
}

LineEndFilter::LineEndFilter(LineEnds wanted, const Encoding &form) : wanted_(wanted) {
    if (wanted == LineEnds::keep) return;
    carriage_return_ = unit_of_control('\r', form);
    line_feed_ = unit_of_control('\n', form);
}

void LineEndFilter::pass(ByteBuffer &bytes, bool last) {
    if (wanted_ == LineEnds::keep) return;
    const auto add = [&](Bytes unit) { passed_.insert(passed_.end(), unit.begin(), unit.end()); };
    passed_.clear();
    const std::size_t size = line_feed_.size();
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        const Bytes unit = Bytes(bytes).subspan(at, size);
        const bool ends = std::ranges::equal(unit, line_feed_);
        const bool returns = std::ranges::equal(unit, carriage_return_);
        // The return before a line end is written with it, or not at all.
        if (after_return_ && !ends && wanted_ == LineEnds::lf) add(carriage_return_);
        if (!after_return_ && ends && wanted_ == LineEnds::crlf) add(carriage_return_);
        if (!returns || wanted_ == LineEnds::crlf) add(unit);
        after_return_ = returns;
    }
    if (last && after_return_ && wanted_ == LineEnds::lf) add(carriage_return_);
    if (last) after_return_ = false;
    bytes.swap(passed_);
}

namespace {

const Encoding kUnits{EncodingKind::utf16le, {}};

// What a form is counted in: those that go through Unicode, in what they become.
const Encoding &counted(const Encoding &form) {
    return goes_through_unicode(form) ? kUnits : form;
}

} // namespace

TextPlace::TextPlace(const Encoding &form)
    : form_(counted(form)),
      unicode_(goes_through_unicode(form) ? std::make_unique<UnicodeText>(form) : nullptr),
      line_feed_(unit_of_control('\n', form_)),
      mark_(unicode_ ? ByteBuffer{} : byte_order_mark(form_)),
      is_double_byte_(form.kind == EncodingKind::code_page && is_double_byte(form.page)) {
    for (unsigned byte = 0x80; byte <= 0xFF && is_double_byte_; ++byte)
        is_lead_[byte] = is_lead_byte(form.page, static_cast<std::uint8_t>(byte));
}

void TextPlace::pass(Bytes bytes) {
    if (!unicode_) return pass_units(bytes);
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    for (std::size_t at = 0;;) {
        unicode_->load({Bytes(waiting_).subspan(at), offset_ + at, false});
        pass_units(unicode_->units());
        const std::size_t bad = unicode_->bad();
        column_ += bad != 0 ? 1 : 0;
        at += unicode_->size() + bad;
        if (bad != 0) continue;
        offset_ += at;
        waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(at));
        return;
    }
}

void TextPlace::pass_units(Bytes bytes) {
    const std::size_t unit = line_feed_.size();
    // A byte order mark stands before the first column.
    const bool has_mark = begins_ && !mark_.empty() && bytes.size() >= mark_.size() &&
                          std::ranges::equal(bytes.first(mark_.size()), mark_);
    if (!bytes.empty()) begins_ = false;
    std::size_t behind = 0; // the last line end
    if (unit == 1) {
        if (const std::uint64_t count = count_of(bytes, line_feed_[0]); count != 0) {
            line_ += count;
            behind =
                static_cast<std::size_t>(std::find(bytes.rbegin(), bytes.rend(), line_feed_[0]).base() - bytes.begin());
        }
    } else {
        for (std::size_t at = 0; at + unit <= bytes.size(); at += unit) {
            if (bytes[at] != line_feed_[0] || bytes[at + 1] != line_feed_[1]) continue;
            ++line_;
            behind = at + unit;
        }
    }
    if (behind != 0) {
        column_ = 1;
        after_lead_ = false;
    }
    column_ += characters_in(bytes.subspan(behind)) - (has_mark && behind == 0 ? 1 : 0);
}

std::size_t TextPlace::characters_in(Bytes bytes) {
    if (!is_double_byte_) return count_characters(form_, bytes);
    std::size_t count = 0;
    for (const std::uint8_t byte : bytes) { // a lead byte may have been the last one
        count += after_lead_ ? 0 : 1;
        after_lead_ = !after_lead_ && is_lead_[byte];
    }
    return count;
}

std::size_t count_characters(const Encoding &form, Bytes bytes) {
    std::size_t count = 0;
    switch (form.kind) {
    case EncodingKind::utf8:
        return static_cast<std::size_t>(
            std::ranges::count_if(bytes, [](std::uint8_t byte) { return (byte & 0xC0u) != 0x80; }));
    case EncodingKind::utf16le:
    case EncodingKind::utf16be: {
        const std::size_t high = is_high_first(form) ? 0 : 1;
        for (std::size_t at = 0; at < bytes.size(); at += 2)
            count += at + high < bytes.size() && (bytes[at + high] & 0xFCu) == 0xDC ? 0 : 1; // the second of a pair
        return count;
    }
    case EncodingKind::code_page:
        if (!is_double_byte(form.page)) return bytes.size();
        for (std::size_t at = 0; at < bytes.size(); ++count)
            at += is_lead_byte(form.page, bytes[at]) ? 2 : 1;
        return count;
    default: return bytes.size() / unit_size(form);
    }
}

} // namespace kx
