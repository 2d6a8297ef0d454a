#include "chart.h"

#include <algorithm>
#include <cstdio>
#include <kxstr/codepage.h>
#include <kxstr/collate.h>
#include <kxstr/letters.h>
#include <kxstr/text.h>

#include "collation.h"
#include "command.h"
#include "conversion.h"
#include "core/kx_char.h"
#include "core/validity.h"
#include "encodings.h"
#include "files.h"
#include "json.h"
#include "languages.h"
#include "names.h"
#include "option_list.h"
#include "tables/chart_page.h"

namespace kx {
namespace {

using kxstr::text::code_of_kx;
using kxstr::text::kx_of_code;

constexpr Option kOptions[] = {
    option::kSet,
    said(option::kPage, "the charts of a code page, such as 852, instead: its codes in their order"),
    said(option::kLanguage, "show the collation values of this language (`kx sort --list`); US when not given"),
    said(option::kAnsi, "the code page that the bytes and overlapping areas go by; else the system's"),
    option::kOutput,
};

constexpr Example kExamples[] = {{"kx chart --set=1 -l cs -o latin.html", "Latin letters, with the order of Czech"}};

constexpr Usage kUsageText{
    "kx chart",
    "[--set=N | --page=PAGE] [-l LANG] [--ansi=PAGE] [-o FILE]",
    "Writes the KX character set as code charts: one HTML page that needs nothing else. It shows\n"
    "each character with its KX code, Unicode value, name, case partner, base letter and mark,\n"
    "collation values, and bytes in every code page, and finds it by itself, its name or a code.",
    kOptions,
    "Where the areas of the East Asian code pages overlap, and for native bytes, the page of --ansi\n"
    "decides what a character is.",
    kExamples,
    "the page is written",
    "it cannot be written",
};

// The sets by what they hold: those of the tables, then those of the double-byte pages.
constexpr const char *kSetNames[] = {"ASCII",
                                     "Latin letters with diacritics",
                                     "Accents and other marks",
                                     "Box drawing",
                                     "Typographic symbols",
                                     "Iconic symbols",
                                     "Mathematical symbols and arrows",
                                     "Further mathematical symbols",
                                     "Greek",
                                     "Hebrew",
                                     "Cyrillic",
                                     "Half-width katakana",
                                     "Native bytes without another KX character",
                                     "Arabic",
                                     "Further Arabic script"};
static_assert(std::size(kSetNames) == kxstr::core::kSetRanges.size());

struct EastAsianArea {
    const char *name;
    unsigned last_set;    // behind that of the area before
    std::uint8_t country; // as WtpiGetCountryID gives it: its tables tell the case of these characters
};
constexpr EastAsianArea kAreas[] = {
    {"Japanese", 0x52, 1},
    {"Korean", 0x81, 2},
    {"Simplified Chinese", 0xA4, 4},
    {"Traditional Chinese", kxstr::kLastDoubleByteSet, 3},
};

const EastAsianArea &area_of(unsigned set) {
    const auto *area = kAreas;
    while (area->last_set < set)
        ++area;
    return *area;
}

struct Request {
    std::optional<unsigned> set;
    std::optional<CodePage> page;
    std::optional<CodePage> ansi;
    const Language *language = languages().data();
    std::string output;
};

std::string hex(unsigned number, int digits = 4) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", digits, number);
    return text;
}

bool is_private_use(std::uint16_t unicode) {
    return 0xE000 <= unicode && unicode <= 0xF8FF;
}

// What a chart says of characters. The keys of its JSON are told in data/chart/chart.js.
class Characters {
  public:
    Characters(const CodePage &text_page, const Collation &collation)
        : text_page_(text_page), collation_(collation), country_(WtpiGetCountryID()), pages_(known_pages()) {}

    std::uint16_t unicode_of(KxChar ch) const { return unicode_of_kx(text_page_, ch); }

    // A JSON array. `code` is what the chart has the character under, `unicode` what that stands for.
    std::string about(unsigned code, KxChar ch, std::uint16_t unicode) const {
        KxChar base = kxstr::kNone, mark = kxstr::kNone;
        KxCh6Brkcar(ch, &base, &mark);
        return '[' + std::to_string(code) + ',' + number(ch) + ',' + number(unicode) + ',' + name_of(ch, unicode) +
               ',' + number(case_partner_of(ch)) + ',' + number(base) + ',' + number(mark) + ',' + values_of(ch) + ',' +
               bytes_of(ch) + ']';
    }

    std::string pages() const {
        std::string list;
        for (const KnownPage &page : pages_)
            list += (list.empty() ? "[" : ",[") + quoted(page.name) + ',' + quoted(page.description) + ']';
        return '[' + list + ']';
    }

  private:
    static std::string number(std::uint16_t value) { return value == KX_NONE ? "-1" : std::to_string(value); }

