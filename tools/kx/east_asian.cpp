#include "east_asian.h"

#include <algorithm>
#include <kxstr/codepage.h>
#include <kxstr/letters.h>

#include "command.h"
#include "conversion.h"
#include "core/kx_char.h"
#include "files.h"
#include "languages.h"
#include "letters/width.h"
#include "unit_table.h"

namespace kx {
namespace {

// ---- the country ----

struct Country {
    const char *name;
    const char *language;    // its code
    std::uint8_t id;         // as WtpiGetCountryID gives it
    std::uint32_t code_page; // 0: none in particular
    std::uint16_t hiragana;  // mode of wtoall; the order of the kana differs between the tables. 0: no kana
    std::uint16_t katakana;  // likewise
};

constexpr Country kCountries[] = {
    {"none", "", 0, 0, 0, 0},
    {"japanese", "JP", 1, 932, KX_FORM_FIRST_KANA, KX_FORM_SECOND_KANA},
    {"korean", "KR", 2, 949, 0, 0},
    {"traditional-chinese", "CT", 3, 950, KX_FORM_SECOND_KANA, KX_FORM_FIRST_KANA},
    {"simplified-chinese", "CS", 4, 936, KX_FORM_SECOND_KANA, KX_FORM_FIRST_KANA},
};

template <class Matches> const Country *find_country(Matches matches) {
    const auto *found = std::find_if(std::begin(kCountries), std::end(kCountries), matches);
    return found != std::end(kCountries) ? found : nullptr;
}

const Country &put_in_force(const Country &country) {
    set_country(country.id);
    return country;
}

// The country named; else that of the first East Asian code page among the input, the output and --ansi; else the
// system's.
const Country &set_country(const Country *named, const TextRequest &request) {
    if (named != nullptr) return put_in_force(*named);
    const std::uint32_t pages[] = {request.from->page.windows_number, request.to->page.windows_number,
                                   request.ansi ? request.ansi->windows_number : 0};
    for (const std::uint32_t page : pages) {
        const Country *country =
            find_country([&](const Country &known) { return page != 0 && known.code_page == page; });
        if (country != nullptr) return put_in_force(*country);
    }
    const std::uint8_t id = WtpiGetCountryID();
    const Country *country = find_country([&](const Country &known) { return known.id == id; });
    return country != nullptr ? *country : kCountries[0];
}

// ---- the command line ----

struct Request {
    std::string name; // the first operand
    const Country *named_country = nullptr;
    TextRequest text;
};

// Reads the command line, `-f` and `-t` left out included. Parsed::stop as in parse_options.
Parsed parse(int argc, char **argv, const Usage &usage, Request &action) {
    Parsed parsed = parse_options(argc, argv, usage, [&](int id, const Argument &argument) -> std::string {
        if (id != kCountryId) return take_text_option(action.text, id, argument);
        const Language *const language = find_language(argument.text).language;
        action.named_country = find_country([&](const Country &country) {
            return argument.text == country.name ||
                   (language != nullptr && language->code == std::string_view(country.language));
        });
        return action.named_country != nullptr ? "" : "no country '" + argument.text + "'";
    });
    if (parsed.stop) return parsed;
    if (parsed.first_operand == argc) return {true, usage_error(usage, "nothing to do is named"), argc};
    action.name = argv[parsed.first_operand++];
    action.text.files.operands = {argv + parsed.first_operand, argv + argc};
    if (!action.text.from) action.text.from = find_encoding("utf-8");
    return parsed;
}

int unknown_action(const Usage &usage, const Request &action) {
    return usage_error(usage, "does not know '" + action.name + "'");
}

// ---- the changes ----

bool never_joins(KxChar) {
    return false;
}

bool is_half_width(KxChar ch) {
    return kxstr::set_of(ch) == kxstr::kKatakanaSet;
}

// The character behind it may be its sound mark. A sound mark itself never joins the next: it belongs to the one
// before, and both must stay together.
bool may_take_mark(KxChar ch) {
    return is_half_width(ch) && ch != kxstr::letters::kVoicingMark && ch != kxstr::letters::kHalfVoicingMark;
}

using Change = std::function<KxChar(KxChar)>;

// All units by one table. A NUL of the text stays: the form tables take character 0 for a kana that lacks its
// half-width form.
class EachChange {
  public:
    explicit EachChange(const Change &change) : change_(change), table_(change) {}

    void operator()(std::span<KxChar> units) {
        for (std::size_t done = 0; done < units.size();) {
            done += table_.translate(units.subspan(done), &units[done]);
            if (done == units.size()) break;
            units[done] = change_(units[done]);
            ++done;
        }
    }

  private:
    Change change_;
    UnitTable table_;
};

Transform each(const Change &change) {
    return {[apply = EachChange(change)](DecodedText &units) mutable { apply(units.chars); }, never_joins};
}

std::uint32_t place_of(const DecodedText &units, std::size_t at) {
    return units.placed ? units.places[at] : 0;
}

// Units that do not all become one unit each. `value` gives what one becomes that does, KX_NONE for another;
// rest(units, at, to) writes that, leaves `at` at the last unit that it took, and tells for how many it wrote.
class Rewriter {
  public:
    explicit Rewriter(const Change &value) : table_(value) {}

