#include "sort_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "merge_sort.h"
#include "threads.h"

namespace kx {
namespace {

// ---- Lines ----

// The lines of all inputs, one after another, each with its line end.
class Lines {
  public:
    explicit Lines(const SortRequest &request) : request_(request), reader_(request.form) {}

    // False after a fault, which has been reported.
    bool add(const std::string &path) {
        Input input(kSortCommand, path);
        if (!input.good()) return false;
        Progress progress(input);
        inputs_.push_back({input.name(), bytes_.size()});
        bytes_.reserve(bytes_.size() + static_cast<std::size_t>(size_of(input)) + reader_.line_end().size());
        constexpr std::size_t longest_mark = 4;
        bool marked = false; // whether the bytes where a mark may be were seen
        for (bool last = false; !last;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            last = chunk.last;
            if (!marked && !last && chunk.bytes.size() < longest_mark) continue;
            const std::size_t mark = marked ? 0 : reader_.mark_size(chunk.bytes);
            marked = true;
            bytes_.insert(bytes_.end(), chunk.bytes.begin() + static_cast<std::ptrdiff_t>(mark), chunk.bytes.end());
            input.consume(chunk.bytes.size());
            progress.at(chunk.offset);
        }
        return complete(inputs_.back());
    }

    // Lines are told by their places; places of this type hold all of them.
    std::size_t size() const noexcept { return bytes_.size(); }

    ByteSpan line_at(std::size_t place) const {
        const ByteSpan rest = ByteSpan(bytes_).subspan(place);
        return rest.first(reader_.first_line(rest).value_or(rest.size()));
    }

    void prefetch(std::size_t place) const { __builtin_prefetch(bytes_.data() + place); }

    // Some whole lines from a place on.
    ByteSpan block_at(std::size_t place, std::size_t end) const {
        constexpr std::size_t size = std::size_t{16} * 1024;
        const ByteSpan rest = ByteSpan(bytes_).subspan(place, end - place);
        return rest.first(reader_.lines_of(rest, size));
    }

    // Where the lines of one job begin, and of the next.
    std::size_t start_of(unsigned job, unsigned jobs) const {
        if (job == 0 || job == jobs) return job == 0 ? 0 : bytes_.size();
        return reader_.lines_of(bytes_, bytes_.size() / jobs * job);
    }

    std::size_t count(std::size_t place, std::size_t end) const {
        std::size_t count = 0;
        for (; place < end; place += line_at(place).size())
            ++count;
        return count;
    }

    const LineForm &form() const { return request_.form; }

    LackingReport::Place place_of(std::size_t place) const {
        std::size_t number = inputs_.size() - 1;
        while (inputs_[number].start > place)
            --number;
        std::size_t line = inputs_[number].start;
        std::size_t line_number = 1;
        for (std::size_t size = line_at(line).size(); line + size <= place; size = line_at(line).size()) {
            line += size;
            ++line_number;
        }
        LineReader counter(request_.form);
        return {inputs_[number].name, line_number,
                counter.count_characters(ByteSpan(bytes_).subspan(line, place - line)) + 1};
    }

    ByteSpan bytes_at(const LackingCharacter &character) const {
        return ByteSpan(bytes_).subspan(character.place, character.length);
    }

  private:
    struct Start {
        std::string name;
        std::size_t start;
    };

    // Gives the last line of an input its end. False after a fault, which has been reported.
    bool complete(const Start &input) {
        const std::size_t unit = reader_.line_end().size();
        const std::size_t size = bytes_.size() - input.start;
        if (size % unit != 0) {
            tell_half_character(input.name);
            return false;
        }
        if (size > 0 && !std::ranges::equal(ByteSpan(bytes_).last(unit), reader_.line_end()))
            bytes_.insert(bytes_.end(), reader_.line_end().begin(), reader_.line_end().end());
        return true;
    }

