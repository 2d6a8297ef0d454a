// The stream kernels of every family that this processor can run, against the plain ones.

#include "simd/kernels.h"
#include "simd/pair_map.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using simd::Kernels;
using Bytes = std::vector<std::uint8_t>;

// A stream of `size` bytes before the terminator: one-byte codes and extended characters in a mix of every density, the
// bytes of some of the latter being 0, 0xF0 or out of order, of few sets or many, now and then a code of another kind.
Bytes random_stream(std::mt19937 &random, std::size_t size, bool with_others) {
    const auto density = random() % 9, sets = std::mt19937::result_type{1} << random() % 7;
    Bytes stream;
    while (stream.size() < size) {
        const bool fits = size - stream.size() >= 4;
        if (with_others && random() % 150 == 0) {
            stream.push_back(static_cast<std::uint8_t>(0xD0 + random() % 0x20));
        } else if (fits && random() % 8 < density) {
            constexpr std::uint8_t traps[] = {0x00, 0xF0, 0x41, 0xD0, 0xFF};
            const auto any = [&](std::uint8_t usual) { return random() % 40 == 0 ? traps[random() % 5] : usual; };
            stream.insert(stream.end(), {0xF0, any(static_cast<std::uint8_t>(random() % 0xF0)),
                                         any(static_cast<std::uint8_t>(random() % sets)), any(0xF0)});
        } else {
            const auto kind = random() % 40;
            stream.push_back(static_cast<std::uint8_t>(kind == 0 ? 1 + random() % 0xCF : 0x20 + random() % 0x5F));
        }
    }
    stream.push_back(0);
    return stream;
}

class Streams : public testing::Test {
  protected:
    // Calls check(stream, room) with streams that lie right behind a fence and right before one.
    template <class Check> void for_streams(bool with_others, Check check) {
        std::mt19937 random(20240517);
        for (std::size_t size = 0; size <= 200; ++size) {
            for (unsigned distance = 0; distance < 64; ++distance) {
                const Bytes stream = random_stream(random, size, with_others);
                const std::size_t rooms[] = {4 * size + 8, random() % (2 * size + 2)};
                for (std::uint8_t *place : {memory.begin() + distance, memory.end() - stream.size()}) {
                    std::ranges::copy(stream, place);
                    for (const std::size_t room : rooms)
                        check(place, stream.size() - 1, room);
                }
            }
        }
    }
    Streams() : kept(256) {
        for (unsigned code = 1; code < 0xD0; ++code) {
            const bool is_text = code >= 0x20 && code <= 0x7E;
            kept[code] = static_cast<std::uint8_t>(is_text ? code : code % 3 == 0 ? 0 : code % 5 == 0 ? 0x80 : code);
        }
        kept[0xF0] = 0xF0;
    }

    Bytes kept;
    test::Fenced memory;
    const Kernels &plain = *simd::available().front();
};

// A stream put out as the callers do: code by code where the kernel stops early.
Bytes filtered(const Kernels &family, std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
               const std::uint8_t *kept) {
    std::size_t written = 0;
    for (;;) {
        const auto run = family.filter_stream(destination + written, source, room - written, kept);
        source += run.read;
        written += run.written;
        if (*source != 0xF0 || room - written < 4) break;
        std::copy_n(source, 4, destination + written);
        source += 4;
        written += 4;
    }
    return {destination, destination + written};
}

TEST_F(Streams, SkipAndFilter) {
    for (const Kernels *family : simd::available()) {
        SCOPED_TRACE(family->name);
        for_streams(true, [&](std::uint8_t *stream, std::size_t size, std::size_t room) {
            ASSERT_EQ(family->skip_characters(stream), plain.skip_characters(stream)) << size;
            Bytes expected(room + 1, 0xA5), out(room + 1, 0xA5);
            const Bytes wanted = filtered(plain, expected.data(), stream, room, kept.data());
            ASSERT_EQ(filtered(*family, out.data(), stream, room, kept.data()), wanted) << size << ' ' << room;
            ASSERT_EQ(out, expected) << size << ' ' << room;
            const Bytes before(stream, stream + size + 1);
            ASSERT_EQ(filtered(*family, stream, stream, room, kept.data()), wanted) << "in place";
            std::ranges::copy(before, stream);
        });
    }
}

TEST_F(Streams, Narrow) {
    std::mt19937 random(7);
    const auto pairs = std::make_unique<simd::PairMap>();
    for (std::size_t i = 0; i < pairs->values.size(); ++i) {
        const auto kind = random() % 8;
        const bool is_alphabet = i < 0x280; // codes of one byte each, in rows of 128 characters
        const auto code = is_alphabet ? 1 + random() % 0xFF : kind < 5 ? random() % 0x100 : random();
        pairs->values[i] = static_cast<std::uint16_t>(kind == 0 ? 0xFFFF : code);
    }
    pairs->values[0x10F] = 0x8140; // but for one of a row
    test::add_pairs(*pairs, random);
    const std::uint16_t *const map = pairs->values.data();
    for (const Kernels *family : simd::available()) {
        SCOPED_TRACE(family->name);
        for_streams(true, [&](std::uint8_t *stream, std::size_t size, std::size_t room) {
            Bytes expected(room + 1, 0xA5), out(room + 1, 0xA5);
            const auto numbers = [room](const simd::Narrowed &of) {
                return std::array{of.filtered < room ? of.read : 0, of.filtered, of.written, of.dropped};
            };
            const auto done = numbers(plain.narrow_stream(expected.data(), stream, room, kept.data(), map));
            ASSERT_EQ(numbers(family->narrow_stream(out.data(), stream, room, kept.data(), map)), done)
                << size << ' ' << room;
            ASSERT_EQ(out, expected) << size << ' ' << room;
            const Bytes before(stream, stream + size + 1);
            ASSERT_EQ(numbers(family->narrow_stream(stream, stream, room, kept.data(), map)), done);
            ASSERT_TRUE(std::equal(stream, stream + done[2], expected.begin())) << size << " in place";
            std::ranges::copy(before, stream);
        });
    }
}

TEST_F(Streams, Write) {
    std::mt19937 random(11);
    test::Fenced results;
    for (const Kernels *family : simd::available()) {
        SCOPED_TRACE(family->name);
        memory.for_every_place<std::uint16_t>([&](std::uint16_t *characters, std::size_t count) {
            const auto density = random() % 9;
            std::generate_n(characters, count, [&]() -> std::uint16_t {
                const auto any = static_cast<std::uint16_t>(random());
                return random() % 50 == 0 ? 0xFFFF : random() % 8 < density ? any : any & 0xFF;
            });
            for (const std::size_t room : {4 * count, random() % (2 * count + 2)}) {
                Bytes expected(4 * count + 2);
                const auto done = plain.write_stream(expected.data(), characters, count, room);
                std::uint8_t *const out = results.end() - room; // not a byte more
                const auto got = family->write_stream(out, characters, count, room);
                ASSERT_EQ(got.read, done.read) << count << ' ' << room;
                ASSERT_EQ(got.written, done.written) << count << ' ' << room;
                ASSERT_TRUE(std::equal(out, out + done.written, expected.begin())) << count << ' ' << room;
            }
        });
    }
}

} // namespace
