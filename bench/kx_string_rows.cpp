// Strings of 16-bit units against ICU's functions of the same job.
#include "peers.h"
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstring>
#include <kxstr/kxstr.h>
#include <string_view>
#include <unicode/ustring.h>

namespace kxbench {
namespace {

constexpr std::size_t kSizes[] = {16, 1 << 10, 1 << 16};
constexpr std::size_t kLargest = 1 << 26;
constexpr KxChar kSought = 0x2FFF; // not in the text but as its last unit

// English text has the same units in UTF-16 and, with its line ends as 0x000A, in KX text: all take one string.
struct Units {
    std::vector<KxChar> text;
    std::vector<KxChar> same; // elsewhere in memory
    std::vector<KxChar> out;

    explicit Units(std::size_t size) : text(text_of("en", size).unicode_kx), out(size + 1) {
        text[size - 1] = kSought;
        same = text;
    }
    void clear_output() { std::ranges::fill(out, KxChar{0xEEEE}); }
    [[nodiscard]] std::size_t size() const { return text.size() - 1; }
    [[nodiscard]] const KxChar *last() const { return &text[size() - 1]; }
};
using UnitsRow = Row<Units>;

constexpr auto is_last = [](const Units &in, const void *result) { return result == in.last(); };
constexpr auto is_zero = [](const Units &, int result) { return result == 0; };
constexpr auto out_is_text = [](const Units &in, const void *) { return in.out == in.text; };
constexpr auto any_result = [](const Units &, auto) { return true; };

void add_scanning_floor(UnitsRow &row) {
    row.entrant(
        "floor-memchr", [](Units &in) { return std::memchr(in.text.data(), 0x7F, in.size() * 2); }, any_result);
}
void add_copying_floor(UnitsRow &row) {
    row.entrant(
        "floor-memcpy", [](Units &in) { return std::memcpy(in.out.data(), in.text.data(), in.text.size() * 2); },
        out_is_text);
}
void add_comparing_floor(UnitsRow &row) {
    row.entrant(
        "floor-memcmp", [](Units &in) { return std::memcmp(in.text.data(), in.same.data(), in.size() * 2); }, is_zero);
}

struct Job {
    const char *name;
    void (*add_ours)(UnitsRow &);
    void (*add_peer)(UnitsRow &);
    void (*add_floor)(UnitsRow &);
    bool has_largest = false;
};

constexpr Job kJobs[] = {
    {"wwstrlen",
     [](UnitsRow &row) {
         row.entrant(
             "ours", [](Units &in) { return wwstrlen(in.text.data()); },
             [](const Units &in, std::uint32_t bytes) { return bytes == in.size() * 2; });
     },
     [](UnitsRow &row) {
         row.entrant(
             "u_strlen", [](Units &in) { return u_strlen(uchars(in.text.data())); },
             [](const Units &in, std::int32_t units) { return units == static_cast<std::int32_t>(in.size()); });
     },
     add_scanning_floor, true},
    {"wwstrcpy",
     [](UnitsRow &row) {
         row.entrant(
             "ours", [](Units &in) { return wwstrcpy(in.out.data(), in.text.data()); }, out_is_text);
     },
     [](UnitsRow &row) {
         row.entrant(
             "u_strcpy", [](Units &in) { return u_strcpy(uchars(in.out.data()), uchars(in.text.data())); },
             out_is_text);
     },
     add_copying_floor, true},
    {"wwstrchr",
     [](UnitsRow &row) {
         row.entrant(
             "ours", [](Units &in) { return wwstrchr(in.text.data(), kSought); }, is_last);
     },
     [](UnitsRow &row) {
         row.entrant(
             "u_strchr", [](Units &in) { return u_strchr(uchars(in.text.data()), kSought); }, is_last);
     },
     add_scanning_floor},
    {"wwstrcmp",
     [](UnitsRow &row) {
         row.entrant(
             "ours", [](Units &in) { return wwstrcmp(in.text.data(), in.same.data()); }, is_zero);
     },
     [](UnitsRow &row) {
         row.entrant(
             "u_strcmp", [](Units &in) { return u_strcmp(uchars(in.text.data()), uchars(in.same.data())); }, is_zero);
     },
     add_comparing_floor},
};

// ---- search ----

struct Search {
    std::vector<KxChar> text;
    std::vector<KxChar> sought;
    const KxChar *found = nullptr; // where it is in the text

    void clear_output() {}
    [[nodiscard]] std::size_t size() const { return text.size() - 1; }
};

// The words are in the text only as its end, their beginnings in many places.
Search search_in_text(std::size_t size) {
    const std::u16string_view words = size < 100 ? u"meter" : u"the thermometer";
    Search search{text_of("en", size).unicode_kx, {words.begin(), words.end()}};
    std::ranges::copy(words, search.text.end() - 1 - static_cast<std::ptrdiff_t>(words.size()));
    search.found = &search.text[size - words.size()];
    search.sought.push_back(0);
    return search;
}

// Everywhere a half of it is found, and nowhere all of it: without care that costs text times half.
Search search_at_worst(std::size_t size, std::size_t half) {
    Search search{std::vector<KxChar>(size, 'a'), std::vector<KxChar>(2 * half, 'a')};
    search.sought[half] = 'b';
    search.text.push_back(0);
    search.sought.push_back(0);
    return search;
}

void add_search_row(const char *text, std::size_t size, std::function<Search()> make) {
    constexpr auto is_found = [](const Search &in, const void *result) { return result == in.found; };
    Row<Search>("wwstrstr", text, size, std::move(make))
        .entrant(
            "ours", [](Search &in) { return wwstrstr(in.text.data(), in.sought.data()); }, is_found)
        .entrant(
            "u_strstr", [](Search &in) { return u_strstr(uchars(in.text.data()), uchars(in.sought.data())); }, is_found)
        .entrant(
            "memmem",
            [](Search &in) {
                return memmem(in.text.data(), in.size() * 2, in.sought.data(), (in.sought.size() - 1) * 2);
            },
            is_found)
        .entrant(
            "floor-memchr", [](Search &in) { return std::memchr(in.text.data(), 0x7F, in.size() * 2); },
            [](const Search &, const void *) { return true; });
}

} // namespace

void add_kx_string_rows() {
    if (current().texts.front() != std::string("en")) return;
    for (const Job &job : kJobs) {
        for (const std::size_t size : kSizes) {
            UnitsRow row(job.name, "en", size, [size] { return Units(size); });
            job.add_ours(row);
            job.add_peer(row);
            job.add_floor(row);
        }
        if (job.has_largest) {
            UnitsRow row(job.name, "en", kLargest, [] { return Units(kLargest); });
            job.add_ours(row);
            job.add_floor(row);
        }
    }
    for (const std::size_t size : kSizes)
        add_search_row("text", size, [size] { return search_in_text(size); });
    add_search_row("worst", 1 << 16, [] { return search_at_worst(1 << 16, 32); });
    // 64 times as much is sought in a quarter of the text: dearer only if the time grows with both.
    add_search_row("worst-long", 1 << 14, [] { return search_at_worst(1 << 14, 1 << 11); });
}

} // namespace kxbench
