#include "languages.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "near.h"

namespace kx {
namespace {

constexpr const char *kPlainCode = "EN"; // what the library itself starts with; no code of its own in the list

constexpr const char *kPlain = "letters with diacritics are variants";

// The order of the library's numbers.
constexpr Language kLanguages[] = {
    {"US", "en eng en_us", "English|American English|plain", kPlain},
    {"AF", "af afr", "Afrikaans", kPlain},
    {"AR", "ar ara", "Arabic", "points and vowel signs count last"},
    {"CA", "ca cat", "Catalan|Valencian", "ch behind c, ll behind l, ñ behind n"},
    {"HR", "hr hrv scr", "Croatian", "č ć behind c, đ behind d, š behind s, ž behind z"},
    {"CZ", "cs ces cze", "Czech", "ch behind h; č ř š ž behind c r s z, ä ö ü behind a o u"},
    {"DK", "da dan", "Danish", "...z æ ä ø ö å; ü is a variant of y"},
    {"NL", "nl nld dut", "Dutch|Flemish", "ĳ is two letters"},
    {"OZ", "en_au", "Australian English|English (Australia)|Australian", kPlain},
    {"CE", "en_ca", "Canadian English|English (Canada)", kPlain},
    {"UK", "en_gb en_uk en_ie", "British English|English (Britain)|British", kPlain},
    {"FA", "fa fas per", "Persian|Farsi", "points and vowel signs count last"},
    {"SU", "fi fin", "Finnish", "...z å ä ö; ü is a variant of y"},
    {"CF", "fr_ca", "Canadian French|French (Canada)", "æ and œ are two letters"},
    {"FR", "fr fra fre", "French", "æ and œ are two letters; accents decide from the left"},
    {"GA", "gl glg", "Galician", "ñ behind n"},
    {"DE", "de deu ger", "German", "ß is ss; ä ö ü are variants of a o u"},
    {"SD", "de_ch de_li gsw", "Swiss German|German (Switzerland)", "ß is ss; ä ö ü are variants of a o u"},
    {"GR", "el ell gre", "Greek", "uppercase first"},
    {"HE", "he heb iw", "Hebrew", "points and vowel signs count last"},
    {"MA", "hu hun", "Hungarian|Magyar", "á é í ó ú behind their vowels, ö with ó, ü with ú"},
    {"IS", "is isl ice", "Icelandic", "á ð é í ó ú ý behind theirs; ...z þ æ ö ø"},
    {"IT", "it ita", "Italian", kPlain},
    {"NO", "no nb nn nor nob nno", "Norwegian|Bokmål|Bokmal|Nynorsk", "...z æ ø å"},
    {"PL", "pl pol", "Polish", "ą ć ę ł ń ś behind theirs; z ź ż"},
    {"BR", "pt_br", "Brazilian Portuguese|Portuguese (Brazil)|Brazilian", kPlain},
    {"PO", "pt por", "Portuguese", kPlain},
    {"RU", "ru rus", "Russian", "Cyrillic behind Latin; ё behind е"},
    {"SL", "sk slk slo", "Slovak", "ch behind h; č ř š ž behind c r s z, ä ö ü behind a o u"},
    {"ES", "es spa", "Spanish|Castilian", "ch behind c, ll behind l, ñ behind n"},
    {"SV", "sv swe", "Swedish", "...z å ä ö; ü is a variant of y"},
    {"YK", "uk ukr", "Ukrainian", "as Russian, with ь at the end"},
    {"UR", "ur urd", "Urdu", "points and vowel signs count last"},
    {"TK", "tr tur", "Turkish", "ğ ö ş ü behind theirs, ı before i; ç is a variant of c"},
    {"JP", "ja jpn", "Japanese", "kana by sound, ideographs by code"},
    {"KR", "ko kor", "Korean", "Hangul and ideographs by code"},
    {"CT", "zh_tw zh_hk zh_mo zh_hant", "Traditional Chinese|Chinese (Traditional)|Chinese (Taiwan)",
     "ideographs by code"},
    {"CS", "zh zho chi zh_cn zh_sg zh_hans", "Simplified Chinese|Chinese (Simplified)|Chinese", "ideographs by code"},
    {"LA", "", "", "East Asian, of no country"},
    {"TA", "", "", "East Asian, of no country"},
};

// Languages that have no rules here, and the ones whose rules are nearest to theirs.
struct Stranger {
    const char *locales;
    const char *name;
    const char *near; // codes of the library
};
constexpr Stranger kStrangers[] = {
    {"az aze", "Azerbaijani", "TK"},  {"be bel", "Belarusian", "RU YK"}, {"bg bul", "Bulgarian", "RU"},
    {"br bre", "Breton", "FR"},       {"bs bos", "Bosnian", "HR"},       {"ce che", "Chechen", "RU"},
    {"co cos", "Corsican", "IT"},     {"cy cym wel", "Welsh", "UK"},     {"eo epo", "Esperanto", "US"},
    {"et est", "Estonian", "SU"},     {"eu eus baq", "Basque", "ES"},    {"fo fao", "Faroese", "IS DK"},
    {"fy fry", "Frisian", "NL"},      {"ga gle", "Irish", "UK"},         {"gd gla", "Scottish Gaelic", "UK"},
    {"hy hye arm", "Armenian", "US"}, {"id ind", "Indonesian", "US"},    {"ka kat geo", "Georgian", "US"},
    {"kk kaz", "Kazakh", "RU"},       {"kl kal", "Greenlandic", "DK"},   {"kr kau", "Kanuri", "US"},
    {"ky kir", "Kyrgyz", "RU"},       {"la lat", "Latin", "IT"},         {"lb ltz", "Luxembourgish", "DE"},
    {"lt lit", "Lithuanian", "PL"},   {"lv lav", "Latvian", "PL"},       {"mk mkd mac", "Macedonian", "RU"},
    {"mn mon", "Mongolian", "RU"},    {"ms msa may", "Malay", "US"},     {"mt mlt", "Maltese", "IT"},
    {"oc oci", "Occitan", "CA FR"},   {"ps pus", "Pashto", "FA"},        {"rm roh", "Romansh", "SD IT"},
    {"ro ron rum", "Romanian", "IT"}, {"sd snd", "Sindhi", "UR"},        {"se sme", "Northern Sami", "NO SU"},
    {"sl slv", "Slovene", "HR"},      {"sq sqi alb", "Albanian", "IT"},  {"sr srp", "Serbian", "HR RU"},
    {"su sun", "Sundanese", "US"},    {"sw swa", "Swahili", "US"},       {"ta tam", "Tamil", "US"},
    {"tk tuk", "Turkmen", "TK"},      {"tt tat", "Tatar", "RU"},         {"ug uig", "Uyghur", "AR"},
    {"uz uzb", "Uzbek", "TK RU"},     {"vi vie", "Vietnamese", "FR"},    {"wa wln", "Walloon", "FR"},
    {"yi yid", "Yiddish", "HE"},
};

constexpr char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string in_small_letters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), lower);
    return small;
}

