#include "strip.h"

#include <algorithm>
#include <array>
#include <kxstr/forms.h>

#include "coders.h"
#include "conversion.h"
#include "forms/strip.h"
#include "stream_codes.h"

namespace kx {
namespace {

constexpr auto kOptions = with_text_options({option::kKeep, option::kHyphens, option::kSoftAsSpace});

constexpr Example kExamples[] = {
    {"kx strip --keep=hard document.kx -o text.txt", "the text in UTF-8, with its hard line ends"}};

constexpr Usage kUsageText{
    "kx strip",
    "[--keep=LIST] [-t FORM] [-o OUT | -i | -O DIR] [OPTION]... [FILE...]",
    "Strips document streams to their text. Reads standard input when no FILE is given, or when\n"
    "FILE is -.",
    kOptions,
    "Characters and spaces are text. Line ends, tabs and attributes go unless they are kept, all\n"
    "other codes go in any case. Kept attributes show in the forms kx, stream, stream5 and sio only.\n"
    "A code that lies about its size ends the work on its file: its place is told, in bytes from 0.\n"
    "What came before it is written to standard output; a file stays what it was. The other files\n"
    "are done, and the exit status is 1. With -c it counts as one byte, and goes.",
    kExamples,
    "all was stripped",
    "something was not, or could not be read or written",
};

// Strips code by code, so that each character is known by its place.
class StripDecoder final : public CodeDecoder {
  public:
    StripDecoder(std::uint32_t flags, bool with_codes) : flags_(flags), with_codes_(with_codes) {}

  private:
    std::optional<KxChar> unit_of(std::span<const std::uint8_t> code) override {
        code_.assign(code.begin(), code.end());
        code_.push_back(0);
        std::array<std::uint8_t, 8> kept{}; // no code that can be kept is longer
        const std::uint32_t size = TpiKxDocStripBuff(kept.data(), code_.data(), kept.size(), flags_) - 1;
        if (size == 0) return std::nullopt;
        constexpr bool all_codes = true;
        const auto unit = unit_of_stream_code(std::span(kept).first(size), all_codes);
        if (!unit) return std::nullopt;
        // An extended character may be a code of KX text, such as a tab.
        std::array<KxChar, 2> text{*unit};
        if (kxstr::forms::strip_string(text.data(), text.data(), 1, flags_, kDoubleByteSystem) == 0)
            return std::nullopt;
        if (kxstr::forms::is_attribute(text[0]) && !with_codes_) return std::nullopt;
        return text[0];
    }

    std::uint32_t flags_;
    bool with_codes_;
    ByteBuffer code_;
};

std::string take_keep(std::uint32_t &flags, const std::string &list) {
    constexpr struct {
        const char *name;
        std::uint32_t flag;
    } kinds[] = {{"attributes", KX_KEEP_ATTRIBUTES},
                 {"hard", KX_KEEP_HARD_ENDS},
                 {"soft", KX_KEEP_SOFT_ENDS},
                 {"tabs", KX_KEEP_TABS}};
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        const std::string name = list.substr(begin, end - begin);
        const auto *kind =
            std::find_if(std::begin(kinds), std::end(kinds), [&](const auto &k) { return k.name == name; });
        if (kind == std::end(kinds)) return "cannot keep '" + name + "'; attributes, hard, soft and tabs can be kept";
        flags |= kind->flag;
        begin = end + 1;
    }
    return "";
}

} // namespace

int run_strip(int argc, char **argv) {
    TextRequest request;
    request.from = Encoding{EncodingKind::stream, {}};
    request.to = Encoding{EncodingKind::utf8, {}};
    std::uint32_t flags = 0;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) {
        switch (id) {
        case kKeepId: return take_keep(flags, argument);
        case kHyphensId: flags |= KX_HYPHENS_AS_TEXT; return std::string();
        case kSoftAsSpaceId: flags |= KX_SOFT_ENDS_AS_SPACES; return std::string();
        default: return take_text_option(request, id, argument);
        }
    });
    if (parsed.stop) return parsed.status;
    request.files.operands = {argv + parsed.first_operand, argv + argc};
    const TextPages pages = pages_of(request, system_page());
    return run_text(kUsageText, request, pages, nullptr,
                    [&] { return std::make_unique<StripDecoder>(flags, is_kx_encoding(*request.to)); });
}

} // namespace kx
