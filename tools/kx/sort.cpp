#include "sort.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

#include "collation.h"
#include "command.h"
#include "files.h"
#include "lines.h"
#include "merge_sort.h"
#include "options.h"
#include "sort_key.h"

namespace kx {
namespace {

constexpr int kIgnoreCaseOption = 256;
constexpr int kKanaOption = 257;
constexpr int kKeysOption = 258;

constexpr Option kOptions[] = {
    {'l', "language", "CODE", "the language, by its two-letter code"},
    {'f', "from", "FORM", "the form of the input and the output; utf-8 when not given"},
    {kIgnoreCaseOption, "ignore-case", nullptr, "lines that differ only in case are equal"},
    {kKanaOption, "kana", nullptr, "hiragana before katakana (East Asian languages)"},
    {'r', "reverse", nullptr, "the other way round"},
    {'u', "unique", nullptr, "write only the first of equal lines"},
    {'o', "output", "FILE", "write to FILE, which may be an input, not to standard output"},
    {kKeysOption, "keys", nullptr, "do not sort: write each line behind its sort key and a tab"},
};

constexpr Usage kUsageText{
    "kx sort", "-l CODE [OPTION]... [FILE...]",
    "Sorts lines in the order of a language: by letters, then diacritics, then case. Reads\n"
    "standard input when no FILE is given, or when FILE is -.",
    kOptions,
    "Equal lines keep their order, with -r, too. Lines are written as they were read; a last line\n"
    "without a line end gets one. A carriage return before the line end does not count, nor does\n"
    "what follows a zero character.\n"
    "The input is held in memory. What does not fit can be sorted by its keys, which compare as\n"
    "bytes: kx sort -l CODE --keys FILE | LC_ALL=C sort -s -t TAB -k 1,1 | cut -f 2-\n"
    "docs/sorting.md tells where that order differs.\n"
    "Exit status: 0 all was sorted, 1 something does not convert, does not fit or could not be read\n"
    "or written, 2 the command line is wrong."};

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

struct Request {
    std::optional<std::uint32_t> language;
    Encoding form{EncodingKind::utf8, {}};
    Collation collation;
    bool reverse = false;
    bool unique = false;
    bool keys = false;
    std::string output;
    std::vector<std::string> inputs;
};

CodePage text_page_of(const Request &request) {
    if (request.form.kind == EncodingKind::code_page) return request.form.page;
    return request.collation.page().value_or(system_page());
}

bool report_bad_line(const Request &request, const Input &input, std::uint64_t place) {
    report(kUsageText.command,
           input.name() + ": byte " + std::to_string(place) + " does not convert from " + name_of(request.form));
    return false;
}

// ---- Sorting in memory ----

// The lines of all inputs, one after another, each with its line end.
class Lines {
  public:
    explicit Lines(const Request &request) : request_(request), reader_(request.form, text_page_of(request)) {}

    // False after a fault, which has been reported.
    bool add(Input &input) {
        const std::size_t start = bytes_.size();
        bytes_.reserve(start + static_cast<std::size_t>(size_of(input)) + reader_.line_end().size());
        for (bool last = false; !last;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            bytes_.insert(bytes_.end(), chunk.bytes.begin(), chunk.bytes.end());
            input.consume(chunk.bytes.size());
            last = chunk.last;
        }
        return check(input, start);
    }

    // Lines are told by their places; places of this type hold all of them.
    std::size_t size() const noexcept { return bytes_.size(); }
    std::size_t count() const noexcept { return count_; }

    ByteSpan line_at(std::size_t place) const {
        const ByteSpan rest = ByteSpan(bytes_).subspan(place);
        return rest.first(reader_.first_line(rest).value_or(rest.size()));
    }

    template <class Place> std::vector<Place> places() const {
        std::vector<Place> places;
        places.reserve(count_);
        for (std::size_t at = 0; at < bytes_.size(); at += line_at(at).size())
            places.push_back(static_cast<Place>(at));
        return places;
    }

    void decode(std::size_t place, std::vector<KxChar> &text) { reader_.decode(line_at(place), text); }

  private:
    // Drops a byte order mark, completes the last line, and sees that every line converts.
    bool check(const Input &input, std::size_t start) {
        if (start == bytes_.size()) return true;
        const std::size_t mark = reader_.mark_size(line_at(start));
        bytes_.erase(bytes_.begin() + static_cast<std::ptrdiff_t>(start),
                     bytes_.begin() + static_cast<std::ptrdiff_t>(start + mark));
        std::vector<KxChar> text;
        for (std::size_t at = start; at < bytes_.size(); ++count_) {
            const ByteSpan line = line_at(at);
            if (const auto bad = reader_.decode(line, text)) {
                return report_bad_line(request_, input, mark + (at - start) + *bad);
            }
            at += line.size();
            if (reader_.first_line(line)) continue;
            bytes_.insert(bytes_.end(), reader_.line_end().begin(), reader_.line_end().end());
            at = bytes_.size();
        }
        return true;
    }