// The parts of a list in a table.
std::vector<std::string_view> parts_of(std::string_view list, char between) {
    std::vector<std::string_view> parts;
    while (!list.empty()) {
        const std::size_t size = std::min(list.find(between), list.size());
        parts.push_back(list.substr(0, size));
        list.remove_prefix(std::min(size + 1, list.size()));
    }
    return parts;
}

bool lists(const char *locales, const std::string &name) {
    return std::ranges::count(parts_of(locales, ' '), name) != 0;
}

template <class Test> const Language *find_if(Test test) {
    const auto *found = std::ranges::find_if(kLanguages, test);
    return found != std::end(kLanguages) ? found : nullptr;
}

const Language *find_code(std::string_view code) {
    if (code == kPlainCode) return kLanguages;
    return find_if([&](const Language &language) { return language.code == code; });
}

// "pt_BR" of "pt_br".
std::string spelled_locale(const Language &language) {
    std::string locale(language.locale());
    for (std::size_t at = std::min(locale.find('_'), locale.size()); at < locale.size(); ++at)
        locale[at] = locale[at] == '_' ? '_' : static_cast<char>(locale[at] - 'a' + 'A');
    return locale;
}

// "tr (Turkish)".
std::string spelled(const Language &language) {
    return spelled_locale(language) + " (" + std::string(language.name()) + ')';
}

// The languages with a name that somebody may have meant, if not too many.
std::string near_spellings(const std::string &name) {
    constexpr std::size_t most = 4;
    std::vector<std::string> found;
    for (const Language &language : kLanguages) {
        const auto is_near = [&](std::string_view one) {
            const std::string small = in_small_letters(one);
            const bool starts = name.size() > 3 && (small.starts_with(name) || name.starts_with(small));
            return starts || (small.size() > 3 && edit_distance(small, name) <= small.size() / 4);
        };
        if (std::ranges::any_of(parts_of(language.names, '|'), is_near)) found.push_back(spelled(language));
    }
    if (found.empty() || found.size() > most) return "";
    std::string text = "; nearest:";
    for (const std::string &one : found)
        text += (&one == found.data() ? " " : ", ") + one;
    return text;
}

