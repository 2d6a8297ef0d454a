// Words in the order of a language, against ICU's collators: neighbours of a list compared, and a list sorted.
#include "peers.h"
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstring>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <kxstr/strops.h>
#include <kxstr/unicode.h>
#include <span>
#include <unicode/ustring.h>

namespace kxbench {
namespace {

constexpr std::size_t kWords = 20000;

struct Language {
    const char *code; // the library's
    const char *locale;
    const char *system;
};

constexpr Language kLanguages[] = {
    {"US", "en_US", "western"}, {"ES", "es_ES", "western"}, {"SV", "sv_SE", "western"},
    {"CZ", "cs_CZ", "western"}, {"HE", "he_IL", "western"}, {"JP", "ja_JP", "japanese"},
};

// A word in both forms, each zero-terminated in the one array that all words of its form lie in.
struct Word {
    const KxChar *kx;
    const UChar *unicode;
    std::int32_t size;
};

struct Keyed {
    std::span<const std::uint8_t> key;
    Word word{};
};

struct Words {
    Language language;
    std::vector<KxChar> kx;
    std::vector<std::uint16_t> unicode;
    std::vector<Word> list;
    std::vector<Word> sorted; // the result of sorting by comparison
    std::vector<std::uint8_t> key_bytes;
    std::vector<Keyed> keys; // the result of the one that sorts by keys
    std::shared_ptr<UCollator> collator;

