#include "sort_order.h"

#include <algorithm>
#include <charconv>

namespace kx {
namespace {

using Chars = std::span<KxChar>;

std::size_t skip_blanks(Chars line, std::size_t at) {
    while (at < line.size() && is_blank(line[at]))
        ++at;
    return at;
}

std::size_t skip_field(Chars line, std::size_t at) {
    at = skip_blanks(line, at);
    while (at < line.size() && !is_blank(line[at]))
        ++at;
    return at;
}

std::size_t find_separator(Chars line, std::size_t at, KxChar separator) {
    return static_cast<std::size_t>(std::find(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(), separator) -
                                    line.begin());
}

std::size_t add_characters(Chars line, std::size_t at, std::size_t count) {
    return count < line.size() - at ? at + count : line.size();
}

std::size_t begin_of(const Field &field, const std::optional<KxChar> &separator, Chars line) {
    std::size_t at = 0;
    for (std::size_t skipped = 0; skipped < field.first && at < line.size(); ++skipped) {
        if (separator) {
            at = std::min(find_separator(line, at, *separator) + 1, line.size());
        } else {
            at = skip_field(line, at);
        }
    }
    if (field.skip_blanks) at = skip_blanks(line, at);
    return add_characters(line, at, field.first_character);
}

std::size_t end_of(const Field &field, const std::optional<KxChar> &separator, Chars line) {
    if (field.last == Field::kLineEnd) return line.size();
    const bool whole_field = field.end_character == 0;
    std::size_t at = 0;
    for (std::size_t left = field.last + (whole_field ? 1 : 0); left > 0 && at < line.size(); --left) {
        if (separator) {
            at = find_separator(line, at, *separator);
            if (at < line.size() && (left > 1 || !whole_field)) ++at;
        } else {
            at = skip_field(line, at);
        }
    }
    if (whole_field) return at;
    if (field.skip_blanks_to_end) at = skip_blanks(line, at);
    return add_characters(line, at, field.end_character);
}

// A part of a line as a text of its own, while this is there.
class Part {
  public:
    Part(const SortPart &part, const std::optional<KxChar> &separator, const LineText &line) : text_(line) {
        if (!part.whole) {
            const std::size_t begin = begin_of(part.field, separator, line.chars);
            const std::size_t end = std::max(begin, end_of(part.field, separator, line.chars));
            text_.lacking +=
                std::count(line.chars.begin(), line.chars.begin() + static_cast<std::ptrdiff_t>(begin), kLacking);
            text_.chars = line.chars.subspan(begin, end - begin);
        }
        behind_ = text_.chars.data() + text_.chars.size();
        was_behind_ = *behind_;
        *behind_ = 0;
    }
    ~Part() { *behind_ = was_behind_; }
    Part(const Part &) = delete;
    Part &operator=(const Part &) = delete;

    const LineText &text() const { return text_; }

