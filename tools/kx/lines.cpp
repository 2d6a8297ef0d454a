#include "lines.h"

#include <algorithm>
#include <cstring>

namespace kx {

LineReader::LineReader(const Encoding &form, const CodePage &text_page) : decoder_(make_decoder(form, text_page)) {
    constexpr KxChar line_feed = KX_LINE_FEED;
    make_encoder(form, text_page, text_page)->encode({&line_feed, 1}, line_end_);
}

std::optional<std::size_t> LineReader::first_line(std::span<const std::uint8_t> bytes) const noexcept {
    // No trail byte and no continuation byte equals a line feed, so one can be told without decoding.
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

std::size_t LineReader::mark_size(std::span<const std::uint8_t> line) {
    units_.clear();
    const auto result = decoder_->decode({line, 0, true}, units_);
    return units_.places.empty() ? result.consumed : units_.places.front();
}

std::optional<std::size_t> LineReader::decode(std::span<const std::uint8_t> line, std::vector<KxChar> &text) {
    // Not at the start of a file, where a byte order mark would be skipped.
    constexpr std::uint64_t inside = 1;
    units_.clear();
    const auto result = decoder_->decode({line, inside, true}, units_);
    auto &chars = units_.chars;
    if (!chars.empty() && chars.back() == KX_LINE_FEED) chars.pop_back();
    if (!chars.empty() && chars.back() == KX_CARRIAGE_RETURN) chars.pop_back();
    text.assign(chars.begin(), chars.end());
    text.push_back(0);
    if (result.bad_length == 0) return std::nullopt;
    return result.consumed;
}

} // namespace kx