// What is said of a language without rules.
std::string fault_of(const Stranger &stranger, const std::string &name) {
    std::string text = "no rules for " + std::string(stranger.name) + " ('" + name + "'); nearest:";
    for (const std::string_view code : parts_of(stranger.near, ' '))
        text += ' ' + spelled(*find_code(code));
    const std::string_view iso = parts_of(stranger.locales, ' ').front();
    // The same letters may be a code of the library, which means another language.
    const Language *other = find_if([&](const Language &language) { return in_small_letters(language.code) == iso; });
    if (other != nullptr && !other->name().empty())
        text += "; " + std::string(other->name()) + " is " + other->code + " or " + spelled_locale(*other);
    return text;
}

// "cs_cz.utf-8@euro" to "cs_cz".
std::string locale_in(const std::string &name) {
    std::string locale = in_small_letters(name.substr(0, name.find_first_of(".@")));
    std::ranges::replace(locale, '-', '_');
    return locale;
}

constexpr std::array kNoLanguages{"c", "posix"};

} // namespace

std::string_view Language::locale() const {
    return std::string_view(locales).substr(0, std::string_view(locales).find(' '));
}

std::string_view Language::name() const {
    return std::string_view(names).substr(0, std::string_view(names).find('|'));
}

std::span<const Language> languages() {
    return kLanguages;
}

FoundLanguage find_language(const std::string &name) {
    if (const Language *language = find_code(name)) return {language};
    const std::string locale = locale_in(name);
    if (std::ranges::count(kNoLanguages, locale) != 0) return {nullptr, "'" + name + "' is a locale of no language"};
    // "de_at" is "de" when nothing is told of Austria.
    for (std::string part = locale;; part.resize(part.rfind('_'))) {
        if (const Language *language = find_if([&](const Language &one) { return lists(one.locales, part); }))
            return {language};
        const auto *stranger =
            std::ranges::find_if(kStrangers, [&](const Stranger &one) { return lists(one.locales, part); });
        if (stranger != std::end(kStrangers)) return {nullptr, fault_of(*stranger, name)};
        if (part.find('_') == std::string::npos) break;
    }
    const std::string small = in_small_letters(name);
    const auto is_named = [&](const char *names) {
        const auto is_same = [&](std::string_view one) { return in_small_letters(one) == small; };
        return std::ranges::any_of(parts_of(names, '|'), is_same);
    };
    if (const Language *language = find_if([&](const Language &one) { return is_named(one.names); })) return {language};
    const auto *stranger = std::ranges::find_if(kStrangers, [&](const Stranger &one) { return is_named(one.name); });
    if (stranger != std::end(kStrangers)) return {nullptr, fault_of(*stranger, name)};
    if (const Language *language = find_if([&](const Language &one) { return in_small_letters(one.code) == small; }))
        return {language};
    return {nullptr, "no language '" + name + "'" + near_spellings(small)};
}

std::string take_language(const Language *&language, const std::string &name) {
    const FoundLanguage found = find_language(name);
    language = found.language;
    return found.language != nullptr ? "" : found.fault + " (`kx sort --list` lists all)";
}

FoundLanguage language_of_locale() {
    // The first one that is set decides, even when it says nothing of use.
    for (const char *variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
        const char *value = std::getenv(variable);
        if (value == nullptr || *value == 0) continue;
        FoundLanguage found = find_language(value);
        if (found.language == nullptr) found.fault = std::string(variable) + ": " + found.fault;
        return found;
    }
    return {nullptr, "no locale is set"};
}

std::string list_of_languages() {
    const auto column = [](std::string_view text, std::size_t width) {
        // Names are of ASCII; what is not stands in the last column.
        return std::string(text) + std::string(width > text.size() ? width - text.size() : 1, ' ');
    };
    std::string text = "code  ISO      name                  rules\n";
    for (const Language &language : kLanguages) {
        text += column(language.code, 6) + column(spelled_locale(language), 9) + column(language.name(), 22) +
                language.rules + '\n';
    }
    return text +
           "\nEN is another name for US. Codes are meant in capital letters, ISO 639 in small ones: CS is Simplified\n"
           "Chinese and cs Czech, SL Slovak and sl Slovene, UK British English and uk Ukrainian, GA Galician and ga\n"
           "Irish, SD Swiss German and sd Sindhi, TK Turkish and tk Turkmen. Three letters of ISO 639, names of "
           "locales\n"
           "(pt_BR, de_AT.UTF-8, zh-Hant) and English names do, too.\n";
}

} // namespace kx