    template <class Rest> void rewrite(DecodedText &units, Rest rest) {
        const std::span<const KxChar> from = units.chars;
        DecodedText &result = result_; // whose memory lives on
        result.clear();
        result.placed = units.placed;
        for (std::size_t at = 0; at < from.size(); ++at) {
            KxChar *const to = result.grow(from.size() - at);
            const std::size_t done = table_.translate(from.subspan(at), to);
            result.chars.resize(result.chars.size() - (from.size() - at) + done);
            for (std::size_t i = at; units.placed && i < at + done; ++i)
                result.places.push_back(units.places[i]);
            at += done;
            if (at < from.size()) rest(result, at);
        }
        std::swap(units, result);
    }

  private:
    UnitTable table_;
    DecodedText result_;
};

// Double width, with the sound mark behind a half-width katakana taken into it.
class Widen {
  public:
    explicit Widen(bool only_half_width)
        : rewriter_([=](KxChar ch) {
              if (is_half_width(ch)) return KX_NONE;
              return only_half_width ? ch : wtodouble(ch, nullptr);
          }),
          only_half_width_(only_half_width) {}

    void operator()(DecodedText &units) {
        rewriter_.rewrite(units, [&](DecodedText &wide, std::size_t &at) {
            KxChar ch = units.chars[at];
            const std::uint32_t place = place_of(units, at);
            if (is_half_width(ch) || !only_half_width_) {
                const bool has_next = at + 1 < units.chars.size();
                KxChar next = has_next ? units.chars[at + 1] : KxChar{0};
                const KxChar before = next;
                ch = wtodouble(ch, has_next ? &next : nullptr);
                if (next != before) ++at;
            }
            wide.add(ch, place);
        });
    }

  private:
    Rewriter rewriter_;
    bool only_half_width_;
};

// Single width, with the sound mark of a katakana behind it.
class Narrow {
  public:
    void operator()(DecodedText &units) {
        rewriter_.rewrite(units, [&](DecodedText &single, std::size_t at) {
            KxChar mark = 0;
            single.add(wtosingle(units.chars[at], &mark), place_of(units, at));
            if (mark != 0) single.add(mark, place_of(units, at));
        });
    }

  private:
    static KxChar alone(KxChar ch) {
        KxChar mark = 0;
        const KxChar single = wtosingle(ch, &mark);
        return mark == 0 ? single : KX_NONE;
    }