    const SortRequest &request_;
    LineReader reader_;
    Bytes bytes_;
    std::vector<Start> inputs_;
};

// What KX lacks in the lines of one job.
struct Lacking {
    std::size_t count = 0;
    LackingCharacter first;

    void add(const LineReader &reader, std::size_t block) {
        if (reader.lacking_count() == 0) return;
        if (count == 0) {
            first = reader.first_lacking();
            first.place += block;
        }
        count += reader.lacking_count();
    }
};

// False when it ends the work.
bool add_to(LackingReport &report, const Lines &lines, std::span<const Lacking> found) {
    Lacking all;
    for (const Lacking &one : found) {
        if (all.count == 0) all.first = one.first;
        all.count += one.count;
    }
    return all.count == 0 ||
           report.add(all.count, all.first, lines.bytes_at(all.first), lines.place_of(all.first.place));
}

// Compares lines by their places. A merge asks for the same line again and again on each side, so the last one of each
// is kept as KX text.
class TextOrder {
  public:
    TextOrder(const SortRequest &request, const Lines &lines)
        : lines_(lines), order_(request.order), left_(lines.form()), right_(lines.form()) {}

    int operator()(std::size_t a, std::size_t b) { return order_.compare(text_of(a, left_), text_of(b, right_)); }

  private:
    struct Known {
        explicit Known(const LineForm &form) : reader(form) {}

        LineReader reader;
        std::size_t place = std::numeric_limits<std::size_t>::max();
        LineText text;
    };

    const LineText &text_of(std::size_t place, Known &known) {
        if (known.place != place) {
            known.text = known.reader.read_one(lines_.line_at(place));
            known.place = place;
        }
        return known.text;
    }

    const Lines &lines_;
    LineOrder order_;
    Known left_;
    Known right_;
};

// ---- Keys ----

// A line with the start of its key, which decides most comparisons. The rest of the key lies in KeyStore.
template <class Place> struct KeyedLine {
    std::uint64_t start; // 8 bytes, the first one highest
    Place rest;          // see KeyStore
    Place place;
};

// What lines have of their keys behind the start, in blocks, so that growing needs no room for two of them. Long keys
// are cut: where that leaves a comparison open the lines themselves are compared.
class KeyStore {
  public:
    static constexpr std::size_t start_size = sizeof(std::uint64_t);
    static constexpr std::size_t no_rest = 0;

    // One for each thread.
    class Writer {
      public:
        explicit Writer(KeyStore &store) : store_(store) {}

        // Where the rest of a key is kept; nothing when there is no more room in a place of the size.
        std::optional<std::size_t> add(ByteSpan rest, std::size_t largest_place) {
            if (rest.empty()) return no_rest;
            rest = rest.first(std::min(rest.size(), longest));
            if (block_ == nullptr || used_ + size_bytes + rest.size() > block_size) {
                start_ = store_.add_block(block_);
                used_ = start_ == 0 ? 1 : 0; // place 0 has a meaning of its own
            }
            const std::size_t place = start_ + used_;
            if (place > largest_place) return std::nullopt;
            std::uint8_t *out = block_ + used_;
            out[0] = static_cast<std::uint8_t>(rest.size() >> 8);
            out[1] = static_cast<std::uint8_t>(rest.size());
            std::ranges::copy(rest, out + size_bytes);
            used_ += size_bytes + rest.size();
            return place;
        }

      private:
        KeyStore &store_;
        std::uint8_t *block_ = nullptr;
        std::size_t start_ = 0;
        std::size_t used_ = 0;
    };

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
    static constexpr std::size_t longest = LineOrder::kLongestKey - start_size;

    std::size_t add_block(std::uint8_t *&block) {
        auto made = std::make_unique_for_overwrite<std::uint8_t[]>(block_size);
        const std::lock_guard guard(lock_);
        block = made.get();
        blocks_.push_back(std::move(made));
        return (blocks_.size() - 1) * block_size;
    }

