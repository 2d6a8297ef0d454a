
#include <memory>

#include "simd/kernels.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

using namespace kxstr;

struct Random {
    std::mt19937 engine{1};
    unsigned operator()(unsigned limit) { return static_cast<unsigned>(engine() % limit); }
};

// All forms of a kernel against the plain one, which is tried by hand below: what is read and written, and no byte
// more. Texts of several kinds of characters, some of them with one at a random place that stops the kernel.
template <class From, class To, class Kernel, class Fill, class... Tables>
void compare_forms(Kernel *simd::Kernels::*kernel, std::size_t room, Fill fill, const Tables &...tables) {
    test::Fenced source, target;
    Random random;
    source.for_every_place<From>([&](From *from, std::size_t count) {
        fill(random, from, count);
        std::vector<To> want(room * count);
        const simd::Progress plain = (simd::available().front()->*kernel)(tables..., from, count, want.data());
        for (const simd::Kernels *family : simd::available().subspan(1)) {
            To *const to = reinterpret_cast<To *>(target.end()) - room * count;
            const simd::Progress got = (family->*kernel)(tables..., from, count, to);
            ASSERT_EQ(got.read, plain.read) << family->name << ' ' << count;
            ASSERT_EQ(got.written, plain.written) << family->name << ' ' << count;
            ASSERT_TRUE(std::equal(to, to + got.written, want.begin())) << family->name << ' ' << count;
        }
    });
}

// Mostly of one length, so that all paths are taken for whole blocks.
std::uint16_t random_unit(Random &random, unsigned kind) {
    static constexpr std::uint16_t limits[] = {0x80, 0x800, 0xD800, 0xFFFF};
    return static_cast<std::uint16_t>(random(limits[random(8) == 0 ? random(3) : kind % 4]));
}

void fill_units(Random &random, std::uint16_t *units, std::size_t count) {
    const unsigned kind = random(6);
    for (std::size_t i = 0; i < count; ++i) {
        units[i] = random_unit(random, kind % 3);
        if (random(300) == 0) units[i] = static_cast<std::uint16_t>(random(2) == 0 ? 0xFFFF : 0xD800 + random(0x800));
    }
}

void fill_codes(Random &random, std::uint16_t *codes, std::size_t count) {
    const unsigned kind = random(6);
    for (std::size_t i = 0; i < count; ++i)
        codes[i] = static_cast<std::uint16_t>(random(300) == 0 ? 0xFFFF : random(kind % 2 == 0 ? 0x100 : 0xFFFF));
}

void fill_utf8(Random &random, std::uint8_t *bytes, std::size_t count) {
    std::vector<std::uint16_t> units(count);
    const unsigned kind = random(6);
    for (std::uint16_t &unit : units)
        unit = random_unit(random, kind % 3);
    std::vector<std::uint8_t> text(3 * count);
    simd::available().front()->utf8_of_units(units.data(), count, text.data());
    std::copy_n(text.begin(), count, bytes); // may end inside a character
    if (count != 0 && random(2) == 0)
        bytes[random(static_cast<unsigned>(count))] = static_cast<std::uint8_t>(random(256));
}

TEST(TextKernels, TranslationsAgree) {
    Random random;
    std::array<simd::MapPage, 7> entries{};
    std::array<const simd::MapPage *, 256> pages{};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        for (std::size_t k = 0; k < 0x100; ++k)
            entries[i].set(k, static_cast<std::uint16_t>(random(500) == 0 ? 0xFFFF : random(0xFFFF)));
        pages[i] = &entries[i];
    }
    test::Fenced source, target;
    const auto compare = [&](std::size_t count, auto translate) {
        std::uint16_t *const to = reinterpret_cast<std::uint16_t *>(target.end()) - count;
        std::vector<std::uint16_t> want(count);
        const std::size_t done = translate(*simd::available().front(), want.data());
        for (const simd::Kernels *family : simd::available()) {
            ASSERT_EQ(translate(*family, to), done) << family->name << ' ' << count;
            ASSERT_TRUE(std::equal(to, to + done, want.begin())) << family->name << ' ' << count;
        }
    };
    source.for_every_place<std::uint8_t>([&](std::uint8_t *from, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            from[i] = static_cast<std::uint8_t>(random(256));
        compare(count, [&](const simd::Kernels &family, std::uint16_t *to) {
            return family.translate8(from, count, to, entries[0]);
        });
    });
    source.for_every_place<std::uint16_t>([&](std::uint16_t *from, std::size_t count) {
        const unsigned limit = 0x100 * (1 + random(7)) + (random(20) == 0 ? 2 : 0); // the last page is none
        for (std::size_t i = 0; i < count; ++i)
            from[i] = static_cast<std::uint16_t>(random(limit));
        compare(count, [&](const simd::Kernels &family, std::uint16_t *to) {
            return family.translate16(from, count, to, pages.data());
        });
    });
}

TEST(TextKernels, FormsAgree) {
    compare_forms<std::uint16_t, std::uint8_t>(&simd::Kernels::utf8_of_units, 3, fill_units);
    compare_forms<std::uint8_t, std::uint16_t>(&simd::Kernels::units_of_utf8, 1, fill_utf8);
    compare_forms<std::uint16_t, std::uint8_t>(&simd::Kernels::bytes_of_codes, 2, fill_codes);
}