    const Request &request_;
    LineReader reader_;
    Bytes bytes_;
    std::size_t count_ = 0;
};

// Compares lines by their places. A merge asks for the same line again and again on each side, so the last one of each
// is kept as KX text.
class LineOrder {
  public:
    LineOrder(const Request &request, Lines &lines) : request_(request), lines_(lines) {}

    int operator()(std::size_t a, std::size_t b) {
        const int result = request_.collation.compare(text_of(a, left_), text_of(b, right_));
        return request_.reverse ? -result : result;
    }

  private:
    struct Known {
        std::size_t place = std::numeric_limits<std::size_t>::max();
        std::vector<KxChar> text;
    };

    const std::vector<KxChar> &text_of(std::size_t place, Known &known) {
        if (known.place != place) {
            lines_.decode(place, known.text);
            known.place = place;
        }
        return known.text;
    }

    const Request &request_;
    Lines &lines_;
    Known left_;
    Known right_;
};

// A line with the start of its key, which decides most comparisons. The rest of the key lies in Keys.
template <class Place> struct KeyedLine {
    std::uint64_t start; // 8 bytes, the first one highest; inverted when the order is reversed
    Place rest;          // see Keys
    Place place;
};

// What lines have of their keys behind the start, in blocks, so that growing needs no room for two of them. Long keys
// are cut: where that leaves a comparison open the lines themselves are compared.
class Keys {
  public:
    static constexpr std::size_t start_size = sizeof(std::uint64_t);
    static constexpr std::size_t no_rest = 0;

    // Where the rest of a key is kept; nothing when there is no more room in a place of the size.
    std::optional<std::size_t> add(ByteSpan rest, std::size_t largest_place) {
        if (rest.empty()) return no_rest;
        rest = rest.first(std::min(rest.size(), longest));
        if (blocks_.empty() || used_ + size_bytes + rest.size() > block_size) {
            blocks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(block_size));
            used_ = blocks_.size() == 1 ? 1 : 0; // place 0 has a meaning of its own
        }
        const std::size_t place = (blocks_.size() - 1) * block_size + used_;
        if (place > largest_place) return std::nullopt;
        std::uint8_t *out = blocks_.back().get() + used_;
        out[0] = static_cast<std::uint8_t>(rest.size() >> 8);
        out[1] = static_cast<std::uint8_t>(rest.size());
        std::ranges::copy(rest, out + size_bytes);
        used_ += size_bytes + rest.size();
        return place;
    }

    ByteSpan rest_at(std::size_t place) const {
        if (place == no_rest) return {};
        const std::uint8_t *at = blocks_[place / block_size].get() + place % block_size;
        return {at + size_bytes, at[0] * std::size_t{256} + at[1]};
    }

    // Nothing when the keys do not decide. Behind its end a key is zero, and no rest ends in zeros but a cut one.
    static std::optional<int> compare(ByteSpan a, ByteSpan b) {
        const std::size_t both = std::min(a.size(), b.size());
        const int result = both == 0 ? 0 : std::memcmp(a.data(), b.data(), both);
        if (result != 0) return result;
        if (a.size() == longest || b.size() == longest) return std::nullopt;
        return static_cast<int>(a.size() > both) - static_cast<int>(b.size() > both);
    }