    std::mutex lock_;
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
};

std::uint64_t start_of(ByteSpan key) {
    std::uint64_t start = 0;
    for (std::size_t i = 0; i < KeyStore::start_size; ++i)
        start = start << 8 | (i < key.size() ? key[i] : 0u);
    return start;
}

// Puts the lines that have the same byte of the start together, in place. Where each group ends.
template <class Line> std::array<std::size_t, 256> group_by_byte(std::span<Line> lines, int shift) {
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
        while (next[byte] != ends[byte]) {
            Line &line = lines[next[byte]];
            if (const std::uint8_t group = byte_of(line); group != byte) {
                std::swap(line, lines[next[group]++]);
            } else {
                ++next[byte];
            }
        }
    }
    return ends;
}

constexpr int kFirstByte = 56;

// By the starts, one byte after another from `shift` down; what few lines have in common is left to `less`, which is a
// total order that begins with the starts.
template <class Line, class Less> void radix_sort(std::span<Line> lines, int shift, const Less &less) {
    constexpr std::size_t few = 64;
    if (shift < 0 || lines.size() <= few) {
        std::ranges::sort(lines, less);
        return;
    }
    std::size_t begin = 0;
    for (const std::size_t end : group_by_byte(lines, shift)) {
        radix_sort(lines.subspan(begin, end - begin), shift - 8, less);
        begin = end;
    }
}

// What is left of the same work when all groups are small enough to be given to threads.
template <class Line> struct Group {
    std::span<Line> lines;
    int shift;
};

template <class Line>
void add_groups(std::span<Line> lines, int shift, std::size_t largest, std::vector<Group<Line>> &groups) {
    if (shift < 0 || lines.size() <= largest) {
        if (lines.size() > 1) groups.push_back({lines, shift});
        return;
    }
    std::size_t begin = 0;
    for (const std::size_t end : group_by_byte(lines, shift)) {
        add_groups(lines.subspan(begin, end - begin), shift - 8, largest, groups);
        begin = end;
    }
}

template <class Place> class KeyedLines {
  public:
    using Item = KeyedLine<Place>;
    // Stands for the rest of a line without a key.
    static constexpr Place no_key = std::numeric_limits<Place>::max();

    KeyedLines(const SortRequest &request, const Lines &lines) : request_(request), lines_(lines) {}

    // What KX lacks, job by job.
    std::vector<Lacking> make() {
        const unsigned jobs = request_.jobs;
        std::vector<std::size_t> counts(jobs);
        in_threads(jobs, [&](unsigned job) {
            counts[job] = lines_.count(lines_.start_of(job, jobs), lines_.start_of(job + 1, jobs));
        });
        std::vector<std::size_t> firsts(jobs);
        for (unsigned job = 0; job < jobs; ++job) {
            firsts[job] = size_;
            size_ += counts[job];
        }
        items_ = std::make_unique_for_overwrite<Item[]>(size_);
        std::vector<Lacking> lacking(jobs);
        std::vector<char> all_have_keys(jobs); // no bits, which threads would share
        in_threads(jobs, [&](unsigned job) {
            all_have_keys[job] = fill(job, items_.get() + firsts[job], lacking[job]) ? 1 : 0;
        });
        is_total_ = std::ranges::count(all_have_keys, 0) == 0;
        return lacking;
    }

    void sort() {
        if (size_ < 2) return;
        if (is_total_) {
            sort_groups();
        } else {
            const auto spare = std::make_unique_for_overwrite<Item[]>(size_ / 2);
            sort_halves(items(), {spare.get(), size_ / 2}, request_.jobs);
        }
    }

    std::span<Item> items() { return {items_.get(), size_}; }

    // By the keys, where they decide.
    class Order {
      public:
        Order(const KeyedLines &lines) : lines_(lines) {}

        int operator()(const Item &a, const Item &b) {
            if (a.rest == no_key || b.rest == no_key) return compare_texts(a, b);
            if (a.start != b.start) return a.start < b.start ? -1 : 1;
            if (a.rest == b.rest) return 0; // without any
            const auto result = KeyStore::compare(lines_.keys_.rest_at(a.rest), lines_.keys_.rest_at(b.rest));
            return result ? *result : compare_texts(a, b);
        }

      private:
        int compare_texts(const Item &a, const Item &b) {
            if (texts_ == nullptr) texts_ = std::make_unique<TextOrder>(lines_.request_, lines_.lines_);
            return (*texts_)(a.place, b.place);
        }

        const KeyedLines &lines_;
        std::unique_ptr<TextOrder> texts_;
    };

  private:
    // False when a line has no key.
    bool fill(unsigned job, Item *item, Lacking &lacking) {
        std::size_t at = lines_.start_of(job, request_.jobs);
        const std::size_t start = at;
        const std::size_t end = lines_.start_of(job + 1, request_.jobs);
        LineReader reader(request_.form);
        LineOrder order(request_.order);
        KeyStore::Writer writer(keys_);
        Bytes key;
        bool all = true;
        Progress progress(job == 0 ? end - start : 0);
        while (at < end) {
            const ByteSpan block = lines_.block_at(at, end);
            reader.read(block);
            lacking.add(reader, at);
            for (ByteSpan rest = block; !rest.empty();) {
                *item = {0, no_key, static_cast<Place>(at)};
                if (order.make_key(reader.next(), key)) {
                    item->start = start_of(key);
                    const auto place =
                        writer.add(ByteSpan(key).subspan(std::min(key.size(), KeyStore::start_size)), no_key - 1);
                    item->rest = static_cast<Place>(place.value_or(no_key));
                } else {
                    all = false;
                }
                ++item;
                const std::size_t size = reader.first_line(rest).value_or(rest.size());
                rest = rest.subspan(size);
                at += size;
            }
            if (job == 0) progress.at(at - start, "keys");
        }
        return all;
    }

    void sort_groups() {
        const unsigned jobs = request_.jobs;
        std::vector<Group<Item>> groups;
        add_groups(items(), kFirstByte, jobs > 1 ? size_ / jobs / 8 + 1 : size_, groups);
        std::atomic<std::size_t> next = 0;
        in_threads(jobs, [&](unsigned) {
            Order order(*this);
            const auto less = [&order](const Item &a, const Item &b) {
                const int result = order(a, b);
                return result != 0 ? result < 0 : a.place < b.place;
            };
            for (std::size_t number = next++; number < groups.size(); number = next++)
                radix_sort(groups[number].lines, groups[number].shift, less);
        });
    }

    // The halves are those of merge_sort, so that with orders that are none the result does not hang on the threads.
    void sort_halves(std::span<Item> items, std::span<Item> spare, unsigned jobs) {
        Order order(*this);
        if (jobs == 1 || items.size() < 2) {
            merge_sort(items, spare, order);
            return;
        }
        const std::size_t half = items.size() / 2;
        in_threads(2, [&](unsigned side) {
            if (side == 0) {
                sort_halves(items.first(half), spare.first(half / 2), jobs / 2);
            } else {
                sort_halves(items.subspan(half), spare.subspan(half / 2, (items.size() - half) / 2), jobs - jobs / 2);
            }
        });
        merge_halves(items, spare, order);
    }

    const SortRequest &request_;
    const Lines &lines_;
    KeyStore keys_;
    std::unique_ptr<Item[]> items_;
    std::size_t size_ = 0;
    bool is_total_ = true; // all lines have keys: then the order is none of those that are none (see merge_sort.h)
};

// ---- Writing ----

// Gathers the lines of some items, of which `place_of` gives the places.
template <class Item, class PlaceOf>
void gather(const Lines &lines, std::span<const Item> items, PlaceOf place_of, Bytes &out) {
    constexpr std::size_t ahead = 8; // lines lie anywhere, and memory is slow to answer
    out.clear();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i + ahead < items.size()) lines.prefetch(place_of(items[i + ahead]));
        const ByteSpan line = lines.line_at(place_of(items[i]));
        out.insert(out.end(), line.begin(), line.end());
    }
}

