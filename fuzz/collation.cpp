// Orders: what must hold of every order, on texts of three; the values of characters; small tables of the caller's.
#include <algorithm>
#include <cstring>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <kxstr/strops.h>

#include "targets.h"

namespace kxstr::fuzz {
namespace {

int sign(std::int32_t value) {
    return (value > 0) - (value < 0);
}

// Where an order promises it, a before b and b before c must mean a before c, equal ones included.
template <class Compare>
void check_order(const Compare &compare, const Buffer<KxChar> (&texts)[3], bool is_transitive) {
    int order[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            order[i][j] = sign(compare(texts[i].data(), texts[j].data()));
    for (int i = 0; i < 3; ++i) {
        require(order[i][i] == 0, "equal to itself");
        for (int j = 0; j < 3; ++j) {
            require(order[i][j] == -order[j][i], "the other way round");
            for (int k = 0; is_transitive && k < 3; ++k)
                if (order[i][j] <= 0 && order[j][k] <= 0)
                    require(order[i][k] <= 0 && (order[i][k] < 0 || (order[i][j] == 0 && order[j][k] == 0)),
                            "transitive");
        }
    }
}

void orders(Input &input) {
    choose_language(input);
    const bool bounded = input.flag();
    const auto limit = static_cast<std::int32_t>(input.below(40)) - 4;
    const std::uint32_t lang = input.below(48), case_flag = input.below(2), kana_flag = input.below(2);
    const std::size_t most = 1 + input.below(40);
    const auto text = [&] { return kx_of(input, most); };
    const Buffer<KxChar> texts[3] = {{input, text()}, {input, text()}, {input, text()}};
    if (bounded) {
        for (const auto compare : {W6wstrccmp, W6wstrncmp, W6wstrcicmp, W6wstrnicmp}) {
            const auto within = [&](const KxChar *a, const KxChar *b) { return compare(a, b, limit); };
            for (const auto &a : texts)
                for (const auto &b : texts)
                    if (limit >= 0)
                        require(within(a.data(), b.data()) == -within(b.data(), a.data()), "the other way round");
        }
        return;
    }
    for (const auto compare : {W6wstrcmp, W6w_stricmp})
        check_order(compare, texts, true);
    for (const auto &one : texts)
        for (const KxChar ch : one)
            require(ch != 0 || W6wstrCollateCh(ch) == 0, "the terminator has the value 0");

    // Languages with contractions and the East Asian ones are not transitive in every corner.
    char code[3];
    KxNum2Lang(lang, code);
    require(KxLanguage(code) == static_cast<std::int32_t>(lang < 40 ? lang : 0), "a number and its code");
    const auto by_number = [&](const KxChar *a, const KxChar *b) {
        return KxWS6Cmpcoll(a, b, lang, case_flag, kana_flag);
    };
    check_order(by_number, texts, false);
    const Buffer<char> exact(input, std::span<const char>(code, 2));
    KxWS6CmpcollLang(texts[0].data(), texts[1].data(), exact.data(), case_flag, kana_flag);
    KxWS6Cmpcoll(nullptr, texts[1].data(), lang, case_flag, kana_flag);
}

void values(Input &input) {
    const std::uint32_t lang = input.below(48), case_on = input.below(2);
    const auto text = kx_of(input, 300);
    const Buffer<KxChar> source(input, text);
    std::uint32_t previous = 0;
    for (const KxChar *at = source.data(); *at != 0;) {
        const Buffer<std::uint8_t> primary(input, 2), tertiary(input, 1);
        const Buffer<std::uint16_t> secondary(input, 1);
        const KxChar *const before = at;
        const std::uint32_t result =
            getColValues(&at, primary.data(), secondary.data(), tertiary.data(), case_on, previous, lang);
        require((result == 0 || result == 2) && at > before && at < source.end(), "the position moves");
        previous = result == 2 ? static_cast<std::uint32_t>(primary[0] << 8 | primary[1]) : 0;
    }
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        const std::uint32_t ch = text[i];
        const Buffer<std::uint16_t> primary(input, 1), secondary(input, 1);
        const Buffer<std::uint8_t> flags(input, 1);
        require(AsiaGetColValues(ch, text[i + 1], input.word(), primary.data(), secondary.data(), flags.data(),
                                 input.below(2)) <= 2,
                "0 to 2");
        require(f_KX60ColVal(ch, lang) <= 0xFF && f_wislower(ch) <= 1, "a value");
        KxCh6Iskxc(ch);
        KxCh6Getcoll(ch);
        const std::uint8_t order = KxCh6Cmpcoll(ch, text[i + 1]);
        require(order + KxCh6Cmpcoll(text[i + 1], ch) == (order == 4 ? 8 : 10), "the other way round");
        KxChar base = 0, diacritic = 0, composite = 0;
        if (KxCh6Brkcar(ch, &base, &diacritic) == 0) KxCh6Cmbcar(&composite, base, diacritic & 0x7F);
        KxCh6Cmbcar(&composite, ch, input.byte());
        KxCh6Getdia(ch);
        require(xchcmp(ch, text[i + 1], 1) == -xchcmp(text[i + 1], ch, 1), "the other way round");
        std::uint8_t *value = nullptr;
        require(fndcolv(ch, &value) != 0 || *value == xch2col(ch), "the value at the place");
    }
}

void set_up(Input &input) {
    const auto language = bytes_of(input, 10);
    const Buffer<char> code(input, language);
    setsseq(input.below(8) == 0 ? nullptr : code.data());
    choose_language(input);
    lVaskSetupLang();
    KxLanguage(code.data());
    for (const KxCollationEntry *entry = coltbl; entry->set != 0xFF; ++entry)
        require(entry->block != nullptr && entry->block[0] + entry->block[1] <= 0x100, "a block");
    require(diatbl[input.below(26)] <= 15, "a rank");
}

template <class Value> void append(std::vector<std::uint8_t> &bytes, Value value) {
    const auto *const start = reinterpret_cast<const std::uint8_t *>(&value);
    bytes.insert(bytes.end(), start, start + sizeof value);
}

void tables(Input &input) {
    const std::uint8_t key = input.byte();
    const std::uint16_t wide_key = input.word();
    std::vector<std::uint8_t> list, pairs, addresses;
    std::vector<std::uint16_t> words, word_pairs;
    for (int i = static_cast<int>(input.below(10)); i > 0; --i) {
        list.push_back(static_cast<std::uint8_t>(input.below(255)));
        words.push_back(static_cast<std::uint16_t>(input.below(65535)));
    }
    for (const std::uint8_t entry : list) {
        pairs.insert(pairs.end(), {entry, input.byte()});
        append(addresses, entry);
        append<const void *>(addresses, &key);
    }
    for (const std::uint16_t entry : words)
        word_pairs.insert(word_pairs.end(), {entry, input.word()});
    list.push_back(0xFF);
    pairs.push_back(0xFF); // nothing behind the end mark is read
    addresses.push_back(0xFF);
    append<const void *>(addresses, nullptr);
    words.push_back(0xFFFF);
    word_pairs.insert(word_pairs.end(), {0xFFFF, 7});
    const Buffer<std::uint8_t> b(input, list), b_b(input, pairs), b_p(input, addresses);
    const Buffer<std::uint16_t> w(input, words), w_w(input, word_pairs);
    const bool there = std::find(list.begin(), list.end() - 1, key) != list.end() - 1;
    require(b_table(b.data(), key) == (there ? key : 0xFF), "in the list");
    require(w_table(w.data(), wide_key) == (std::ranges::find(words, wide_key) != words.end() ? wide_key : 0xFFFF),
            "in the list");
    b_b_table(b_b.data(), key);
    uw_uw_table(w_w.data(), wide_key);
    require(ub_fp_table(b_p.data(), key) == (there ? &key : nullptr), "the address");
    require(ub_vfp_table(b_p.data(), key) == ub_fp_table(b_p.data(), key), "two names");

    // Tables with one entry for each key from the first to the last.
    const std::uint8_t first = input.byte();
    const auto last = static_cast<std::uint8_t>(first + input.below(256u - first));
    const std::size_t entries = last - first + std::size_t{1};
    const bool inside = first <= key && key <= last;
    std::vector<std::uint8_t> bytes(2 + entries), byte_pairs(2 + 2 * entries), by_byte, by_word;
    std::vector<std::uint16_t> units(2 + entries);
    bytes[0] = byte_pairs[0] = first;
    bytes[1] = byte_pairs[1] = last;
    units[0] = first;
    units[1] = last;
    const std::vector<std::uint32_t> numbers(entries, 5);
    const Buffer<std::uint32_t> array(input, numbers);
    append(by_byte, first);
    append(by_byte, last);
    append<const void *>(by_byte, array.data());
    append<std::uint16_t>(by_word, first);
    append<std::uint16_t>(by_word, last);
    append<const void *>(by_word, array.data());
    const Buffer<std::uint8_t> one(input, bytes), two(input, byte_pairs), pointer(input, by_byte), wide(input, by_word);
    const Buffer<std::uint16_t> unit(input, units);
    require(ub_lukup(one.data(), key) == (inside ? 0 : 0xFF), "looked up");
    require(uw_lukup(unit.data(), key) == (inside ? 0 : 0xFFFF), "looked up");
    require(ubp_lukup(pointer.data(), key) == (inside ? 5u : 0u), "looked up");
    const bool wide_inside = first <= wide_key && wide_key <= last;
    require(uw_fp_lukup(wide.data(), wide_key) == (wide_inside ? 5u : 0xFFFFFFFFu), "looked up");
    std::uint8_t out[2] = {9, 9};
    require(ub_ub_lukup(two.data(), key, &out[0], &out[1]) == (inside ? 0u : 1u) && out[0] == (inside ? 0 : 9),
            "looked up");
}

} // namespace

void collation(Input &input) {
    static constexpr void (*kFamilies[])(Input &) = {orders, orders, values, set_up, tables};
    choose_system(input);
    input.one_of(kFamilies)(input);
}

} // namespace kxstr::fuzz
