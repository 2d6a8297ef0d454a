#include "sort_input.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace kx {
namespace {

std::string name_of_character(const LackingCharacter &character, ByteSpan bytes) {
    if (character.value >= kNoCodePoint) return (bytes.size() == 1 ? "byte " : "bytes ") + hex(bytes);
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(character.value));
    return name;
}

} // namespace

bool LackingReport::add(std::size_t count, const LackingCharacter &first, ByteSpan bytes, const Place &place) {
    const std::string where = place.input + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
    const std::string name = name_of_character(first, bytes);
    if (request_.strict) {
        report(kSortCommand, where + ": " + name + " does not convert from " + name_of(request_.form.form));
        return false;
    }
    if (count_ == 0) first_ = name + " in " + where;
    count_ += count;
    return true;
}

void LackingReport::tell() const {
    if (count_ == 0) return;
    report(kSortCommand,
           "characters that KX lacks, behind all others: " + std::to_string(count_) + ", the first one " + first_);
}

void tell_half_character(const std::string &input) {
    report(kSortCommand, input + ": the input ends within a character");
}

// ---- LineInput ----

LineInput::LineInput(const SortRequest &request, const std::string &path)
    : request_(request), input_(kSortCommand, path), progress_(input_), reader_(request.form) {}

bool LineInput::next(LackingReport &report) {
    if (!good()) return false;
    std::optional<std::size_t> size;
    for (;;) {
        const ByteSpan rest = chunk_.bytes.subspan(done_);
        size = reader_.first_line(rest);
        if (size || chunk_.last) break;
        input_.consume(done_);
        done_ = 0;
        chunk_ = input_.next();
        if (!input_.good()) return false;
        progress_.at(chunk_.offset);
    }
    line_ = chunk_.bytes.subspan(done_);
    if (size) line_ = line_.first(*size);
    done_ += line_.size();
    if (number_ == 0) line_ = line_.subspan(reader_.mark_size(line_));
    if (line_.empty()) return false;
    if (line_.size() % reader_.line_end().size() != 0) {
        tell_half_character(name());
        good_ = false;
        return false;
    }
    ++number_;
    text_ = reader_.read_one(line_);
    if (reader_.lacking_count() > 0) {
        const LackingCharacter first = reader_.first_lacking();
        LineReader counter(request_.form);
        const std::size_t column = counter.count_characters(line_.first(first.place)) + 1;
        if (!report.add(reader_.lacking_count(), first, line_.subspan(first.place, first.length),
                        {name(), number_, column})) {
            good_ = false;
            return false;
        }
    }
    if (!size) missing_end_ = reader_.line_end();
    return true;
}

// ---- KeptLine ----

void KeptLine::keep(LineOrder &order, const LineInput &input) {
    const LineText &text = input.text();
    bytes_.assign(input.bytes().begin(), input.bytes().end());
    bytes_.insert(bytes_.end(), input.missing_end().begin(), input.missing_end().end());
    has_key_ = order.make_key(text, key_);
    chars_.resize(text.chars.size() + 1);
    *std::ranges::copy(text.chars, chars_.begin()).out = 0;
    lacking_.assign(text.lacking, text.lacking + std::count(chars_.begin(), chars_.end(), kLacking));
}

int KeptLine::compare(LineOrder &order, KeptLine &a, KeptLine &b) {
    if (a.has_key_ && b.has_key_) {
        const std::size_t both = std::min(a.key_.size(), b.key_.size());
        if (const int result = both == 0 ? 0 : std::memcmp(a.key_.data(), b.key_.data(), both); result != 0)
            return result;
        const bool cut = both == LineOrder::kLongestKey;
        if (!cut) return static_cast<int>(a.key_.size() > both) - static_cast<int>(b.key_.size() > both);
    }
    return order.compare(a.text(), b.text());
}

} // namespace kx