    Rewriter rewriter_{alone};
};

// Some letters have a counterpart in KX text only, such as that of U+0149: a private-use character would be nothing
// elsewhere, so there they stay.
template <class Change> Transform each_letter(Change change, bool to_kx) {
    return each([=, page = system_page()](KxChar ch) {
        constexpr std::uint16_t first_private = 0xE000, last_private = 0xF8FF;
        const KxChar other = change(ch);
        if (to_kx || other == ch) return other;
        const std::uint16_t unit = unicode_of_kx(page, other);
        return unit >= first_private && unit <= last_private ? ch : other;
    });
}

std::optional<Transform> case_transform(const std::string &action, const Country &, bool to_kx) {
    if (action == "upper") return each_letter([](KxChar ch) { return wtoupper(ch); }, to_kx);
    if (action == "lower") return each_letter([](KxChar ch) { return wtolower(ch); }, to_kx);
    return std::nullopt;
}

std::optional<Transform> width_transform(const std::string &action, const Country &country, bool) {
    if (action == "double") return Transform{Widen(false), may_take_mark};
    if (action == "single") return Transform{Narrow(), never_joins};
    if (action == "hiragana") {
        const Change form = [mode = country.hiragana](KxChar ch) { return wtoall(mode, ch); };
        const auto to_hiragana = [widen = Widen(true), apply = EachChange(form)](DecodedText &units) mutable {
            widen(units);
            apply(units.chars);
        };
        return Transform{to_hiragana, may_take_mark};
    }
    if (action == "katakana") return each([mode = country.katakana](KxChar ch) { return wtoall(mode, ch); });
    return std::nullopt;
}

// ---- the help ----

constexpr auto kOptions = with_text_options({option::kFrom, option::kCountry});
constexpr auto kHanOptions = with_text_options({option::kFrom});

constexpr const char *kDone = "all was changed";
constexpr const char *kFailed = "something does not convert, or could not be read or written";

constexpr Action kCaseActions[] = {{"upper", "", "make letters capital"}, {"lower", "", "make letters small"}};
constexpr Action kWidthActions[] = {{"single", "", "narrow what has a single-width form"},
                                    {"double", "", "widen what has a double-width form"},
                                    {"hiragana", "", "katakana become hiragana"},
                                    {"katakana", "", "hiragana become katakana"}};
constexpr Action kHanActions[] = {{"big5", "", "Simplified becomes Traditional"},
                                  {"gb", "", "Traditional becomes Simplified"}};

constexpr Example kCaseExamples[] = {
    {"kx case upper -f 852 -i.old names.txt", "the file itself; the old one stays as names.txt.old"}};
constexpr Example kWidthExamples[] = {
    {"kx width double -f 932 -t utf-8 half.txt -o full.txt", "half-width katakana become full-width ones"}};
constexpr Example kHanExamples[] = {
    {"kx han gb -f big5 taiwan.txt -o china.txt", "Traditional Chinese in Big5 becomes Simplified in GBK"}};

constexpr Usage kCaseUsage{
    "kx case",
    "upper|lower [-f FROM] [-t TO] [OPTION]... [FILE...]",
    "Makes the letters of a text capital or small. The forms are those of `kx convert`; FROM is\n"
    "utf-8 and TO is FROM unless they are named.",
    kOptions,
    "Double-width letters have case in the East Asian countries only. The country is the one named;\n"
    "else that of the code page of FROM, of TO or of --ansi; else that of the locale.\n"
    "The tables keep some odd rows that documents rely on: in Japanese 雨, 卯, 鵜, 窺 and 丑 pass\n"
    "for Cyrillic capitals.",
    kCaseExamples,
    kDone,
    kFailed,
    kCaseActions,
};

constexpr Usage kWidthUsage{
    "kx width",
    "single|double|hiragana|katakana [-f FROM] [-t TO] [OPTION]... [FILE...]",
    "Changes the width of the characters of a text, or its kana. The forms are those of\n"
    "`kx convert`; FROM is utf-8 and TO is FROM unless they are named.",
    kOptions,
    "What belongs together is told by the tables of the country: the one named; else that of the\n"
    "code page of FROM, of TO or of --ansi; else that of the locale. Characters without another\n"
    "form stay. A half-width katakana and the sound mark behind it become one double-width\n"
    "character, and the other way round. hiragana takes half-width katakana, too, and widens the\n"
    "half-width punctuation; katakana leaves half-width characters alone.\n"
    "The tables keep some odd rows that documents rely on: in Japanese single turns 雨, 卯, 鵜, 窺\n"
    "and 丑 into Cyrillic capitals, in Korean double turns accents into Greek letters.",
    kWidthExamples,
    kDone,
    kFailed,
    kWidthActions,
};

constexpr Usage kHanUsage{
    "kx han",
    "big5|gb [-f FROM] [-t TO] [OPTION]... [FILE...]",
    "Makes Traditional Chinese (big5) of Simplified Chinese, or Simplified (gb) of Traditional,\n"
    "character by character. The forms are those of `kx convert`. FROM is utf-8 unless it is named;\n"
    "TO is FROM, or the other code page where FROM is the code page of the source.",
    kHanOptions,
    "Characters without a counterpart stay. Of several traditional forms a simplified one gets the\n"
    "same everywhere, right or wrong.",
    kHanExamples,
    kDone,
    kFailed,
    kHanActions,
};

// ---- the commands ----

using MakeTransform = std::optional<Transform> (*)(const std::string &action, const Country &country, bool to_kx);

int run_by_country(int argc, char **argv, const Usage &usage, bool needs_country, MakeTransform make_transform) {
    Request action;
    const Parsed parsed = parse(argc, argv, usage, action);
    if (parsed.stop) return parsed.status;
    if (!action.text.to) action.text.to = action.text.from;
    const Country &country = set_country(action.named_country, action.text);
    const auto transform = make_transform(action.name, country, is_kx_encoding(*action.text.to));
    if (!transform) return unknown_action(usage, action);
    if (needs_country && country.id == 0 && action.named_country == nullptr) {
        return usage_error(usage, "of which country? --country tells");
    }
    const CodePage page = country.code_page != 0 ? page_of_windows_number(country.code_page) : system_page();
    return run_text(usage, action.text, pages_of(action.text, page), &*transform);
}

} // namespace

int run_case(int argc, char **argv) {
    return run_by_country(argc, argv, kCaseUsage, false, case_transform);
}

int run_width(int argc, char **argv) {
    return run_by_country(argc, argv, kWidthUsage, true, width_transform);
}

int run_han(int argc, char **argv) {
    Request action;
    const Parsed parsed = parse(argc, argv, kHanUsage, action);
    if (parsed.stop) return parsed.status;
    const bool to_big5 = action.name == "big5";
    if (!to_big5 && action.name != "gb") return unknown_action(kHanUsage, action);

    const CodePage gb = page_of_windows_number(936);
    const CodePage big5 = page_of_windows_number(950);
    const CodePage &source = to_big5 ? gb : big5;
    const CodePage &target = to_big5 ? big5 : gb;
    TextRequest &text = action.text;
    if (!text.to) text.to = text.from->page == source ? Encoding{EncodingKind::code_page, target} : text.from;
    // On its way the text is one of the source's page, whatever it becomes.
    TextPages pages{text.ansi.value_or(source), {}};
    if (text.from->kind == EncodingKind::code_page) pages.text = text.from->page;
    pages.written = text.to->kind == EncodingKind::code_page ? text.to->page : pages.text;
    const Transform transform =
        to_big5 ? each([](KxChar ch) { return gbtobig5(ch); }) : each([](KxChar ch) { return big5togb(ch); });
    return run_text(kHanUsage, text, pages, &transform);
}

} // namespace kx