  private:
    static constexpr std::size_t block_size = std::size_t{1} << 20;
    static constexpr std::size_t size_bytes = 2;
    static constexpr std::size_t longest = 1024;

    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t used_ = 0;
};

std::uint64_t start_of(ByteSpan key) {
    std::uint64_t start = 0;
    for (std::size_t i = 0; i < Keys::start_size; ++i)
        start = start << 8 | (i < key.size() ? key[i] : 0u);
    return start;
}

// By the starts, one byte after another, in place; what few lines have in common is left to `less`, which is a total
// order that begins with the starts.
template <class Line, class Less> void radix_sort(std::span<Line> lines, unsigned shift, const Less &less) {
    constexpr std::size_t few = 64;
    if (lines.size() <= few) {
        std::ranges::sort(lines, less);
        return;
    }
    const auto byte_of = [shift](const Line &line) { return static_cast<std::uint8_t>(line.start >> shift); };
    std::array<std::size_t, 256> ends{};
    for (const Line &line : lines)
        ++ends[byte_of(line)];
    std::array<std::size_t, 256> next{}; // free places of the groups
    for (std::size_t byte = 1; byte < ends.size(); ++byte) {
        next[byte] = ends[byte - 1];
        ends[byte] += ends[byte - 1];
    }
    for (std::size_t byte = 0; byte < ends.size(); ++byte) {
        const std::size_t first = byte == 0 ? 0 : ends[byte - 1];
        while (next[byte] != ends[byte]) {
            Line &line = lines[next[byte]];
            if (const std::uint8_t group = byte_of(line); group != byte) {
                std::swap(line, lines[next[group]++]);
            } else {
                ++next[byte];
            }
        }
        const std::span<Line> group = lines.subspan(first, ends[byte] - first);
        if (shift != 0) {
            radix_sort(group, shift - 8, less);
        } else {
            std::ranges::sort(group, less);
        }
    }
}

template <class Place> class KeyedOrder {
  public:
    // Stands for the rest of a line without a key.
    static constexpr Place no_key = std::numeric_limits<Place>::max();

    KeyedOrder(const Request &request, Lines &lines) : reverse_(request.reverse), order_(request, lines) {
        SortKeys maker(request.collation);
        std::vector<KxChar> text;
        items.reserve(lines.count());
        for (std::size_t at = 0; at < lines.size(); at += lines.line_at(at).size()) {
            lines.decode(at, text);
            KeyedLine<Place> &line = items.emplace_back(KeyedLine<Place>{0, no_key, static_cast<Place>(at)});
            const auto key = maker.make(text);
            if (!key) {
                is_total_ = false;
                continue;
            }
            line.start = start_of(*key) ^ (reverse_ ? ~std::uint64_t{0} : 0);
            const auto rest = key->subspan(std::min(key->size(), Keys::start_size));
            line.rest = static_cast<Place>(keys_.add(rest, no_key - 1).value_or(no_key));
        }
    }

    // Whether all lines have keys, whole or cut: then the order is none of those that are none (see merge_sort.h).
    bool is_total() const noexcept { return is_total_; }

    int operator()(const KeyedLine<Place> &a, const KeyedLine<Place> &b) {
        if (a.rest == no_key || b.rest == no_key) return order_(a.place, b.place);
        if (a.start != b.start) return a.start < b.start ? -1 : 1;
        if (a.rest == b.rest) return 0; // without any
        const auto result = Keys::compare(keys_.rest_at(a.rest), keys_.rest_at(b.rest));
        if (!result) return order_(a.place, b.place);
        return reverse_ ? -*result : *result;
    }

    std::vector<KeyedLine<Place>> items;

  private:
    bool reverse_;
    bool is_total_ = true;
    LineOrder order_;
    Keys keys_;
};

// The places of the lines in their order.
template <class Place> std::vector<Place> sorted_places(const Request &request, Lines &lines) {
    std::vector<Place> places;
    try {
        KeyedOrder<Place> order(request, lines);
        if (order.is_total()) {
            const auto less = [&order](const KeyedLine<Place> &a, const KeyedLine<Place> &b) {
                const int result = order(a, b);
                return result != 0 ? result < 0 : a.place < b.place;
            };
            constexpr unsigned first_byte = 56;
            radix_sort<KeyedLine<Place>>(order.items, first_byte, less);
        } else {
            std::vector<KeyedLine<Place>> spare(order.items.size() / 2);
            merge_sort<KeyedLine<Place>>(order.items, spare, order);
        }
        places.reserve(order.items.size());
        for (const KeyedLine<Place> &line : order.items)
            places.push_back(line.place);
        return places;
    } catch (const std::bad_alloc &) {
        // No room for keys. It takes longer without them, and comes to the same.
    }
    places = lines.places<Place>();
    std::vector<Place> spare(places.size() / 2);
    LineOrder order(request, lines);
    merge_sort<Place>(places, spare, order);
    return places;
}

template <class Place> bool sort_and_write(const Request &request, Lines &lines) {
    const std::vector<Place> places = sorted_places<Place>(request, lines);
    LineOrder order(request, lines);
    // Only now: the output may be one of the inputs.
    Output output(kUsageText.command, request.output);
    constexpr std::size_t piece = std::size_t{64} * 1024;
    Bytes waiting;
    const Place *written = nullptr;
    for (const Place &place : places) {
        if (request.unique && written != nullptr && order(*written, place) == 0) continue;
        written = &place;
        const ByteSpan line = lines.line_at(place);
        waiting.insert(waiting.end(), line.begin(), line.end());
        if (waiting.size() < piece) continue;
        if (!output.write(waiting)) return false;
        waiting.clear();
    }
    return output.write(waiting) && output.close();
}

bool sort_lines(const Request &request) {
    Lines lines(request);
    for (const std::string &path : request.inputs) {
        Input input(kUsageText.command, path);
        if (!input.good() || !lines.add(input)) return false;
    }
    // Places are narrow when they can be: with short lines they are much of what is held.
    if (lines.size() <= std::numeric_limits<std::uint32_t>::max()) return sort_and_write<std::uint32_t>(request, lines);
    return sort_and_write<std::size_t>(request, lines);
}

// ---- Keys ----

class KeyWriter {
  public:
    KeyWriter(const Request &request, Output &output)
        : request_(request), reader_(request.form, text_page_of(request)), output_(output) {}