// Pages with characters of one to three bytes and some without any; most texts keep to a few of them.
TEST(TextKernels, FormsByTablesAgree) {
    Random random;
    const auto map = std::make_unique<std::array<std::uint16_t, 0x10002>>();
    for (std::size_t unit = 0; unit < map->size(); ++unit)
        (*map)[unit] = static_cast<std::uint16_t>(unit < 0x80 ? unit : random(400) == 0 ? 0xFFFF : random(0xFFFF));
    compare_forms<std::uint16_t, std::uint8_t>(&simd::Kernels::bytes_of_mapped, 2, fill_units, map->data());
    for (const unsigned limit : {0x800u, 0x2600u}) {
        simd::Utf8Page utf8{};
        utf8.changes_low = limit > 0x800;
        simd::ByteOfUnits bytes{};
        for (unsigned i = 0; i < 0x80; ++i) {
            const auto unit = static_cast<std::uint16_t>(random(40) == 0 ? '-' : 0x80 + random(limit - 0x80));
            std::uint8_t *const entry = utf8.entries[i];
            utf8.low[i] = static_cast<std::uint8_t>(utf8.changes_low ? random(0x80) : i);
            if (i % 32 == 7) continue;
            entry[3] = static_cast<std::uint8_t>(simd::available().front()->utf8_of_units(&unit, 1, entry).written);
            for (std::size_t k = 0; k < entry[3]; ++k)
                utf8.apart[k][i] = entry[k];
        }
        for (std::size_t table = 0; table < simd::ByteOfUnits::kTables; ++table) {
            bytes.table_of[table * 2] = static_cast<std::uint8_t>(table);
            for (unsigned index = table == 0 ? 0x80 : 0; index < 0x100; ++index)
                bytes.bytes[table][index] = static_cast<std::uint8_t>(random(60) == 0 ? 0 : 0x80 + random(0x80));
        }
        const auto fill_bytes = [](Random &any, std::uint8_t *to, std::size_t count) {
            const unsigned kind = any(3), none = any(4);
            for (std::size_t i = 0; i < count; ++i) {
                to[i] = static_cast<std::uint8_t>(any(kind == 0 ? 0x80 : 0x100) | (kind == 2 ? 0x80u : 0u));
                if (none != 0 && to[i] % 32 == 7) --to[i];
            }
        };
        const auto fill_text = [&](Random &any, std::uint8_t *to, std::size_t count) {
            std::vector<std::uint16_t> units(count);
            const unsigned step = any(2) == 0 ? 0x200 : 1;
            for (std::uint16_t &unit : units)
                unit = static_cast<std::uint16_t>(step == 1 ? any(limit) : step * any(4) + any(0x80));
            std::vector<std::uint8_t> text(3 * count);
            simd::available().front()->utf8_of_units(units.data(), count, text.data());
            std::copy_n(text.begin(), count, to);
            if (count != 0 && any(2) == 0) to[any(static_cast<unsigned>(count))] = static_cast<std::uint8_t>(any(256));
        };
        compare_forms<std::uint8_t, std::uint8_t>(&simd::Kernels::utf8_of_bytes, 3, fill_bytes, utf8);
        compare_forms<std::uint8_t, std::uint8_t>(&simd::Kernels::bytes_of_utf8, 1, fill_text, bytes);
    }
}

// Every sequence of up to three bytes from the edges of each range is taken by exactly the rule of the Unicode
// Standard's table of well-formed sequences, behind a whole block as well.
TEST(TextKernels, WellFormedUtf8) {
    constexpr std::uint8_t edges[] = {0x00, 0x7F, 0x80, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2,
                                      0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xFF};
    const auto in = [](unsigned value, unsigned first, unsigned last) { return first <= value && value <= last; };
    for (const simd::Kernels *family : simd::available()) {
        for (const unsigned a : edges)
            for (const unsigned b : edges)
                for (const unsigned c : edges) {
                    const bool two = in(a, 0xC2, 0xDF) && in(b, 0x80, 0xBF);
                    const bool three = in(a, 0xE0, 0xEF) && in(c, 0x80, 0xBF) &&
                                       in(b, a == 0xE0 ? 0xA0 : 0x80, a == 0xED ? 0x9F : 0xBF);
                    const std::size_t size = a < 0x80 ? 1 : two ? 2 : three ? 3 : 0;
                    std::vector<std::uint8_t> text(62, 'x');
                    text.insert(text.end(), {static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b),
                                             static_cast<std::uint8_t>(c)});
                    std::vector<std::uint16_t> units(text.size());
                    const auto got = family->units_of_utf8(text.data(), text.size(), units.data());
                    if (size == 0) {
                        ASSERT_EQ(got.read, 62u) << family->name << ' ' << a << ' ' << b << ' ' << c;
                        continue;
                    }
                    ASSERT_GE(got.read, 62u + size) << family->name << ' ' << a << ' ' << b << ' ' << c;
                    const unsigned want = size == 1   ? a
                                          : size == 2 ? (a & 0x1F) * 64 + (b & 0x3F)
                                                      : (a & 0xF) * 4096 + (b & 0x3F) * 64 + (c & 0x3F);
                    ASSERT_EQ(units[62], want) << family->name << ' ' << a << ' ' << b << ' ' << c;
                    if (want == 0xFFFF) continue; // stands for no character on the way back
                    std::uint8_t back[3]{};
                    ASSERT_EQ(family->utf8_of_units(&units[62], 1, back).written, size);
                    ASSERT_TRUE(std::equal(back, back + size, &text[62]));
                }
    }
}

} // namespace
