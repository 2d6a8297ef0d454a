// The maps of every family that this processor can run, against the plain ones, which the conversions' own tests hold.

#include "simd/kernels.h"
#include "simd/pair_map.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

using namespace kxstr::simd;
using kxstr::test::Fenced;

using Units = std::vector<std::uint16_t>;
using Bytes = std::vector<std::uint8_t>;

class Maps : public testing::Test {
  protected:
    Maps() {
        auto &values = pairs->values;
        for (auto &value : values)
            value = static_cast<std::uint16_t>(random() % 4 == 0   ? 0xFFFF
                                               : random() % 3 == 0 ? random() % 0xFF + 1
                                                                   : random() | 1u);
        for (std::uint16_t ch = 0; ch <= kLastSame; ++ch)
            values[ch] = ch;
        for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
            leads[byte] = byte % 3 != 0 ? 0x80 : 0;
        kxstr::test::add_pairs(*pairs, random);
    }

    // Plain text, texts of one, two and many pages, in stretches.
    Units text(std::size_t count) {
        Units units(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (i % 40 == 0) kind = random() % 4;
            const unsigned page = kind == 1 ? 0x04 : kind == 2 ? random() % 2 * 0x20 : random() & 0xFF;
            units[i] = static_cast<std::uint16_t>(kind == 0 || random() % 5 == 0 ? 0x20 + random() % 0x5F
                                                                                 : page << 8 | (random() & 0xFF));
        }
        return units;
    }

    // Runs check(family, source, count) for sources at both fences.
    template <class Unit, class Check> void against_plain(Check check) {
        for (const Kernels *family : available()) {
            SCOPED_TRACE(family->name);
            places.for_every_place<Unit>([&](Unit *source, std::size_t count) {
                if (testing::Test::HasFatalFailure()) return;
                const Units units = text(count);
                std::transform(units.begin(), units.end(), source,
                               [](auto unit) { return static_cast<Unit>(unit != 0 ? unit | (unit >> 8) : 1); });
                check(*family, source, count);
            });
        }
    }

    // Puts a terminator into every second text; gives the units before it.
    template <class Unit> std::size_t end_somewhere(Unit *source, std::size_t count) {
        if (count == 0 || random() % 2 == 0) return count;
        const std::size_t length = random() % count;
        source[length] = 0;
        return length;
    }

    const Kernels &plain = *available().front();
    std::mt19937 random{1};
    unsigned kind = 0;
    std::unique_ptr<PairMap> pairs = std::make_unique<PairMap>();
    std::uint16_t *map = pairs->values.data();
    alignas(64) std::array<std::uint8_t, 256> leads{};
    Fenced places, results;
};

TEST_F(Maps, Bytes) {
    against_plain<std::uint8_t>([&](const Kernels &family, std::uint8_t *source, std::size_t count) {
        const std::size_t length = end_somewhere(source, count);
        Units expected(count + 1, 0x5555);
        ASSERT_EQ(plain.map_bytes(map, source, count, expected.data()), length);
        auto *const result = reinterpret_cast<std::uint16_t *>(results.end()) - (length + 1); // not a unit more
        ASSERT_EQ(family.map_bytes(map, source, count, result), length) << count;
        ASSERT_TRUE(std::equal(result, result + length + 1, expected.begin())) << count;
        std::copy_n(source, std::min(count, length + 1), reinterpret_cast<std::uint8_t *>(result));
        family.map_bytes(map, reinterpret_cast<std::uint8_t *>(result), length, result);
        ASSERT_TRUE(std::equal(result, result + length + 1, expected.begin())) << count << " in place";
    });
}

// So long that what is written goes past the caches; elsewhere and in place.
TEST_F(Maps, BytesOfALongText) {
    constexpr std::size_t kLength = (1 << 23) + 77;
    Bytes source(kLength + 1);
    std::generate_n(source.begin(), kLength, [this] { return static_cast<std::uint8_t>(1 + random() % 0xFF); });
    Units expected(kLength + 1);
    plain.map_bytes(map, source.data(), SIZE_MAX, expected.data());
    for (const Kernels *family : available()) {
        for (const std::size_t shift : {1u, 32u}) {
            Units result(shift + kLength + 2, 0x5555);
            ASSERT_EQ(family->map_bytes(map, source.data(), SIZE_MAX, &result[shift]), kLength);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), &result[shift]));
            std::memcpy(&result[shift], source.data(), source.size());
            family->map_bytes(map, reinterpret_cast<std::uint8_t *>(&result[shift]), SIZE_MAX, &result[shift]);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), &result[shift]));
            ASSERT_TRUE(result[shift - 1] == 0x5555 && result.back() == 0x5555);
        }
    }
}