// Leaves the first ones of equal items.
template <class Item, class Compare> std::span<Item> first_of_equals(std::span<Item> items, Compare compare) {
    const auto behind = std::unique(items.begin(), items.end(),
                                    [&compare](const Item &a, const Item &b) { return compare(a, b) == 0; });
    return {items.begin(), behind};
}

// Writes the lines of all items: some of each job's, in turn.
template <class Item, class PlaceOf>
bool write(const SortRequest &request, const Lines &lines, std::span<const Item> items, PlaceOf place_of) {
    // Only now: the output may be one of the inputs.
    Output output(kSortCommand, request.output);
    Progress progress(lines.size());
    const std::size_t slice = std::clamp<std::size_t>(items.size() / 64, 1, 16384);
    std::vector<Bytes> gathered(request.jobs);
    std::uint64_t done = 0;
    while (!items.empty()) {
        in_threads(request.jobs, [&](unsigned job) {
            const std::size_t first = std::min(job * slice, items.size());
            gather(lines, items.subspan(first, std::min(slice, items.size() - first)), place_of, gathered[job]);
        });
        items = items.subspan(std::min(request.jobs * slice, items.size()));
        for (const Bytes &bytes : gathered) {
            if (!output.write(bytes)) return false;
            done += bytes.size();
        }
        progress.at(done, "output");
    }
    return output.close();
}

