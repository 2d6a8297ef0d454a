#include "encodings.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "coders.h"

namespace kx {
namespace {

struct NamedEncoding {
    EncodingKind kind;
    const char *name;
    const char *alias;
    const char *description;
};

constexpr NamedEncoding kEncodings[] = {
    {EncodingKind::utf8, "utf-8", "utf8", "Unicode"},
    {EncodingKind::utf16le, "utf-16le", "utf16le", "Unicode, low byte first"},
    {EncodingKind::utf16be, "utf-16be", "utf16be", "Unicode, high byte first"},
    {EncodingKind::kx, "kx", "", "KX text: 16-bit units, low byte first"},
    {EncodingKind::stream, "stream", "dz", "KX document stream"},
    {EncodingKind::stream5, "stream5", "5dz", "document stream of the older generation, KX 5"},
    {EncodingKind::sio, "sio", "", "compact KX text; written only"},
};

// Names are lower case with dashes; all but the first are aliases. Every page is also known by its two numbers.
struct NamedPage {
    std::uint32_t kx_number;
    std::array<const char *, 3> names;
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
    {895, {}, "DOS Czech and Slovak"},
    {896, {}, "DOS Polish"},
    {897, {}, "DOS Czech and Slovak, variant"},
    {932, {"shift-jis", "sjis"}, "Japanese"},
    {936, {"gbk", "gb2312"}, "Simplified Chinese"},
    {949, {"euc-kr", "uhc"}, "Korean"},
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
    {10001, {"macintosh"}, "Mac OS Roman"},
    {18851, {"iso-8859-1", "iso8859-1", "latin1"}, "Western European"},
    {18852, {"iso-8859-2", "iso8859-2", "latin2"}, "Central European"},
    {18856, {"iso-8859-6", "iso8859-6"}, "Arabic"},
    {18857, {"iso-8859-7", "iso8859-7"}, "Greek"},
    {18858, {"iso-8859-8", "iso8859-8"}, "Hebrew"},
    {19000, {}, "Latin and Georgian"},
    {19001, {}, "Georgian"},
};

// 934 and 938 number the same characters as 949 and 950.
constexpr std::uint32_t without_alias(std::uint32_t number) {
    return number == 934 ? 949 : number == 938 ? 950 : number;
}

std::string normalized(std::string_view name) {
    std::string text(name);
    for (char &letter : text) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
        if (letter == '_') letter = '-';
    }
    return text;
}

// "437", "cp437", "ibm437", "windows-1252".
std::optional<std::uint32_t> page_number(std::string_view name) {
    for (const std::string_view prefix : {"cp", "ibm", "windows-"}) {
        if (name.starts_with(prefix)) {
            name.remove_prefix(prefix.size());
            break;
        }
    }
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

std::optional<Encoding> find_encoding(std::string_view name) {
    const std::string wanted = normalized(name);
    for (const NamedEncoding &form : kEncodings) {
        if (wanted == form.name || (*form.alias != 0 && wanted == form.alias)) return Encoding{form.kind, {}};
    }
    const auto number = page_number(wanted);
    for (const NamedPage &page : kPages) {
        const Encoding form = encoding_of(page);
        if (number == form.page.kx_number || number == form.page.windows_number) return form;
        for (const char *alias : page.names) {
            if (alias != nullptr && wanted == alias) return form;
        }
    }
    return std::nullopt;
}

std::string take_encoding(std::optional<Encoding> &form, const std::string &name) {
    form = find_encoding(name);
    return form ? "" : "no form or code page '" + name + "'; `kx convert --list` lists them";
}

std::string take_page(std::optional<CodePage> &page, const std::string &name) {
    const std::optional<Encoding> form = find_encoding(name);
    if (!form || form->kind != EncodingKind::code_page)
        return "no code page '" + name + "'; `kx convert --list` lists them";
    page = form->page;
    return "";
}

std::string name_of(const Encoding &form) {
    for (const NamedEncoding &named : kEncodings) {
        if (named.kind == form.kind) return named.name;
    }
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
    return form.kind == EncodingKind::utf8 || form.kind == EncodingKind::utf16le || form.kind == EncodingKind::utf16be;
}

bool is_kx_encoding(const Encoding &form) {
    switch (form.kind) {
    case EncodingKind::kx:
    case EncodingKind::stream:
    case EncodingKind::stream5:
    case EncodingKind::sio: return true;
    default: return false;
    }
}

std::string list_of_encodings() {
    std::string text = "Forms:\n";
    for (const NamedEncoding &form : kEncodings)
        text += line(form.name, form.alias, form.description);
    text += "\nCode pages (a number may also be written as cp437, ibm437 or windows-437):\n";
    for (const NamedPage &named : kPages) {
        const Encoding form = encoding_of(named);
        const std::string name = name_of(form);
        std::string aliases;
        const auto add = [&](const std::string &alias) {
            if (alias != name) aliases += (aliases.empty() ? "" : " ") + alias;
        };
        add(std::to_string(form.page.windows_number));
        add(std::to_string(named.kx_number));
        for (const char *alias : named.names) {
            if (alias != nullptr) add(alias);
        }
        text += line(name, aliases, named.description);
    }
    return text;
}

namespace {

// Nothing for the forms that texts in pieces do not have.
std::optional<KxTextForm> text_form(const Encoding &form, const CodePage &page) {
    switch (form.kind) {
    case EncodingKind::code_page: return KxTextForm{KX_TEXT_CODE_PAGE, form.page.kx_number, nullptr};
    case EncodingKind::utf8: return KxTextForm{KX_TEXT_UTF8, 0, nullptr};
    case EncodingKind::utf16le: return KxTextForm{KX_TEXT_UTF16LE, 0, nullptr};
    case EncodingKind::utf16be: return KxTextForm{KX_TEXT_UTF16BE, 0, nullptr};
    case EncodingKind::kx: return KxTextForm{KX_TEXT_KXLE, page.kx_number, nullptr};
    default: return std::nullopt;
    }
}

} // namespace

std::unique_ptr<Decoder> make_decoder(const Encoding &form, const CodePage &text_page, bool with_codes) {
    switch (form.kind) {
    case EncodingKind::stream: return make_stream_decoder(with_codes);
    case EncodingKind::stream5: return make_stream5_decoder(text_page, with_codes);
    case EncodingKind::sio: return nullptr;
    default: break;
    }
    return make_text_decoder(*text_form(form, text_page), form.kind == EncodingKind::code_page ? form.page : text_page);
}

std::unique_ptr<Encoder> make_encoder(const Encoding &form, const CodePage &text_page, const CodePage &written_page) {
    switch (form.kind) {
    case EncodingKind::stream: return make_stream_encoder(text_page, written_page);
    case EncodingKind::stream5: return make_stream5_encoder(text_page, written_page);
    case EncodingKind::sio: return make_sio_encoder(text_page, written_page);
    default: break;
    }
    return make_text_encoder(text_page, *text_form(form, written_page));
}

std::unique_ptr<Converter> Converter::make(const Encoding &from, const Encoding &to, const CodePage &text_page,
                                           const CodePage &written_page) {
    const auto source = text_form(from, text_page), target = text_form(to, written_page);
    if (!source || !target) return nullptr;
    std::unique_ptr<Converter> converter(new Converter(source->form));
    return KxTextPrepare(&converter->converter_, &*source, &*target, 0) != 0 ? std::move(converter) : nullptr;
}

Decoder::Result Converter::convert(const Chunk &chunk, ByteBuffer &bytes) {
    constexpr std::size_t most = 3; // bytes of a byte
    // Half of a mark waits for the rest as any character does.
    const std::size_t mark = chunk.offset == 0 ? KxTextMark(from_, chunk.bytes.data(), chunk.bytes.size()) : 0;
    const auto source = chunk.bytes.subspan(mark);
    const std::size_t size = bytes.size();
    bytes.resize(size + most * source.size());
    KxTextResult done;
    const std::uint32_t status = KxTextConvert(&converter_, source.data(), source.size(), chunk.last ? 1 : 0,
                                               bytes.data() + size, most * source.size(), &done);
    bytes.resize(size + done.written);
    return {mark + done.read, status != KX_TEXT_INCOMPLETE ? done.fault : 0};
}

} // namespace kx