    // The ideographs are nearly all there are, and their names follow from their values: 0 stands for them.
    std::string name_of(KxChar ch, std::uint16_t unicode) const {
        std::string name = unicode == unicode_of(ch) ? name_of_character(ch, unicode) : "";
        if (name.empty() && unicode != KX_NONE) name = name_of_unicode(unicode);
        if (name.starts_with(kIdeograph)) return "0";
        if (name.empty() && kxstr::is_code(ch)) name = "code of KX text";
        if (name.empty() && kxstr::set_of(ch) == kxstr::kNativeByteSet)
            name = "native byte " + hex(kxstr::index_of(ch), 2);
        if (name.empty() && (unicode < 0x20 || (0x7F <= unicode && unicode < 0xA0))) name = "control character";
        if (name.empty() && is_private_use(unicode)) name = "user-defined character";
        return quoted(name);
    }

    KxChar case_partner_of(KxChar ch) const {
        const bool by_country = kxstr::kFirstDoubleByteSet <= kxstr::set_of(ch) && !kxstr::is_code(ch);
        if (by_country) set_country(area_of(kxstr::set_of(ch)).country);
        const KxChar small = wtolower(ch), capital = wtoupper(ch);
        if (by_country) set_country(country_);
        return small != ch ? small : capital != ch ? capital : kxstr::kNone;
    }

    std::string values_of(KxChar ch) const {
        const KxChar text[] = {ch, 0};
        std::uint8_t first[2] = {}, again[2] = {0xFF, 0xFF};
        std::uint16_t second = 0;
        std::uint8_t third = 0;
        const KxChar *position = text;
        const bool counts = getColValues(&position, first, &second, &third, 1, 0, collation_.language()) != 0;
        position = text;
        getColValues(&position, again, &second, &third, 1, 0, collation_.language());
        std::string primary;
        // A letter that sorts as two has a second value; what is not written stays as it was.
        if (counts) primary = hex(first[0], 2);
        if (counts && first[1] == again[1]) primary += (collation_.is_east_asian() ? "" : " ") + hex(first[1], 2);
        return '[' + quoted(primary) + ',' + std::to_string(second) + ',' + std::to_string(third) + ',' +
               std::to_string(xch2col(ch)) + ']';
    }

    // "82:0,2;E9:33": each code of the character, and the pages that have it there by their numbers in pages().
    std::string bytes_of(KxChar ch) const {
        std::vector<std::pair<std::uint16_t, std::string>> codes;
        for (std::size_t number = 0; number < pages_.size(); ++number) {
            const std::uint16_t code = code_of_kx(pages_[number].page, text_page_, ch, kxstr::text::LineEnds::glyphs);
            if (code == KX_NONE) continue;
            auto known = std::find_if(codes.begin(), codes.end(), [&](const auto &one) { return one.first == code; });
            if (known == codes.end()) known = codes.emplace(known, code, hex(code, code > 0xFF ? 4 : 2));
            known->second += known->second.find(':') == std::string::npos ? ':' : ',';
            known->second += std::to_string(number);
        }
        std::string text;
        for (const auto &[code, pages] : codes) {
            if (!text.empty()) text += ';';
            text += pages;
        }
        return quoted(text);
    }

    CodePage text_page_;
    const Collation &collation_;
    std::uint8_t country_; // of the collation
    std::vector<KnownPage> pages_;
};

// One chart of up to 256 cells, as a JSON object. Empty where there is no character.
std::string chart(const std::string &title, unsigned first_code, const std::vector<std::string> &cells) {
    if (cells.empty()) return "";
    std::string text = "{\"title\":" + quoted(title) + ",\"first\":" + std::to_string(first_code) + ",\"cells\":[";
    for (const std::string &cell : cells)
        text += (&cell == cells.data() ? "" : ",\n") + cell;
    return text + "]}";
}

std::string chart_of_set(const Characters &characters, unsigned set) {
    const bool in_tables = set < kxstr::core::kSetRanges.size();
    if (!in_tables && (set < kxstr::kFirstDoubleByteSet || set > kxstr::kLastDoubleByteSet)) return "";
    const kxstr::core::IndexRange range =
        in_tables ? kxstr::core::kSetRanges[set] : kxstr::core::IndexRange{0x00, 0xFE};
    std::vector<std::string> cells;
    for (unsigned index = range.first; index <= range.last; ++index) {
        const KxChar ch = kxstr::make_char(set, index);
        if (in_tables || characters.unicode_of(ch) != KX_NONE)
            cells.push_back(characters.about(ch, ch, characters.unicode_of(ch)));
    }
    return chart("Set " + std::to_string(set) + ": " + (in_tables ? kSetNames[set] : area_of(set).name), set << 8,
                 cells);
}

std::vector<std::string> charts_of_sets(const Characters &characters, const std::optional<unsigned> &only) {
    std::vector<std::string> charts;
    for (unsigned set = only.value_or(0); set <= only.value_or(kxstr::kLastDoubleByteSet); ++set) {
        charts.push_back(chart_of_set(characters, set));
        if (charts.back().empty()) charts.pop_back();
    }
    return charts;
}

// What the published mapping of a page has for its codes; KX text unites a few of them with others.
class PublishedUnicode {
  public:
    explicit PublishedUnicode(const CodePage &page) {
        const KxTextForm from{KX_TEXT_CODE_PAGE, page.kx_number, nullptr}, to{KX_TEXT_UTF16, 0, nullptr};
        KxTextPrepare(&converter_, &from, &to, 0);
    }

