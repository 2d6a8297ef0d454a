// Whole strings between native text, UTF-16 and KX text. Nobody else knows KX text; the peers convert the same
// characters between the code page and UTF-16, 16 bits a character like KX text.
#include "peers.h"
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstring>
#include <kxstr/codepage.h>
#include <kxstr/forms.h>

namespace kxbench {
namespace {

// The largest shows how the cost of a character grows with the text; peers say nothing about that.
constexpr std::size_t kSizes[] = {16, 1 << 10, 1 << 16};
constexpr std::size_t kLargest = 1 << 26;

struct Conversion {
    Text text;
    Iconv iconv_to_unicode{kUtf16, current().iconv_name};
    Iconv iconv_to_native{current().iconv_name, kUtf16};
    IcuConverter icu{current().icu_name};
    KxCodePage page{};

    Conversion(const std::string &language, std::size_t size) : text(text_of(language, size)) {
        WcvtSetCodepage(current().code_page, KX_BOTH_DIRECTIONS, &page);
    }
    void clear_output() { text.clear_output(); }
    [[nodiscard]] bool units_are(const std::vector<std::uint16_t> &wanted) const {
        return std::ranges::equal(wanted, std::span(text.units_out).first(wanted.size()));
    }
    [[nodiscard]] bool bytes_are_native() const { return text.bytes_out.starts_with(text.native); }
    [[nodiscard]] std::size_t room() const { return text.units_out.size(); }
};
using ConversionRow = Row<Conversion>;

constexpr auto units_are_kx = [](const Conversion &in, auto) { return in.units_are(in.text.kx); };
constexpr auto units_are_unicode = [](const Conversion &in, std::size_t) {
    return std::equal(in.text.utf16.begin(), in.text.utf16.end() - 1, in.text.units_out.begin());
};
constexpr auto bytes_are_native = [](const Conversion &in, auto) { return in.bytes_are_native(); };
constexpr auto any_result = [](const Conversion &, auto) { return true; };

void add_iconv_to_unicode(ConversionRow &row) {
    row.entrant(
        "iconv",
        [](Conversion &in) {
            return in.iconv_to_unicode.convert(in.text.native.data(), in.text.native.size(), in.text.units_out.data(),
                                               in.room() * 2);
        },
        units_are_unicode);
}

void add_iconv_to_native(ConversionRow &row) {
    row.entrant(
        "iconv",
        [](Conversion &in) {
            return in.iconv_to_native.convert(in.text.utf16.data(), in.text.size() * 2, in.text.bytes_out.data(),
                                              in.text.bytes_out.size());
        },
        bytes_are_native);
}

void add_peers_to_unicode(ConversionRow &row) {
    add_iconv_to_unicode(row);
    row.entrant(
        "icu",
        [](Conversion &in) {
            return in.icu.to_unicode(in.text.native.data(), in.text.native.size(), in.text.units_out.data(), in.room());
        },
        units_are_unicode);
}

void add_peers_to_native(ConversionRow &row) {
    add_iconv_to_native(row);
    row.entrant(
        "icu",
        [](Conversion &in) {
            return in.icu.from_unicode(in.text.utf16.data(), in.text.size(), in.text.bytes_out.data(),
                                       in.text.bytes_out.size());
        },
        bytes_are_native);
}

void add_widening_floor(ConversionRow &row) {
    row.entrant(
        "floor-widen",
        [](Conversion &in) {
            plain_widen(in.text.native.data(), in.text.native.size(), in.text.units_out.data());
            return in.text.units_out.data();
        },
        any_result);
}

void add_narrowing_floor(ConversionRow &row) {
    row.entrant(
        "floor-narrow",
        [](Conversion &in) {
            plain_narrow(in.text.kx.data(), in.text.size(), in.text.bytes_out.data());
            return in.text.bytes_out.data();
        },
        any_result);
}

void add_copying_floor(ConversionRow &row) {
    row.entrant(
        "floor-memcpy",
        [](Conversion &in) { return std::memcpy(in.text.units_out.data(), in.text.kx.data(), in.text.size() * 2); },
        any_result);
}

struct Job {
    const char *name;
    void (*add_ours)(ConversionRow &);
    void (*add_peers)(ConversionRow &);
    void (*add_floor)(ConversionRow &);
};

constexpr Job kJobs[] = {
    {"W6azTowz",
     [](ConversionRow &row) {
         row.entrant(
             "ours", [](Conversion &in) { return W6azTowz(in.text.native.c_str(), in.text.units_out.data()); },
             units_are_kx);
     },
     add_peers_to_unicode, add_widening_floor},
    {"W6wzToaz",
     [](ConversionRow &row) {
         row.entrant(
             "ours", [](Conversion &in) { return W6wzToaz(in.text.kx.data(), in.text.bytes_out.data()); },
             bytes_are_native);
     },
     add_peers_to_native, add_narrowing_floor},
    {"W6VaskTowz",
     [](ConversionRow &row) {
         row.entrant(
             "ours", [](Conversion &in) { return W6VaskTowz(in.text.utf16.data(), in.text.units_out.data()); },
             [](const Conversion &in, auto) { return in.units_are(in.text.unicode_kx); });
     },
     add_peers_to_native, add_copying_floor},
    {"W6wzToVask",
     [](ConversionRow &row) {
         row.entrant(
             "ours", [](Conversion &in) { return W6wzToVask(in.text.unicode_kx.data(), in.text.units_out.data()); },
             [](const Conversion &in, auto) { return in.units_are(in.text.utf16); });
     },
     add_peers_to_unicode, add_copying_floor},
};

// ---- one call a character: what a filter's own loop does, against the C library on the whole text ----

std::size_t each_to_kx(const KxCodePage &page, const System &system, const std::string &from, std::uint16_t *to) {
    std::size_t done = 0;
    for (std::size_t i = 0; i < from.size(); ++i) {
        const auto byte = static_cast<unsigned char>(from[i]);
        std::uint32_t code = byte;
        if (system.is_lead(byte)) code = code << 8 | static_cast<unsigned char>(from[++i]);
        to[done++] = WcvtNtvToKx(&page, code);
    }
    return done;
}

std::size_t each_to_native(const KxCodePage &page, const std::vector<KxChar> &from, char *to) {
    char *position = to;
    for (const KxChar ch : std::span(from).first(from.size() - 1)) {
        const std::uint16_t code = WcvtKxToNtv(&page, ch);
        if (code > 0xFF) *position++ = static_cast<char>(code >> 8);
        *position++ = static_cast<char>(code);
    }
    return static_cast<std::size_t>(position - to);
}

constexpr Job kJobsByCharacter[] = {
    {"WcvtNtvToKx",
     [](ConversionRow &row) {
         row.entrant(
             "ours",
             [](Conversion &in) { return each_to_kx(in.page, current(), in.text.native, in.text.units_out.data()); },
             [](const Conversion &in, std::size_t done) {
                 return done == in.text.size() &&
                        std::equal(in.text.kx.begin(), in.text.kx.end() - 1, in.text.units_out.begin());
             });
     },
     add_iconv_to_unicode, add_widening_floor},
    {"WcvtKxToNtv",
     [](ConversionRow &row) {
         row.entrant(
             "ours", [](Conversion &in) { return each_to_native(in.page, in.text.kx, in.text.bytes_out.data()); },
             bytes_are_native);
     },
     add_iconv_to_native, add_narrowing_floor},
};

} // namespace

void add_conversion_rows() {
    for (const std::string language : current().texts) {
        const auto make = [&](const Job &job, std::size_t size) {
            return ConversionRow(job.name, language, size, [language, size] { return Conversion(language, size); });
        };
        for (const Job &job : kJobs) {
            for (const std::size_t size : kSizes) {
                ConversionRow row = make(job, size);
                job.add_ours(row);
                job.add_peers(row);
                job.add_floor(row);
            }
            if (language == "fr") {
                ConversionRow row = make(job, kLargest);
                job.add_ours(row);
                job.add_floor(row);
            }
        }
        for (const Job &job : kJobsByCharacter) {
            if (language != "fr" && language != "ja") continue;
            ConversionRow row = make(job, 1 << 16);
            job.add_ours(row);
            job.add_peers(row);
            job.add_floor(row);
        }
    }
}

} // namespace kxbench
