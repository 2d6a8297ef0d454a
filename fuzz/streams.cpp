// Document streams: the checked walk over any bytes, and what trusts its streams over those that the walk found sound.
#include <algorithm>
#include <cstring>
#include <kxstr/forms.h>
#include <kxstr/letters.h>
#include <kxstr/strops.h>
#include <kxstr/text.h>

#include "targets.h"

namespace kxstr::fuzz {
namespace {

// Every byte may be anything, and what is cut off may be sound when more follows.
void walk(Input &input) {
    const auto bytes = input.part(3000);
    const Buffer<std::uint8_t> stream(input, bytes);
    KxStreamCode code;
    for (std::size_t at = 0; at < stream.size(); at += code.size) {
        const std::size_t left = stream.size() - at;
        require(KxStreamNext(stream.data() + at, left, &code) == 1, "there is a code");
        require(code.size >= 1 && code.size <= left, "a code lies within the stream");
        require(code.kind >= KX_STREAM_TEXT && code.kind <= KX_STREAM_END && code.fault <= KX_STREAM_OTHER_SIZE,
                "a kind");
        require(code.fault == KX_STREAM_SOUND || code.size == 1, "one byte of a code with a fault");
        const std::size_t shorter = input.below(static_cast<std::uint32_t>(std::min<std::size_t>(code.size, 255)));
        const Buffer<std::uint8_t> cut(input, bytes.subspan(at, shorter));
        KxStreamCode part;
        if (KxStreamNext(cut.data(), shorter, &part) == 1 && code.fault == KX_STREAM_SOUND)
            require(part.fault == KX_STREAM_CUT_OFF && part.size == 1, "a sound code that is cut off");
    }
    require(KxStreamNext(stream.end(), 0, &code) == 0 && code.size == 0, "the end");
}

void traverse(Input &input) {
    const auto bytes = sound_stream(input.part(2000));
    const Buffer<std::uint8_t> stream(input, bytes);
    const std::size_t length = stream.size() - 1;
    require(wdstrlen(stream.data()) == static_cast<std::int32_t>(length), "the length");
    const std::uint8_t *character = W6dstrFirstCh(stream.data());
    KxStreamCode code;
    for (std::size_t at = 0; at < length; at += code.size) {
        KxStreamNext(stream.data() + at, length - at, &code);
        require(ufsize(stream.data() + at) == code.size, "the size from its first byte");
        require(ubsize(stream.data() + at + code.size) == code.size, "the size from its last byte");
        if (character == stream.data() + at) {
            const Buffer<std::uint8_t> one(input, std::span(character, code.size));
            const std::uint16_t lower = W6dstrLowerCh2(one.data());
            W6dstrLowerCh(one.data());
            require(W6dstrLowerCh2(one.data()) == lower, "a small letter stays one");
            W6dstrUpperCh(one.data());
            character = W6dstrNextCh(character);
        }
    }
    require(character == stream.end() - 1, "the walk by characters ends where the stream ends");
}

void copy_and_change(Input &input) {
    const auto first = sound_stream(input.part(input.below(1000)));
    const auto second = sound_stream(input.part(1000));
    const Buffer<std::uint8_t> source(input, second);
    const Buffer<std::uint8_t> copy(input, second.size());
    require(wdstrcpy(copy.data(), source.data()) == copy.data() && copy == source, "a copy");
    const Buffer<std::uint8_t> both(input, first, first.size() + second.size() - 1);
    require(wdstrcat(both.data(), source.data()) == both.data(), "the destination");
    require(std::equal(second.begin(), second.end(), both.end() - static_cast<std::ptrdiff_t>(second.size())),
            "the end");
    const Buffer<std::uint8_t> twice(input, second, 2 * second.size() - 1);
    wdstrcat(twice.data(), twice.data());
    require(std::equal(second.begin(), second.end(), twice.begin() + static_cast<std::ptrdiff_t>(second.size() - 1)),
            "twice");
    const std::size_t shift = input.below(20);
    const Buffer<std::uint8_t> moved(input, second, second.size() + shift);
    wdstrcpy(moved.data() + shift, moved.data());
    require(std::equal(second.begin(), second.end(), moved.begin() + static_cast<std::ptrdiff_t>(shift)),
            "overlapping");
    require(W6dstrlwr(copy.data()) == copy.data(), "the stream");
    require(W6dstriequ(copy.data(), source.data()) == 1, "small letters are the same letters");
    require(W6dstrupr(copy.data()) == copy.data(), "the stream");
}

// Bytes with extended characters that end within it.
void letters(Input &input) {
    std::vector<std::uint8_t> text;
    const auto bytes = input.part(2000);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == 0 || (bytes[i] == 0xF0 && i + 3 >= bytes.size())) continue;
        text.push_back(bytes[i]);
        if (bytes[i] != 0xF0) continue;
        text.insert(text.end(), {bytes[i + 1], bytes[i + 2], 0xF0});
        i += 3;
    }
    text.push_back(0);
    const Buffer<std::uint8_t> source(input, text), to(input, text.size()), in_place(input, text);
    s2upper(to.data(), source.data());
    s2upper(in_place.data(), in_place.data());
    require(to == in_place, "the same in place");
}

void compare(Input &input) {
    const std::int32_t limit = input.below(8) == 0 ? -static_cast<std::int32_t>(input.byte()) : input.byte();
    auto first = sound_stream(input.part(input.below(600)));
    auto second = sound_stream(input.part(600));
    if (input.flag()) { // mostly equal
        second = first;
        const Buffer<std::uint8_t> cased(input, second);
        if (input.flag()) W6dstrlwr(cased.data());
        second = std::vector<std::uint8_t>(cased);
    }
    const Buffer<std::uint8_t> a(input, first), b(input, second);
    for (const auto equal : {W6dstrequ, W6dstriequ}) {
        const std::int32_t result = equal(a.data(), b.data());
        require((result == 0 || result == 1) && equal(a.data(), a.data()) == 1, "equal to itself");
    }
    require(W6dstrequ(a.data(), b.data()) == W6dstrequ(b.data(), a.data()), "the same the other way round");
    for (const auto equal : {W6dstrnequ, W6dstrniequ, W6dstrcequ, W6dstrciequ}) {
        const std::int32_t result = equal(a.data(), b.data(), limit);
        require(result == 1 || (result == 0 && limit > 0), "1 or 0");
        require(equal(a.data(), a.data(), limit) == 1, "equal to itself");
    }
}

} // namespace

void streams(Input &input) {
    static constexpr void (*kFamilies[])(Input &) = {walk, traverse, copy_and_change, letters, compare};
    choose_system(input);
    input.one_of(kFamilies)(input);
}

} // namespace kxstr::fuzz