    std::uint16_t of(unsigned code) {
        const std::uint8_t bytes[] = {static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)};
        const std::size_t count = code > 0xFF ? 2 : 1;
        std::uint16_t unit = 0;
        KxTextResult result;
        const std::uint32_t status =
            KxTextConvert(&converter_, bytes + 2 - count, count, 1, &unit, sizeof unit, &result);
        return status == KX_TEXT_DONE && result.written == sizeof unit ? unit : KX_NONE;
    }

  private:
    KxTextConverter converter_{};
};

// The single bytes, and for each lead byte the codes behind it.
std::vector<std::string> charts_of_page(const Characters &characters, const CodePage &page, const std::string &name) {
    std::vector<std::string> charts;
    std::vector<unsigned> leads;
    std::vector<std::string> cells;
    PublishedUnicode published(page);
    const auto add = [&](unsigned code) {
        const KxChar ch = kx_of_code(page, static_cast<std::uint16_t>(code), kxstr::text::LineEnds::glyphs);
        if (ch == KX_NONE) return;
        // DOS has glyphs for control characters, as KX text does.
        std::uint16_t unicode = code < 0x80 ? std::uint16_t{KX_NONE} : published.of(code);
        if (unicode == KX_NONE) unicode = characters.unicode_of(ch);
        if (code <= 0xFF || unicode != KX_NONE) cells.push_back(characters.about(code, ch, unicode));
    };
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        if (kxstr::text::is_lead_byte(page, static_cast<std::uint8_t>(byte))) {
            leads.push_back(byte);
            cells.push_back('[' + std::to_string(byte) + ",-1,-1,\"lead byte\",-1,-1,-1,[\"\",0,0,255],\"\"]");
        } else {
            add(byte);
        }
    }
    charts.push_back(chart("Code page " + name, 0, cells));
    for (const unsigned lead : leads) {
        cells.clear();
        for (unsigned code = lead << 8; code < (lead + 1) << 8; ++code)
            add(code);
        charts.push_back(chart("Code page " + name + ", lead byte " + hex(lead, 2), lead << 8, cells));
        if (charts.back().empty()) charts.pop_back();
    }
    return charts;
}

std::string json_of(const Request &request, const std::vector<std::string> &charts, const Characters &characters) {
    std::string text = "{\"title\":";
    text += quoted(request.page ? "Code page " + kx::name_of({EncodingKind::code_page, *request.page})
                                : std::string("The KX character set"));
    text += ",\"codes\":" + quoted(request.page ? "native" : "KX");
    text += ",\"language\":" + quoted(std::string(request.language->name()) + " (" + request.language->code + ")");
    text += ",\"ideograph\":" + quoted(kIdeograph) + ",\"pages\":" + characters.pages() + ",\"charts\":[";
    for (const std::string &one : charts)
        text += (&one == charts.data() ? "" : ",\n") + one;
    text += "]}";
    // Nothing in a script element of HTML may look like its end.
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;)
        text.replace(at, 1, "\\u003c");
    return text;
}

std::string take_option(Request &request, int id, const Argument &argument) {
    switch (id) {
    case kSetId:
        request.set = argument.number;
        return argument.number > kxstr::kLastDoubleByteSet ? "no set '" + argument.text + "'" : "";
    case kPageId: request.page = argument.page; return "";
    case kAnsiId: request.ansi = argument.page; return "";
    case 'l': return take_language(request.language, argument.text);
    default: request.output = argument.text; return "";
    }
}

} // namespace

int run_chart(int argc, char **argv) {
    Request request;
    const Parsed parsed = parse_options(
        argc, argv, kUsageText, [&](int id, const Argument &argument) { return take_option(request, id, argument); });
    if (parsed.stop) return parsed.status;
    if (parsed.first_operand < argc) return usage_error(kUsageText, "takes no files");
    if (request.set && request.page) return usage_error(kUsageText, "--set or --page, not both");

    Collation collation;
    collation.begin(request.language->code);
    const Characters characters(request.page ? *request.page : request.ansi.value_or(system_page()), collation);
    const std::vector<std::string> charts =
        request.page ? charts_of_page(characters, *request.page, name_of({EncodingKind::code_page, *request.page}))
                     : charts_of_sets(characters, request.set);
    if (charts.empty()) return usage_error(kUsageText, "no characters in set " + std::to_string(*request.set));

    Output output(kUsageText.command, request.output);
    if (!output.good()) return kFailure;
    const std::string json = json_of(request, charts, characters);
    for (const std::string_view piece :
         {kxstr::tables::kChartHead, std::string_view(json), kxstr::tables::kChartTail}) {
        if (!output.write({reinterpret_cast<const std::uint8_t *>(piece.data()), piece.size()})) return kFailure;
    }
    return output.close() ? kSuccess : kFailure;
}

} // namespace kx