TEST_F(Maps, BytesToAStream) {
    against_plain<std::uint8_t>([&](const Kernels &family, std::uint8_t *source, std::size_t count) {
        if (count == 0) return;
        const auto kinds = random() % 3; // every byte has a character (0xFF00 too), most have, many have none
        for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
            map[byte] = static_cast<std::uint16_t>(random() % 10 < kinds * 2 ? 0xFFFF : byte << (random() % 3 * 4));
        for (std::uint8_t &byte : std::span(source, count))
            if (random() % 30 == 0) byte = random() % 2 != 0 ? 0x7F : '\n';
        source[random() % 2 == 0 ? count - 1 : random() % count] = 0;
        source[count - 1] = 0;
        for (const std::size_t room : {4 * count, random() % (2 * count + 2)}) {
            Bytes expected(room);
            const std::size_t written = plain.stream_of_bytes(map, source, expected.data(), room);
            std::uint8_t *const result = results.end() - written; // not a byte more
            ASSERT_EQ(family.stream_of_bytes(map, source, result, room), written) << count << ' ' << room;
            ASSERT_TRUE(std::equal(result, results.end(), expected.begin())) << count << ' ' << room;
        }
    });
}

TEST_F(Maps, UnitsUpToAZero) {
    against_plain<std::uint16_t>([&](const Kernels &family, std::uint16_t *source, std::size_t count) {
        const std::uint16_t stop = 0xA5A5;
        map[stop] = 0;
        std::replace(source, source + count, stop, std::uint16_t{0x41});
        const std::size_t length = end_somewhere(source, count);
        if (length != 0 && random() % 2 == 0) source[random() % length] = stop;
        Units expected(count, 0x5555), result(source, source + count);
        const std::size_t done = plain.map_units(map, source, count, expected.data());
        const std::size_t stored = std::min(done + 1, count);
        auto *const place = reinterpret_cast<std::uint16_t *>(results.end()) - stored;
        ASSERT_EQ(family.map_units(map, source, count, place), done) << count;
        ASSERT_TRUE(std::equal(place, place + stored, expected.begin())) << count;
        ASSERT_EQ(family.map_units(map, result.data(), count, result.data()), done) << count << " in place";
        ASSERT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<long>(stored), result.begin()));
    });
}

TEST_F(Maps, UnitsToCodes) {
    against_plain<std::uint16_t>([&](const Kernels &family, std::uint16_t *source, std::size_t count) {
        end_somewhere(source, count);
        for (const NoCode no_code : {NoCode::drop, NoCode::mark}) {
            Bytes expected(2 * count);
            const Progress done = plain.encode_units(map, source, count, expected.data(), no_code);
            std::uint8_t *const result = results.end() - done.written; // not a byte more
            const Progress found = family.encode_units(map, source, count, result, no_code);
            ASSERT_EQ(found.read, done.read) << count;
            ASSERT_EQ(found.written, done.written) << count;
            ASSERT_TRUE(std::equal(result, results.end(), expected.begin())) << count;
        }
    });
}

TEST_F(Maps, Pairs) {
    against_plain<std::uint8_t>([&](const Kernels &family, std::uint8_t *source, std::size_t count) {
        if (count % 2 != 0) std::replace(source, source + count, std::uint8_t{0xFC}, std::uint8_t{'a'});
        Units expected(count + 1);
        const std::uint16_t *const values = count % 4 != 0 ? map : nullptr;
        const Progress done = plain.decode_pairs(values, leads.data(), source, count, expected.data());
        const auto check = [&](DecodePairs *decode) {
            auto *const result = reinterpret_cast<std::uint16_t *>(results.end()) - done.written; // not a unit more
            const Progress found = decode(values, leads.data(), source, count, result);
            ASSERT_EQ(found.read, done.read) << count;
            ASSERT_EQ(found.written, done.written) << count;
            ASSERT_TRUE(std::equal(result, result + done.written, expected.begin())) << count;
        };
        check(family.decode_pairs);
        if (values == nullptr || count == 0) return;
        check(family.decode_page);
        source[count - 1] = 0;
        const std::size_t length = plain.decode_pairs(map, leads.data(), source, count - 1, expected.data()).written;
        const std::size_t limit = random() % 2 == 0 ? random() % count : count, some = std::min(length, limit);
        auto *const result = reinterpret_cast<std::uint16_t *>(results.end()) - (some + 1);
        const bool in_place = limit == count && random() % 2 == 0;
        auto *const text = in_place ? reinterpret_cast<std::uint8_t *>(result) : source;
        std::copy_n(source, in_place ? count : 0, text);
        Bytes stream(4 * count);
        const std::size_t bytes = plain.write_stream(stream.data(), expected.data(), length, stream.size()).written;
        const std::size_t room = random() % 4 == 0 ? random() % (bytes + 1) : bytes;
        std::uint8_t *const written = results.end() - (room + 1);
        if (const std::size_t size = family.stream_of_short(map, leads.data(), text, written, room); size != 0) {
            ASSERT_EQ(size, bytes + 1) << count;
            stream[bytes] = 0;
            ASSERT_TRUE(std::equal(written, written + size, stream.begin())) << count;
        }
        std::copy_n(source, in_place ? count : 0, text);
        if (!family.decode_short(map, leads.data(), text, limit, result)) return;
        expected[some] = 0;
        ASSERT_TRUE(std::equal(result, result + some + 1, expected.begin())) << count << ' ' << in_place;
    });
}

} // namespace
