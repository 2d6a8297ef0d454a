// What the page asks of the libraries. Every answer stays until the next question.
#include <algorithm>
#include <cstdint>
#include <kxdetect/detect.h>
#include <kxstr/text.h>
#include <optional>
#include <string>
#include <string_view>

#include "encodings.h"
#include "json.h"
#include "through_unicode.h"

// A browser has no converter beside the library.
bool kx::system_has(const std::string &) {
    return false;
}

namespace {

constexpr std::size_t kAnswers = 3;
constexpr std::size_t kMostFaultsTold = 100;
constexpr std::size_t kMostUtf8 = 3;                      // bytes of a byte
constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

std::string answer; // JSON
std::string utf8;

// What the page calls ascii reads the same in UTF-8.
std::optional<KxTextForm> form_of(const std::string &name) {
    const auto form = kx::find_encoding(name == "ascii" ? "utf-8" : name);
    if (!form) return std::nullopt;
    switch (form->kind) {
    case kx::EncodingKind::code_page: return KxTextForm{KX_TEXT_CODE_PAGE, form->page.kx_number, nullptr};
    case kx::EncodingKind::utf8: return KxTextForm{KX_TEXT_UTF8, 0, nullptr};
    case kx::EncodingKind::utf16le: return KxTextForm{KX_TEXT_UTF16LE, 0, nullptr};
    case kx::EncodingKind::utf16be: return KxTextForm{KX_TEXT_UTF16BE, 0, nullptr};
    default: return std::nullopt;
    }
}

std::string description_of(const std::string &name) {
    for (const kx::KnownPage &page : kx::known_pages()) {
        if (page.name == name) return page.description;
    }
    return name == "ascii" ? "no byte from 80 up" : name == "binary" ? "no text" : "";
}

std::string quoted_or_empty(const char *text) {
    return kx::quoted(text != nullptr ? text : "");
}

// What lies before a fault, for people: lines count from 1.
struct Place {
    std::size_t at = 0;
    std::size_t line = 1;

    void move_to(const std::uint8_t *bytes, std::size_t to) {
        line += static_cast<std::size_t>(std::count(bytes + at, bytes + to, '\n'));
        at = to;
    }
};

} // namespace

extern "C" {

// The likeliest pages, the best first: [{page, about, language, share, broken, same}].
const char *page_guess(const std::uint8_t *bytes, std::size_t size) {
    KxDetectGuess guesses[kAnswers];
    const std::size_t count = KxDetect(bytes, size, guesses, kAnswers);
    answer = "[";
    for (std::size_t number = 0; number < count; ++number) {
        const KxDetectGuess &one = guesses[number];
        std::string same;
        for (unsigned bit = 0; const char *name = KxDetectPageName(bit); ++bit) {
            if ((one.same >> bit & 1U) == 0 || std::string_view(name) == one.page) continue;
            if (!same.empty()) same += ',';
            same += kx::quoted(name);
        }
        answer += number != 0 ? ",{" : "{";
        answer += "\"page\":" + kx::quoted(one.page) + ",\"about\":" + kx::quoted(description_of(one.page));
        answer += ",\"language\":" + quoted_or_empty(KxDetectLanguageName(one.language));
        answer += ",\"share\":" + std::to_string(one.share) + ",\"broken\":" + std::to_string(one.broken);
        answer += ",\"same\":[" + same + "]}";
    }
    answer += ']';
    return answer.c_str();
}

// All that page_convert() reads: [[name, what it is]].
const char *page_list() {
    answer = R"([["utf-8","Unicode"],["utf-16le","Unicode, low byte first"],["utf-16be","Unicode, high byte first"])";
    for (const kx::KnownPage &page : kx::known_pages())
        answer += ",[" + kx::quoted(page.name) + ',' + kx::quoted(page.description) + ']';
    answer += ']';
    return answer.c_str();
}

// The text in UTF-8, in page_text(). What converts to nothing becomes U+FFFD. `last`: 0 for the start of a text, which
// may end inside a character. Returns {faults, told: [[place, line, bytes]]}; "null" for a page without a table here.
const char *page_convert(const char *page, const std::uint8_t *bytes, std::size_t size, std::uint32_t last) {
    const std::optional<KxTextForm> from = form_of(page);
    const KxTextForm to{KX_TEXT_UTF8, 0, nullptr};
    KxTextConverter converter;
    std::string().swap(utf8); // not to have two of them in a memory that only grows
    if (!from || KxTextPrepare(&converter, &*from, &to, 0) == 0) return "null";
    std::size_t at = KxTextMark(from->form, bytes, size), faults = 0;
    Place place;
    std::string told;
    std::size_t written = 0;
    utf8.resize(size * kMostUtf8);
    for (;;) {
        KxTextResult result;
        const std::uint32_t status = KxTextConvert(&converter, bytes + at, size - at, last, utf8.data() + written,
                                                   utf8.size() - written, &result);
        at += result.read;
        written += result.written;
        if (status == KX_TEXT_DONE || (status == KX_TEXT_INCOMPLETE && last == 0)) break;
        if (faults++ < kMostFaultsTold) {
            place.move_to(bytes, at);
            if (!told.empty()) told += ',';
            told +=
                '[' + std::to_string(at) + ',' + std::to_string(place.line) + ',' + std::to_string(result.fault) + ']';
        }
        at += result.fault; // a byte at least, so that the room is enough for what stands in its place
        written = static_cast<std::size_t>(
            std::ranges::copy(kReplacement, utf8.begin() + static_cast<std::ptrdiff_t>(written)).out - utf8.begin());
    }
    utf8.resize(written);
    answer = "{\"faults\":" + std::to_string(faults) + ",\"told\":[" + told + "]}";
    return answer.c_str();
}

const char *page_text() {
    return utf8.data();
}

std::size_t page_text_size() {
    return utf8.size();
}
}
