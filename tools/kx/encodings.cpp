#include "encodings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "coders.h"
#include "line_ends.h"
#include "near.h"
#include "os.h"
#include "through_unicode.h"

namespace kx {
namespace {

constexpr bool kLowFirst = false, kHighFirst = true;

// Names in these tables are in small letters. Dashes and the like do not count when they are looked for.
struct Form {
    EncodingKind kind;
    std::array<const char *, 5> names; // the usual one first
    const char *description;
    std::uint32_t text_form; // of the library's conversion of texts; 0: it has none
    std::uint8_t unit;       // bytes
    bool high_first;
    enum Family : std::uint8_t { kx, unicode, other } family;
    bool through_unicode = false;
};

constexpr Form kForms[] = {
    {EncodingKind::utf8, {"utf-8", "65001"}, "Unicode", KX_TEXT_UTF8, 1, kLowFirst, Form::unicode},
    {EncodingKind::utf16,
     {"utf-16", "ucs-2", "unicode"},
     "Unicode; its mark tells the order, else low byte first",
     0,
     2,
     kLowFirst,
     Form::unicode},
    {EncodingKind::utf16le,
     {"utf-16le", "ucs-2le", "1200"},
     "Unicode, low byte first",
     KX_TEXT_UTF16LE,
     2,
     kLowFirst,
     Form::unicode},
    {EncodingKind::utf16be,
     {"utf-16be", "ucs-2be", "1201"},
     "Unicode, high byte first",
     KX_TEXT_UTF16BE,
     2,
     kHighFirst,
     Form::unicode},
    {EncodingKind::utf32,
     {"utf-32", "ucs-4"},
     "Unicode; its mark tells the order, else low byte first",
     0,
     4,
     kLowFirst,
     Form::unicode,
     true},
    {EncodingKind::utf32le,
     {"utf-32le", "ucs-4le", "12000"},
     "Unicode, low byte first",
     0,
     4,
     kLowFirst,
     Form::unicode,
     true},
    {EncodingKind::utf32be,
     {"utf-32be", "ucs-4be", "12001"},
     "Unicode, high byte first",
     0,
     4,
     kHighFirst,
     Form::unicode,
     true},
    {EncodingKind::ascii, {"ascii", "us-ascii", "20127"}, "bytes below 80 only", 0, 1, kLowFirst, Form::other, true},
    {EncodingKind::kx, {"kx"}, "KX text: 16-bit units, low byte first", KX_TEXT_KXLE, 2, kLowFirst, Form::kx},
    {EncodingKind::stream, {"stream", "dz"}, "KX document stream", 0, 1, kLowFirst, Form::kx},
    {EncodingKind::stream5,
     {"stream5", "5dz"},
     "document stream of the older generation, KX 5",
     0,
     1,
     kLowFirst,
     Form::kx},
    {EncodingKind::sio, {"sio"}, "compact KX text; written only", 0, 1, kLowFirst, Form::kx},
    // By other tables: kPages, and the system.
    {EncodingKind::code_page, {}, "", KX_TEXT_CODE_PAGE, 1, kLowFirst, Form::other},
    {EncodingKind::system, {}, "", 0, 1, kLowFirst, Form::other, true},
};

const Form &row_of(EncodingKind kind) {
    return *std::ranges::find(kForms, kind, &Form::kind);
}

// Every page is also known by its two numbers.
struct NamedPage {
    std::uint32_t kx_number;
    std::array<const char *, 4> names;
    const char *description;
};

constexpr NamedPage kPages[] = {
    {333, {}, "DOS Greek, with French letters"},
    {437, {}, "DOS, United States"},
    {708, {}, "Arabic, with French letters"},
    {710, {}, "DOS Arabic"},
    {737, {}, "DOS Greek"},
    {775, {}, "DOS Baltic"},
    {850, {}, "DOS Western European"},
    {851, {}, "DOS Greek, older"},
    {8510, {}, "DOS Greek, older, variant"},
    {852, {}, "DOS Central European"},
    {853, {}, "DOS Maltese, Esperanto and Turkish"},
    {855, {}, "DOS Cyrillic"},
    {857, {}, "DOS Turkish"},
    {860, {}, "DOS Portuguese"},
    {8600, {}, "DOS Portuguese, variant"},
    {8601, {}, "DOS Portuguese, variant"},
    {861, {}, "DOS Icelandic"},
    {862, {}, "DOS Hebrew"},
    {863, {}, "DOS Canadian French"},
    {864, {}, "DOS Arabic, presentation forms"},
    {865, {}, "DOS Nordic"},
    {866, {}, "DOS Russian"},
    {8660, {}, "DOS Ukrainian"},
    {869, {}, "DOS Greek, newer"},
    {895, {"kamenicky"}, "DOS Czech and Slovak"},
    {896, {"mazovia"}, "DOS Polish"},
    {897, {}, "DOS Czech and Slovak, variant"},
    {932, {"shift-jis", "sjis", "windows-31j", "ms-kanji"}, "Japanese"},
    {936, {"gbk", "gb2312", "euc-cn"}, "Simplified Chinese"},
    {949, {"euc-kr", "uhc", "ks-c-5601-1987"}, "Korean"},
    {950, {"big5"}, "Traditional Chinese"},
    {1004, {}, "Windows Western European, older"},
    {1250, {}, "Windows Central European"},
    {1251, {}, "Windows Cyrillic"},
    {1252, {}, "Windows Western European"},
    {1253, {}, "Windows Greek"},
    {1254, {}, "Windows Turkish"},
    {1255, {}, "Windows Hebrew"},
    {1256, {}, "Windows Arabic"},
    {1257, {}, "Windows Baltic"},
    {1258, {}, "Windows Vietnamese"},
    {10001, {"macintosh", "mac-roman", "10000"}, "Mac OS Roman"},
    {18851, {"iso-8859-1", "latin1", "l1"}, "Western European"},
    {18852, {"iso-8859-2", "latin2", "l2"}, "Central European"},
    {18856, {"iso-8859-6"}, "Arabic"},
    {18857, {"iso-8859-7"}, "Greek"},
    {18858, {"iso-8859-8"}, "Hebrew"},
    {19000, {}, "Latin and Georgian"},
    {19001, {}, "Georgian"},
};

// What people ask the system for, most of all.
constexpr const char *kOfSystems[] = {
    "koi8-r",      "koi8-u",     "858",          "720",         "874",         "1125",        "iso-8859-3",
    "iso-8859-4",  "iso-8859-5", "iso-8859-9",   "iso-8859-10", "iso-8859-13", "iso-8859-14", "iso-8859-15",
    "iso-8859-16", "tis-620",    "mac-cyrillic", "euc-jp",      "iso-2022-jp", "gb18030",     "big5-hkscs",
    "johab",       "ibm037",     "ibm500",       "utf-7",
};

// 934 and 938 number the same characters as 949 and 950.
constexpr std::uint32_t without_alias(std::uint32_t number) {
    return number == 934 ? 949 : number == 938 ? 950 : number;
}

// Small letters and digits, all else left out: "UTF_16LE" is "utf16le".
std::string normalized(std::string_view name) {
    std::string text;
    for (const char letter : name) {
        if (letter >= 'A' && letter <= 'Z') text += static_cast<char>(letter - 'A' + 'a');
        if ((letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9')) text += letter;
    }
    return text;
}

// "437" of "437", "cp437", "ibm437", of a normalized name.
std::string_view without_prefix(std::string_view name) {
    for (const std::string_view prefix : {"windows", "codepage", "xcp", "dos", "ibm", "win", "cp", "ms"})
        if (name.starts_with(prefix)) return name.substr(prefix.size());
    return name;
}

std::optional<std::uint32_t> page_number(std::string_view name) {
    name = without_prefix(name);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc{} || end != name.data() + name.size()) return std::nullopt;
    return without_alias(number);
}

Encoding encoding_of(const NamedPage &page) {
    return {EncodingKind::code_page, page_of_kx_number(page.kx_number)};
}

std::string line(std::string_view name, std::string_view aliases, std::string_view description) {
    std::string text = "  " + std::string(name);
    text.resize(std::max<std::size_t>(text.size() + 1, 12), ' ');
    text += aliases;
    text.resize(std::max<std::size_t>(text.size() + 1, 44), ' ');
    return text + std::string(description) + '\n';
}

} // namespace

namespace {

template <std::size_t N> bool has_name(const std::array<const char *, N> &names, const std::string &wanted) {
    return std::ranges::any_of(names, [&](const char *name) { return name != nullptr && wanted == normalized(name); });
}

std::optional<Encoding> find_own(const std::string &wanted) {
    for (const Form &form : kForms)
        if (has_name(form.names, wanted)) return Encoding{form.kind, {}};
    const auto number = page_number(wanted);
    for (const NamedPage &page : kPages) {
        const Encoding form = encoding_of(page);
        if (number == form.page.kx_number || number == form.page.windows_number || has_name(page.names, wanted))
            return form;
    }
    return std::nullopt;
}

// Names of ours that somebody may have meant and, unless only pages will do, of the system's that people ask for.
std::string near_names(const std::string &wanted, bool only_pages) {
    constexpr std::size_t most = 4;
    std::vector<std::string> found;
    const auto is_near = [](const std::string &small, const std::string &other) {
        const bool starts = other.size() > 2 && (small.starts_with(other) || other.starts_with(small));
        const bool near = small.size() > 3 && edit_distance(small, other) <= 1 + small.size() / 6;
        return (starts || near) && small.size() > 2;
    };
    const auto consider = [&](const char *name) {
        if (name != nullptr && *name != 0 && is_near(normalized(name), wanted)) found.emplace_back(name);
    };
    const std::string number(without_prefix(wanted));
    for (const NamedPage &page : kPages) {
        if (const std::string known = std::to_string(page.kx_number); is_near(known, number)) found.push_back(known);
        std::ranges::for_each(page.names, consider);
    }
    if (!only_pages) {
        for (const Form &form : kForms)
            std::ranges::for_each(form.names, consider);
        std::ranges::for_each(kOfSystems, consider);
    }
    if (found.empty() || found.size() > most) return "";
    std::string text = "; nearest:";
    for (const std::string &one : found)
        text.append(&one == found.data() ? " " : ", ").append(one);
    return text;
}

} // namespace

std::optional<Encoding> find_encoding(std::string_view name) {
    const std::string wanted = normalized(name);
    if (auto own = find_own(wanted)) return own;
    if (wanted.empty()) return std::nullopt;
    std::string given(name);
    for (char &letter : given)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    if (system_has(given)) return Encoding{EncodingKind::system, {}, given};
    return std::nullopt;
}

std::string take_encoding(std::optional<Encoding> &form, const std::string &name) {
    form = find_encoding(name);
    if (form) return "";
    return "no form or code page '" + name + "', nor has the system one; `kx convert --list` lists them" +
           near_names(normalized(name), false);
}

std::string take_page(std::optional<CodePage> &page, const std::string &name) {
    const std::optional<Encoding> form = find_own(normalized(name));
    if (!form || form->kind != EncodingKind::code_page) {
        const std::string fault = "no code page '" + name + "'";
        if (find_encoding(name)) return fault + ": it is a form of text, but the library has no table for it";
        return fault + "; `kx convert --list` lists them" + near_names(normalized(name), true);
    }
    page = form->page;
    return "";
}

std::string name_of(const Encoding &form) {
    if (form.kind == EncodingKind::system) return form.name;
    if (form.kind != EncodingKind::code_page) return row_of(form.kind).names[0];
    for (const NamedPage &page : kPages) {
        if (page.kx_number != form.page.kx_number) continue;
        // The ISO pages go by their names, not by numbers that hardly anybody knows.
        return page.kx_number != form.page.windows_number ? page.names[0] : std::to_string(page.kx_number);
    }
    return std::to_string(form.page.windows_number);
}

std::vector<KnownPage> known_pages() {
    std::vector<KnownPage> pages;
    for (const NamedPage &page : kPages) {
        const Encoding form = encoding_of(page);
        pages.push_back({form.page, name_of(form), page.description});
    }
    return pages;
}

bool is_unicode(const Encoding &form) {
    return row_of(form.kind).family == Form::unicode;
}

bool is_kx_encoding(const Encoding &form) {
    return row_of(form.kind).family == Form::kx;
}

bool goes_through_unicode(const Encoding &form) {
    return row_of(form.kind).through_unicode;
}

std::size_t unit_size(const Encoding &form) {
    return row_of(form.kind).unit;
}

bool is_high_first(const Encoding &form) {
    return row_of(form.kind).high_first;
}

Encoding by_mark(const Encoding &form, std::span<const std::uint8_t> start) {
    if (form.kind != EncodingKind::utf16 && form.kind != EncodingKind::utf32) return form;
    const bool wide = form.kind == EncodingKind::utf32;
    const Encoding high_first{wide ? EncodingKind::utf32be : EncodingKind::utf16be, {}};
    const ByteBuffer mark = byte_order_mark(high_first);
    const bool is_high = start.size() >= mark.size() && std::ranges::equal(start.first(mark.size()), mark);
    return is_high ? high_first : to_write(form);
}

Encoding to_write(const Encoding &form) {
    if (form.kind == EncodingKind::utf16) return {EncodingKind::utf16le, {}};
    if (form.kind == EncodingKind::utf32) return {EncodingKind::utf32le, {}};
    return form;
}

std::string list_of_encodings() {
    const auto add_aliases = [](std::string &text, const auto &names, std::string_view name) {
        for (const char *alias : names)
            if (alias != nullptr && alias != name) text.append(text.empty() ? "" : " ").append(alias);
    };
    std::string text = "Forms:\n";
    for (const Form &form : kForms) {
        if (form.names[0] == nullptr) continue;
        std::string aliases;
        add_aliases(aliases, form.names, form.names[0]);
        text += line(form.names[0], aliases, form.description);
    }
    text += "\nCode pages (a number may also be written as cp437, ibm437 or windows-437):\n";
    for (const NamedPage &named : kPages) {
        const Encoding form = encoding_of(named);
        const std::string name = name_of(form);
        std::string aliases;
        for (const std::uint32_t number : {form.page.windows_number, named.kx_number})
            if (const std::string alias = std::to_string(number); alias != name && alias != aliases)
                aliases.append(aliases.empty() ? "" : " ").append(alias);
        add_aliases(aliases, named.names, name);
        text += line(name, aliases, named.description);
    }
    text += "\nThese are the tool's own. Every other encoding that the system's converter knows is taken, too, by the\n"
            "names that it has there (";
    text += os::kWhereEncodingsAre;
    text += "). Here they are, among others:\n ";
    constexpr std::size_t width = 100;
    std::size_t line = text.size() - 1;
    for (const char *name : kOfSystems) {
        if (!system_has(name)) continue;
        if (text.size() - line + std::strlen(name) >= width) {
            line = text.size() + 1;
            text += "\n ";
        }
        text.append(" ").append(name);
    }
    return text + '\n';
}

std::optional<KxTextForm> text_form(const Encoding &form, const CodePage &page) {
    const std::uint32_t number = row_of(form.kind).text_form;
    if (number == 0) return std::nullopt;
    const bool has_page = number == KX_TEXT_CODE_PAGE || number == KX_TEXT_KXLE;
    const CodePage &own = number == KX_TEXT_CODE_PAGE ? form.page : page;
    return KxTextForm{number, has_page ? own.kx_number : 0, nullptr};
}

namespace {

// The library's own conversion.
class DirectConverter final : public Converter {
  public:
    DirectConverter(const Encoding &from, const Encoding &to, const KxTextForm &source, const KxTextForm &target)
        : from_(from), to_(to), mark_(source.form) {
        KxTextPrepare(&converter_, &source, &target, 0);
    }