template <class Place> bool sort_by_texts(const SortRequest &request, const Lines &lines) {
    Lacking lacking;
    LineReader reader(request.form);
    for (std::size_t at = 0; at < lines.size();) {
        const ByteSpan block = lines.block_at(at, lines.size());
        reader.read(block);
        lacking.add(reader, at);
        at += block.size();
    }
    LackingReport report(request);
    if (!add_to(report, lines, {&lacking, 1})) return false;
    std::vector<Place> places;
    places.reserve(lines.count(0, lines.size()));
    for (std::size_t at = 0; at < lines.size(); at += lines.line_at(at).size())
        places.push_back(static_cast<Place>(at));
    std::vector<Place> spare(places.size() / 2);
    TextOrder order(request, lines);
    merge_sort<Place>(places, spare, order);
    std::span<Place> sorted = places;
    if (request.unique) sorted = first_of_equals(sorted, std::ref(order));
    const bool written = write<Place>(request, lines, sorted, [](Place place) { return place; });
    report.tell();
    return written;
}

template <class Place> bool sort(const SortRequest &request, const Lines &lines) {
    std::optional<KeyedLines<Place>> keyed(std::in_place, request, lines);
    LackingReport report(request);
    try {
        if (!add_to(report, lines, keyed->make())) return false;
        keyed->sort();
    } catch (const std::bad_alloc &) {
        // It takes longer without keys, and comes to the same.
        keyed.reset();
        return sort_by_texts<Place>(request, lines);
    }
    using Item = KeyedLine<Place>;
    std::span<Item> sorted = keyed->items();
    if (request.unique) {
        typename KeyedLines<Place>::Order order(*keyed);
        sorted = first_of_equals(sorted, std::ref(order));
    }
    const bool written = write<Item>(request, lines, sorted, [](const Item &item) { return item.place; });
    report.tell();
    return written;
}

} // namespace

bool sort_in_memory(const SortRequest &request) {
    Lines lines(request);
    for (const std::string &path : request.inputs) {
        if (!lines.add(path)) return false;
    }
    // Places are narrow when they can be: with short lines they are much of what is held.
    if (lines.size() <= std::numeric_limits<std::uint32_t>::max()) return sort<std::uint32_t>(request, lines);
    return sort<std::size_t>(request, lines);
}

} // namespace kx