  private:
    LineText text_;
    KxChar *behind_;
    KxChar was_behind_;
};

void invert(std::vector<std::uint8_t> &key, std::size_t from) {
    std::for_each(key.begin() + static_cast<std::ptrdiff_t>(from), key.end(),
                  [](std::uint8_t &byte) { byte = static_cast<std::uint8_t>(~byte); });
}

int order_of(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b) {
    return a < b ? -1 : a == b ? 0 : 1;
}

// ---- -k ----

// A number at the start of the text, which is taken off it. A number too large for its type is as good as the largest.
bool take_number(std::string_view &text, std::size_t &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument) return false;
    if (error == std::errc::result_out_of_range) number = Field::kLineEnd - 1;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

// The flags behind a position. Gives the first one that is none of ours, or 0.
char take_flags(std::string_view &text, SortPart &part, bool &skip_blanks, bool &has_flags) {
    for (; !text.empty() && text[0] != ','; text.remove_prefix(1)) {
        switch (text[0]) {
        case 'b': skip_blanks = true; break;
        case 'f': part.collation.case_counts = false; break;
        case 'n': part.numeric = true; break;
        case 'r': part.reverse = true; break;
        default: return text[0];
        }
        has_flags = true;
    }
    return 0;
}

std::string fault_of_flag(char flag) {
    constexpr std::string_view of_sort = "dghiMRV";
    const std::string name(1, flag);
    if (of_sort.find(flag) != std::string_view::npos)
        return "flag '" + name + "' of sort(1), which kx sort does not have";
    return "'" + name + "' where a flag (b, f, n or r) or a comma may stand";
}

std::string fault_in_key(std::string_view text, SortPart &part, bool &has_flags) {
    Field &field = part.field;
    if (!take_number(text, field.first)) return "no number of a field";
    if (field.first-- == 0) return "fields are counted from 1";
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!take_number(text, field.first_character)) return "no number of a character";
        if (field.first_character-- == 0) return "characters are counted from 1";
    }
    if (const char flag = take_flags(text, part, field.skip_blanks, has_flags); flag != 0) return fault_of_flag(flag);
    if (text.empty()) return "";
    text.remove_prefix(1);
    if (!take_number(text, field.last)) return "no number of a field behind the comma";
    if (field.last-- == 0) return "fields are counted from 1";
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!take_number(text, field.end_character)) return "no number of a character";
    }
    if (const char flag = take_flags(text, part, field.skip_blanks_to_end, has_flags); flag != 0)
        return fault_of_flag(flag);
    return text.empty() ? "" : "more than one comma";
}

} // namespace

std::string read_key(const std::string &argument, SortPart &part, bool &has_flags) {
    has_flags = false;
    const std::string fault = fault_in_key(argument, part, has_flags);
    return fault.empty() ? "" : "-k '" + argument + "': " + fault;
}

LineOrder::LineOrder(const SortOrder &order) : order_(order) {
    for (const SortPart &part : order.parts)
        makers_.emplace_back(part.collation);
}

bool LineOrder::make_key(const LineText &line, std::vector<std::uint8_t> &key) {
    key.clear();
    for (std::size_t number = 0; number < makers_.size(); ++number) {
        const SortPart &part = order_.parts[number];
        const Part field(part, order_.separator, line);
        const std::size_t start = key.size();
        SortKeys::Made made = SortKeys::Made::whole;
        if (part.numeric) {
            add_number(field.text(), order_.number_marks, key);
        } else {
            made = makers_[number].add(field.text(), kLongestKey, key);
        }
        if (made == SortKeys::Made::none) return false;
        if (part.reverse) invert(key, start);
        if (made == SortKeys::Made::cut || key.size() >= kLongestKey) {
            key.resize(kLongestKey);
            return true;
        }
    }
    while (!key.empty() && key.back() == 0)
        key.pop_back();
    return true;
}

int LineOrder::compare(const LineText &a, const LineText &b) {
    for (std::size_t number = 0; number < makers_.size(); ++number) {
        const SortPart &part = order_.parts[number];
        const Part field_a(part, order_.separator, a);
        const Part field_b(part, order_.separator, b);
        if (const int result = compare_part(number, field_a.text(), field_b.text()); result != 0)
            return part.reverse ? -result : result;
    }
    return 0;
}

int LineOrder::compare_part(std::size_t number, const LineText &a, const LineText &b) {
    const SortPart &part = order_.parts[number];
    if (!part.numeric && part.collation.can_compare(a) && part.collation.can_compare(b))
        return part.collation.compare(a, b);
    const auto lacking_of = [](const LineText &text) {
        return std::span(text.lacking, static_cast<std::size_t>(std::ranges::count(text.chars, kLacking)));
    };
    // Long lines that are the same are not rare.
    if (std::ranges::equal(a.chars, b.chars) && std::ranges::equal(lacking_of(a), lacking_of(b))) return 0;
    key_a_.clear();
    key_b_.clear();
    if (part.numeric) {
        add_number(a, order_.number_marks, key_a_);
        add_number(b, order_.number_marks, key_b_);
    } else {
        makers_[number].add_always(a, key_a_);
        makers_[number].add_always(b, key_b_);
    }
    return order_of(key_a_, key_b_);
}

} // namespace kx
