// Byte strings and memory against the C library's functions of the same name.
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <cctype>
#include <cstring>
#include <kxstr/prim.h>
#include <kxstr/strops.h>
#include <strings.h>

namespace kxbench {
namespace {

constexpr std::size_t kSizes[] = {16, 1 << 10, 1 << 16};
constexpr std::size_t kLargest = 1 << 26;
constexpr unsigned char kSought = 0x7F; // not in the text but as its last byte

struct Bytes {
    std::string text;
    std::string same;       // elsewhere in memory
    std::string other_case; // the same but for the case of its letters
    std::string out;

    explicit Bytes(std::size_t size) : text(text_of("en", size).native), out(size + 1, '\0') {
        text.back() = static_cast<char>(kSought);
        same = text;
        other_case = text;
        for (char &byte : other_case)
            byte = static_cast<char>(std::isupper(static_cast<unsigned char>(byte)) ? std::tolower(byte)
                                                                                    : std::toupper(byte));
    }
    void clear_output() { out.assign(out.size(), '\xEE'); }
    [[nodiscard]] std::size_t size() const { return text.size(); }
    [[nodiscard]] const char *last() const { return &text.back(); }
    [[nodiscard]] bool out_is_text() const { return out.compare(0, text.size(), text) == 0; }
};
using BytesRow = Row<Bytes>;

constexpr auto is_size = [](const Bytes &in, auto result) { return result == in.size(); };
constexpr auto is_last = [](const Bytes &in, const void *result) { return result == in.last(); };
constexpr auto is_zero = [](const Bytes &, int result) { return result == 0; };
constexpr auto out_is_text = [](const Bytes &in, const void *) { return in.out_is_text(); };

auto find_end_of_text(Bytes &in) {
    return std::memchr(in.text.data(), kSought, in.size());
}
auto compare_memory(Bytes &in) {
    return std::memcmp(in.text.data(), in.same.data(), in.size());
}
auto copy_memory(Bytes &in) {
    return std::memcpy(in.out.data(), in.text.data(), in.size());
}
std::uint32_t count_of(const Bytes &in) {
    return static_cast<std::uint32_t>(in.size());
}

// Entrants apart from ours are left out of the largest row, but for the floor.
struct Job {
    const char *name;
    void (*add_ours)(BytesRow &);
    void (*add_peer)(BytesRow &);
    void (*add_floor)(BytesRow &);
    bool has_largest = false;
};

void add_scanning_floor(BytesRow &row) {
    row.entrant(
        "floor-memchr", [](Bytes &in) { return find_end_of_text(in); }, is_last);
}
void add_comparing_floor(BytesRow &row) {
    row.entrant(
        "floor-memcmp", [](Bytes &in) { return compare_memory(in); }, is_zero);
}
void add_copying_floor(BytesRow &row) {
    row.entrant(
        "floor-memcpy", [](Bytes &in) { return copy_memory(in); }, out_is_text);
}

constexpr Job kJobs[] = {
    {"wstrlen",
     [](BytesRow &row) {
         row.entrant(
             "ours", [](Bytes &in) { return wstrlen(in.text.c_str()); }, is_size);
     },
     [](BytesRow &row) {
         row.entrant(
             "strlen", [](Bytes &in) { return std::strlen(in.text.c_str()); }, is_size);
     },
     add_scanning_floor, true},
    {"wstrchr",
     [](BytesRow &row) {
         row.entrant(
             "ours", [](Bytes &in) { return wstrchr(in.text.c_str(), kSought); }, is_last);
     },
     [](BytesRow &row) {
         row.entrant(
             "strchr", [](Bytes &in) { return std::strchr(in.text.c_str(), kSought); }, is_last);
     },
     add_scanning_floor},
    {"wstrcmp",
     [](BytesRow &row) {
         row.entrant(
             "ours", [](Bytes &in) { return wstrcmp(in.text.c_str(), in.same.c_str()); }, is_zero);
     },
     [](BytesRow &row) {
         row.entrant(
             "strcmp", [](Bytes &in) { return std::strcmp(in.text.c_str(), in.same.c_str()); }, is_zero);
     },
     add_comparing_floor},
    {"w_stricmp",
     [](BytesRow &row) {
         row.entrant(
             "ours", [](Bytes &in) { return w_stricmp(in.text.c_str(), in.other_case.c_str()); }, is_zero);
     },
     [](BytesRow &row) {
         row.entrant(
             "strcasecmp", [](Bytes &in) { return strcasecmp(in.text.c_str(), in.other_case.c_str()); }, is_zero);
     },
     add_comparing_floor},
    {"KXwmemcpy",
     [](BytesRow &row) {
         row.entrant(
             "ours",
             [](Bytes &in) {
                 KXwmemcpy(in.out.data(), in.text.data(), count_of(in));
                 return in.out.data();
             },
             out_is_text);
     },
     [](BytesRow &row) {
         row.entrant(
             "memcpy", [](Bytes &in) { return copy_memory(in); }, out_is_text);
     },
     add_copying_floor, true},
    {"KXwmemcmp",
     [](BytesRow &row) {
         row.entrant(
             "ours", [](Bytes &in) { return KXwmemcmp(in.text.data(), in.same.data(), count_of(in)); }, is_zero);
     },
     [](BytesRow &row) {
         row.entrant(
             "memcmp", [](Bytes &in) { return compare_memory(in); }, is_zero);
     },
     add_comparing_floor},
};

} // namespace

void add_byte_string_rows() {
    if (current().texts.front() != std::string("en")) return;
    for (const Job &job : kJobs) {
        for (const std::size_t size : kSizes) {
            BytesRow row(job.name, "en", size, [size] { return Bytes(size); });
            job.add_ours(row);
            job.add_peer(row);
            job.add_floor(row);
        }
        if (job.has_largest) {
            BytesRow row(job.name, "en", kLargest, [] { return Bytes(kLargest); });
            job.add_ours(row);
            job.add_floor(row);
        }
    }
}

} // namespace kxbench