    Decoder::Result convert(const Chunk &chunk, ByteBuffer &bytes, std::uint64_t *characters) override {
        constexpr std::size_t most = 3; // bytes of a byte
        // Half of a mark waits for the rest as any character does.
        const std::size_t mark = chunk.offset == 0 ? KxTextMark(mark_, chunk.bytes.data(), chunk.bytes.size()) : 0;
        const auto source = chunk.bytes.subspan(mark);
        const std::size_t size = bytes.size();
        bytes.resize(size + most * source.size());
        KxTextResult done;
        const std::uint32_t status = KxTextConvert(&converter_, source.data(), source.size(), chunk.last ? 1 : 0,
                                                   bytes.data() + size, most * source.size(), &done);
        bytes.resize(size + done.written);
        if (characters != nullptr) {
            // The bytes of a single-byte page are counted, else whichever side is Unicode.
            const bool by_input = from_.kind != EncodingKind::code_page || !is_double_byte(from_.page);
            *characters += by_input ? count_characters(from_, chunk.bytes.first(mark + done.read))
                                    : count_characters(to_, std::span(bytes).subspan(size));
        }
        return {mark + done.read, status != KX_TEXT_INCOMPLETE ? done.fault : 0};
    }

  private:
    Encoding from_, to_;
    std::uint32_t mark_; // the form whose mark is skipped
    KxTextConverter converter_;
};

} // namespace

std::unique_ptr<Decoder> make_decoder(const Encoding &form, const CodePage &text_page, bool with_codes, bool composes) {
    switch (form.kind) {
    case EncodingKind::stream: return make_stream_decoder(with_codes);
    case EncodingKind::stream5: return make_stream5_decoder(text_page, with_codes);
    case EncodingKind::sio: return nullptr;
    default: break;
    }
    if (goes_through_unicode(form)) return make_decoder_through_unicode(form, text_page, composes);
    return make_text_decoder(*text_form(form, text_page), form.kind == EncodingKind::code_page ? form.page : text_page,
                             composes);
}

std::unique_ptr<Encoder> make_encoder(const Encoding &form, const CodePage &text_page, const CodePage &written_page) {
    switch (form.kind) {
    case EncodingKind::stream: return make_stream_encoder(text_page, written_page);
    case EncodingKind::stream5: return make_stream5_encoder(text_page, written_page);
    case EncodingKind::sio: return make_sio_encoder(text_page, written_page);
    default: break;
    }
    if (goes_through_unicode(form)) return make_encoder_through_unicode(text_page, form);
    return make_text_encoder(text_page, *text_form(form, written_page));
}

std::unique_ptr<Converter> Converter::make(const Encoding &from, const Encoding &to, const CodePage &text_page,
                                           const CodePage &written_page) {
    const auto has_text = [](const Encoding &form) {
        return goes_through_unicode(form) || row_of(form.kind).text_form != 0;
    };
    if (!has_text(from) || !has_text(to)) return nullptr;
    if (goes_through_unicode(from) || goes_through_unicode(to))
        return make_converter_through_unicode(from, to, text_page, written_page);
    return std::make_unique<DirectConverter>(from, to, *text_form(from, text_page), *text_form(to, written_page));
}

} // namespace kx