    bool run(Input &input) {
        Progress progress(input);
        for (;;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            keyed_.clear();
            const auto done = add_keys(input, chunk);
            if (!output_.write(keyed_) || !done) return false;
            if (chunk.last) return true;
            input.consume(*done);
            progress.at(chunk.offset + *done);
        }
    }

  private:
    // The bytes of the chunk that are done; nothing after a fault.
    std::optional<std::size_t> add_keys(const Input &input, const Chunk &chunk) {
        std::size_t at = 0;
        while (at < chunk.bytes.size()) {
            const ByteSpan rest = chunk.bytes.subspan(at);
            const auto size = reader_.first_line(rest);
            if (!size && !chunk.last) break;
            ByteSpan line = rest.first(size.value_or(rest.size()));
            const std::size_t mark = chunk.offset + at == 0 ? reader_.mark_size(line) : 0;
            line = line.subspan(mark);
            if (const auto bad = reader_.decode(line, text_)) {
                report_bad_line(request_, input, chunk.offset + at + mark + *bad);
                return std::nullopt;
            }
            at += mark + line.size();
            const std::string key = request_.collation.key_of(text_) + '\t';
            keyed_.insert(keyed_.end(), key.begin(), key.end());
            keyed_.insert(keyed_.end(), line.begin(), line.end());
            if (!size) keyed_.insert(keyed_.end(), reader_.line_end().begin(), reader_.line_end().end());
        }
        return at;
    }

    const Request &request_;
    LineReader reader_;
    Output &output_;
    std::vector<KxChar> text_;
    Bytes keyed_;
};

bool write_keys(const Request &request) {
    Output output(kUsageText.command, request.output);
    if (!output.good()) return false;
    KeyWriter writer(request, output);
    for (const std::string &path : request.inputs) {
        Input input(kUsageText.command, path);
        if (!input.good() || !writer.run(input)) return false;
    }
    return output.close();
}

// ---- The command line ----

std::string take_option(Request &request, int id, const std::string &argument) {
    switch (id) {
    case 'l':
        request.language = Collation::find_language(argument);
        return request.language ? "" : "no language '" + argument + "'; there are " + Collation::list_of_languages();
    case 'f': {
        const auto form = find_encoding(argument);
        if (!form) return "no form or code page '" + argument + "'; `kx convert -l` lists them";
        // A line end of the streams may also stand inside their other codes.
        if (is_kx_encoding(*form) && form->kind != EncodingKind::kx)
            return "'" + argument + "' has no lines; convert it first";
        request.form = *form;
        return "";
    }
    case 'o': request.output = argument; return "";
    case 'r': request.reverse = true; return "";
    case 'u': request.unique = true; return "";
    case kIgnoreCaseOption: request.collation.case_counts = false; return "";
    case kKanaOption: request.collation.kana_counts = true; return "";
    case kKeysOption: request.keys = true; return "";
    default: return "";
    }
}

// What is wrong with the options taken together.
std::string fault_of(const Request &request) {
    if (!request.language) return "-l CODE is needed; there are " + Collation::list_of_languages();
    if (!request.keys) return "";
    if (request.reverse || request.unique) return "--keys does not sort; give -r and -u to the sorter";
    if (request.form.kind != EncodingKind::code_page && request.form.kind != EncodingKind::utf8)
        return "--keys writes bytes, not " + name_of(request.form) + "; convert the input first";
    return "";
}

} // namespace

int run_sort(int argc, char **argv) {
    Request request;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) {
        return take_option(request, id, argument);
    });
    if (parsed.stop) return parsed.status;
    if (const std::string fault = fault_of(request); !fault.empty()) return usage_error(kUsageText, fault);
    request.collation.language = *request.language;
    request.collation.begin();
    request.inputs = operands_or_standard_input(argc, argv, parsed.first_operand);
    const char *too_large = "not enough memory: the input is sorted as a whole; see --keys";
    try {
        if (!request.keys) return sort_lines(request) ? kSuccess : kFailure;
        if (is_one_of(request.output, request.inputs)) {
            report(kUsageText.command, "the output is also an input");
            return kFailure;
        }
        return write_keys(request) ? kSuccess : kFailure;
    } catch (const std::bad_alloc &) {
        report(kUsageText.command, too_large);
    } catch (const std::length_error &) {
        report(kUsageText.command, too_large);
    }
    return kFailure;
}

} // namespace kx
