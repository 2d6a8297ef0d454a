// Document streams. No other library knows them: the peers are plain loops that do the whole job, or converters and
// counters that do theirs on as many characters.
#include "peers.h"
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <kxstr/forms.h>
#include <locale.h>

namespace kxbench {
namespace {

// Counts of these functions are 16-bit; a page of a document is far smaller.
constexpr std::size_t kBytes = 60000;
constexpr std::size_t kFewCharacters = 16;
constexpr std::size_t kManyCharacters = 12000;

struct StreamWork {
    Stream stream;
    Iconv iconv_to_native{current().iconv_name, kUtf16};
    Iconv iconv_to_unicode{kUtf16, current().iconv_name};
    IcuConverter icu{current().icu_name};
    std::vector<std::uint8_t> converted; // the stream that the native text becomes: line ends are characters
    std::string native_of_stream;        // the native text with the stream's line end code

    explicit StreamWork(Stream made) : stream(std::move(made)), native_of_stream(stream.text.native) {
        std::ranges::replace(native_of_stream, '\n', '\xCC');
        for (const KxChar kx : std::span(stream.text.kx).first(stream.text.size())) {
            if (kx < 0x80)
                converted.push_back(static_cast<std::uint8_t>(kx));
            else
                converted.insert(converted.end(),
                                 {0xF0, static_cast<std::uint8_t>(kx), static_cast<std::uint8_t>(kx >> 8), 0xF0});
        }
        converted.push_back(0);
        stream.out.resize(std::max(stream.out.size(), converted.size() + 64));
        // For mbsrtowcs; every glibc has it.
        setlocale(LC_CTYPE, "C.UTF-8"); // NOLINT(concurrency-mt-unsafe): there is one thread
    }
    void clear_output() {
        std::ranges::fill(stream.out, std::uint8_t{0xEE});
        stream.text.clear_output();
    }
    [[nodiscard]] bool out_is(const std::vector<std::uint8_t> &wanted) const {
        return std::equal(wanted.begin(), wanted.end(), stream.out.begin());
    }
};
using StreamRow = Row<StreamWork>;

constexpr auto is_size = [](const StreamWork &in, auto result) {
    return static_cast<std::size_t>(result) == in.stream.size();
};
constexpr auto out_is_stream = [](const StreamWork &in, auto) { return in.out_is(in.stream.bytes); };

void add_length_row(const std::string &language, std::size_t size, std::function<StreamWork()> make) {
    StreamRow("wdstrlen", language, size, std::move(make))
        .entrant(
            "ours", [](StreamWork &in) { return wdstrlen(in.stream.bytes.data()); }, is_size)
        .entrant(
            "mbsrtowcs",
            [](StreamWork &in) {
                std::mbstate_t state{};
                const char *text = in.stream.utf8.c_str();
                // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is the caller's own
                return std::mbsrtowcs(nullptr, &text, 0, &state);
            },
            [](const StreamWork &in, std::size_t characters) { return characters == in.stream.text.size(); })
        .entrant(
            "plain-walk", [](StreamWork &in) { return plain_stream_length(in.stream.bytes.data()); }, is_size)
        .entrant(
            "floor-memchr",
            [](StreamWork &in) {
                const auto *end =
                    static_cast<const std::uint8_t *>(std::memchr(in.stream.bytes.data(), 0, in.stream.bytes.size()));
                return end - in.stream.bytes.data();
            },
            [](const StreamWork &, auto) { return true; }); // a 0 within a code stops it
}

void add_copy_row(const std::string &language, std::size_t size, std::function<StreamWork()> make) {
    StreamRow("wdstrcpy", language, size, std::move(make))
        .entrant(
            "ours", [](StreamWork &in) { return wdstrcpy(in.stream.out.data(), in.stream.bytes.data()); },
            out_is_stream)
        .entrant(
            "plain-walk-memcpy",
            [](StreamWork &in) {
                const std::size_t length = plain_stream_length(in.stream.bytes.data());
                return std::memcpy(in.stream.out.data(), in.stream.bytes.data(), length + 1);
            },
            out_is_stream)
        .entrant(
            "floor-memcpy",
            [](StreamWork &in) {
                return std::memcpy(in.stream.out.data(), in.stream.bytes.data(), in.stream.bytes.size());
            },
            out_is_stream);
}

void add_strip_row(const std::string &language, std::size_t size, std::function<StreamWork()> make) {
    constexpr auto is_stripped = [](const StreamWork &in, std::size_t count) {
        return count == in.stream.bytes.size() && in.out_is(in.stream.bytes); // the stream is text and line ends
    };
    StreamRow("TpiKxDocStripBuff", language, size, std::move(make))
        .entrant(
            "ours",
            [](StreamWork &in) {
                return TpiKxDocStripBuff(in.stream.out.data(), in.stream.bytes.data(),
                                         static_cast<std::uint32_t>(in.stream.bytes.size()), KX_KEEP_HARD_ENDS);
            },
            is_stripped)
        .entrant(
            "plain-loop", [](StreamWork &in) { return plain_strip(in.stream.out.data(), in.stream.bytes.data()); },
            is_stripped)
        .entrant(
            "floor-memcpy",
            [](StreamWork &in) {
                std::memcpy(in.stream.out.data(), in.stream.bytes.data(), in.stream.bytes.size());
                return in.stream.bytes.size();
            },
            is_stripped);
}

void add_to_ansi_row(const std::string &language, std::size_t size, std::function<StreamWork()> make) {
    constexpr auto bytes_are_native = [](const StreamWork &in, auto) {
        return in.stream.text.bytes_out.starts_with(in.stream.text.native);
    };
    StreamRow("TpiKxToAnsiBuff", language, size, std::move(make))
        .entrant(
            "ours",
            [](StreamWork &in) {
                return TpiKxToAnsiBuff(reinterpret_cast<char *>(in.stream.out.data()), in.stream.bytes.data(),
                                       static_cast<std::uint32_t>(in.stream.bytes.size()));
            },
            [](const StreamWork &in, std::uint32_t count) {
                return count == in.native_of_stream.size() + 1 &&
                       std::memcmp(in.stream.out.data(), in.native_of_stream.c_str(), count) == 0;
            })
        .entrant(
            "iconv",
            [](StreamWork &in) {
                Text &text = in.stream.text;
                return in.iconv_to_native.convert(text.utf16.data(), text.size() * 2, text.bytes_out.data(),
                                                  text.bytes_out.size());
            },
            bytes_are_native)
        .entrant(
            "icu",
            [](StreamWork &in) {
                Text &text = in.stream.text;
                return in.icu.from_unicode(text.utf16.data(), text.size(), text.bytes_out.data(),
                                           text.bytes_out.size());
            },
            bytes_are_native)
        .entrant(
            "floor-narrow",
            [](StreamWork &in) {
                plain_narrow(in.stream.text.kx.data(), in.stream.text.size(), in.stream.text.bytes_out.data());
                return in.stream.text.size();
            },
            [](const StreamWork &, auto) { return true; });
}

void add_from_ansi_row(const std::string &language, std::size_t size, std::function<StreamWork()> make) {
    constexpr auto units_are_unicode = [](const StreamWork &in, auto) {
        return std::equal(in.stream.text.utf16.begin(), in.stream.text.utf16.end() - 1,
                          in.stream.text.units_out.begin());
    };
    StreamRow("TpiAnsiToKxBuff", language, size, std::move(make))
        .entrant(
            "ours",
            [](StreamWork &in) {
                return TpiAnsiToKxBuff(in.stream.out.data(), in.stream.text.native.c_str(),
                                       static_cast<std::uint32_t>(in.converted.size()));
            },
            [](const StreamWork &in, std::uint32_t count) {
                return count == in.converted.size() && in.out_is(in.converted);
            })
        .entrant(
            "iconv",
            [](StreamWork &in) {
                Text &text = in.stream.text;
                return in.iconv_to_unicode.convert(text.native.data(), text.native.size(), text.units_out.data(),
                                                   text.units_out.size() * 2);
            },
            units_are_unicode)
        .entrant(
            "icu",
            [](StreamWork &in) {
                Text &text = in.stream.text;
                return in.icu.to_unicode(text.native.data(), text.native.size(), text.units_out.data(),
                                         text.units_out.size());
            },
            units_are_unicode)
        .entrant(
            "floor-widen",
            [](StreamWork &in) {
                plain_widen(in.stream.text.native.data(), in.stream.text.native.size(),
                            in.stream.text.units_out.data());
                return in.stream.text.size();
            },
            [](const StreamWork &, auto) { return true; });
}

using MakeRow = void (*)(const std::string &language, std::size_t size, std::function<StreamWork()> make);

// A stream of so many bytes or, where it is told, of so many characters; the row's size is that number.
struct Job {
    MakeRow add;
    std::size_t size;
    bool counts_characters;
    std::string_view texts;
};

constexpr Job kJobs[] = {
    {add_length_row, kFewCharacters, true, "en fr ru"},
    {add_length_row, kBytes, false, "en fr ru"},
    {add_copy_row, kBytes, false, "en fr"},
    {add_strip_row, kBytes, false, "en fr ru"},
    {add_to_ansi_row, kFewCharacters, true, "en fr ru ja"},
    {add_to_ansi_row, kBytes, false, "en fr ru ja"},
    {add_from_ansi_row, kFewCharacters, true, "fr ru ja"},
    {add_from_ansi_row, kManyCharacters, true, "fr ru ja"},
};

} // namespace

void add_stream_rows() {
    for (const std::string language : current().texts) {
        for (const Job &job : kJobs) {
            if (job.texts.find(language) == job.texts.npos) continue;
            job.add(language, job.size, [=] {
                return StreamWork(job.counts_characters ? stream_of_characters(language, job.size)
                                                        : stream_of_bytes(language, job.size));
            });
        }
    }
}

} // namespace kxbench