    Words(const Language &wanted, UCollationStrength strength)
        : language(wanted), collator(open_collator(wanted.locale, strength)) {
        std::vector<std::pair<std::size_t, std::int32_t>> places;
        for (const std::u16string &word : words_of(language.code)) {
            const std::size_t start = unicode.size();
            for (const char16_t unit : word) {
                unicode.push_back(unit);
                kx.push_back(YWcharUnicodeToKX6x(unit));
            }
            if (std::ranges::count(kx.begin() + static_cast<std::ptrdiff_t>(start), kx.end(), KX_NONE) != 0) {
                unicode.resize(start);
                kx.resize(start);
                continue;
            }
            places.emplace_back(start, static_cast<std::int32_t>(word.size()));
            unicode.push_back(0);
            kx.push_back(0);
        }
        for (const auto &[start, size] : places)
            list.push_back({&kx[start], uchars(&unicode[start]), size});
        key_bytes.resize(unicode.size() * 16);
        keys.resize(list.size());
        VaskSetLanguage("EN"); // for the comparisons that go by the language of the process
    }
    void clear_output() {
        sorted.clear();
        std::ranges::fill(keys, Keyed{});
    }
    // By the order of ours, for all entrants. A merge stays within the list whatever a comparison says.
    void put_in_order();
};

constexpr auto compare_ours = [](const Words &in, const Word &a, const Word &b) -> int {
    return KxWS6CmpcollLang(a.kx, b.kx, in.language.code, 1, 1);
};

void Words::put_in_order() {
    std::ranges::stable_sort(list, [this](const Word &a, const Word &b) { return compare_ours(*this, a, b) < 0; });
}

// ---- neighbours ----

int sign(int value) {
    return (value > 0) - (value < 0);
}

// ICU's orders are younger than ours and lay some words otherwise, but not many.
template <class Ours, class Peer> bool mostly_agree(const Words &in, Ours ours, Peer peer) {
    std::size_t agreed = 0;
    for (std::size_t i = 1; i < in.list.size(); ++i)
        agreed += sign(ours(in, in.list[i - 1], in.list[i])) == sign(peer(in, in.list[i - 1], in.list[i]));
    return in.list.size() > kWords * 9 / 10 && agreed > in.list.size() * 5 / 6;
}

// One comparison of each word with the next, in the order of the corpus, which is none, and in order.
template <class Ours, class Peer>
void add_neighbour_rows(const std::string &job, const Language &language, UCollationStrength strength, Ours ours,
                        const char *peer_name, Peer peer) {
    const auto all = [](auto compare) {
        return [compare](Words &in) {
            int sum = 0;
            for (std::size_t i = 1; i < in.list.size(); ++i)
                sum += compare(in, in.list[i - 1], in.list[i]);
            return sum;
        };
    };
    const auto agree = [ours, peer](const Words &in, int) { return mostly_agree(in, ours, peer); };
    for (const bool in_order : {false, true}) {
        const std::string text = std::string(language.code) + (in_order ? "-sorted" : "-shuffled");
        Row<Words>(job, text, kWords,
                   [=] {
                       Words words(language, strength);
                       if (in_order) words.put_in_order();
                       return words;
                   })
            .entrant("ours", all(ours), agree)
            .entrant(peer_name, all(peer), agree);
    }
}

constexpr auto compare_icu = [](const Words &in, const Word &a, const Word &b) -> int {
    return ucol_strcoll(in.collator.get(), a.unicode, a.size, b.unicode, b.size);
};

void add_rows_by_process_language(const Language &language) {
    add_neighbour_rows(
        "W6wstrcmp", language, UCOL_TERTIARY,
        [](const Words &, const Word &a, const Word &b) { return W6wstrcmp(a.kx, b.kx); }, "ucol_strcoll", compare_icu);
    // Letters and their accented forms are one here, as they are to a collator of primary strength.
    add_neighbour_rows(
        "W6w_stricmp", language, UCOL_PRIMARY,
        [](const Words &, const Word &a, const Word &b) { return W6w_stricmp(a.kx, b.kx); }, "ucol_strcoll-primary",
        compare_icu);
    add_neighbour_rows(
        "W6wstriequ", language, UCOL_PRIMARY,
        [](const Words &, const Word &a, const Word &b) { return W6wstriequ(a.kx, b.kx); }, "u_strcasecmp",
        [](const Words &, const Word &a, const Word &b) {
            return u_strcasecmp(a.unicode, b.unicode, U_FOLD_CASE_DEFAULT) == 0 ? 1 : 0;
        });
}

// ---- sorting ----

// Keys of the whole list and then the list by its keys: what a program does that sorts once.
std::size_t sort_by_keys(Words &in) {
    std::uint8_t *end = in.key_bytes.data();
    std::uint8_t *const limit = end + in.key_bytes.size();
    for (std::size_t i = 0; i < in.list.size(); ++i) {
        const std::int32_t size = ucol_getSortKey(in.collator.get(), in.list[i].unicode, in.list[i].size, end,
                                                  static_cast<std::int32_t>(limit - end));
        in.keys[i] = {{end, static_cast<std::size_t>(size)}, in.list[i]};
        end += size;
    }
    std::ranges::sort(in.keys, [](const Keyed &a, const Keyed &b) {
        const std::size_t common = std::min(a.key.size(), b.key.size());
        const int order = std::memcmp(a.key.data(), b.key.data(), common);
        return order != 0 ? order < 0 : a.key.size() < b.key.size();
    });
    return in.keys.size();
}

std::size_t sort_by_comparison(Words &in) {
    in.sorted.assign(in.list.begin(), in.list.end());
    std::ranges::sort(in.sorted, [&in](const Word &a, const Word &b) { return compare_ours(in, a, b) < 0; });
    return in.sorted.size();
}

// Every word before or with the one behind it, and all words there.
bool is_sorted_by_ours(const Words &in, std::size_t) {
    const auto address = [](const Word &word) { return word.kx; };
    std::vector<Word> back = in.sorted;
    std::ranges::sort(back, {}, address);
    return std::ranges::equal(back, in.list, {}, address, address) &&
           std::ranges::is_sorted(in.sorted,
                                  [&in](const Word &a, const Word &b) { return compare_ours(in, a, b) < 0; });
}

bool is_sorted_by_icu(const Words &in, std::size_t) {
    return std::ranges::is_sorted(
        in.keys, [&in](const Keyed &a, const Keyed &b) { return compare_icu(in, a.word, b.word) == UCOL_LESS; });
}

void add_sorting_row(const Language &language) {
    Row<Words>("sort-KxWS6CmpcollLang", language.code, kWords, [=] { return Words(language, UCOL_TERTIARY); })
        .entrant("ours", sort_by_comparison, is_sorted_by_ours)
        .entrant("sort-keys", sort_by_keys, is_sorted_by_icu);
}

} // namespace

void add_collation_rows() {
    for (const Language &language : kLanguages) {
        if (language.system != std::string_view(current().name)) continue;
        add_neighbour_rows("KxWS6CmpcollLang", language, UCOL_TERTIARY, compare_ours, "ucol_strcoll", compare_icu);
        add_sorting_row(language);
        if (language.code == std::string_view("US")) add_rows_by_process_language(language);
    }
}

} // namespace kxbench
