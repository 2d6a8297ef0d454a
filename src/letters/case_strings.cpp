// Letter case of whole KX strings, document streams and byte strings.
#include <kxstr/letters.h>
#include <limits>

#include "forms/step.h"
#include "letters/case.h"

namespace kxstr::letters {
namespace {

using CaseRule = KxChar (*)(KxChar) noexcept;

template <CaseRule Rule> constexpr std::uint8_t map_byte(std::uint8_t byte) noexcept {
    return static_cast<std::uint8_t>(Rule(byte));
}

// Codes have no case, so they need no exception.
std::size_t map_string(const simd::CaseMap &map, const KxChar *from, KxChar *to,
                       std::size_t limit = std::numeric_limits<std::size_t>::max()) noexcept {
    return simd::kernels().map_case16(map, from, to, limit);
}

// A code byte at `position` is taken as a character of set 0, and so stays.
template <CaseRule Rule> std::uint8_t *map_stream_char(std::uint8_t *position) noexcept {
    if (*position == forms::kExtended) {
        store_u16le(position + 1, Rule(load_u16le(position + 1)));
    } else {
        *position = map_byte<Rule>(*position);
    }
    return position;
}

template <CaseRule Rule> std::uint8_t *map_stream(std::uint8_t *stream) noexcept {
    for (std::uint8_t *at = forms::skip_codes(stream); *at != 0; at = forms::next_char(at))
        map_stream_char<Rule>(at);
    return stream;
}

// Knows extended characters, but no other codes: every byte outside of those is mapped like a character.
void copy_upper(std::uint8_t *destination, const std::uint8_t *source) noexcept {
    while (*source != 0) {
        if (*source == forms::kExtended) {
            *destination = *source;
            store_u16le(destination + 1, to_upper(load_u16le(source + 1)));
            destination += 3;
            source += 3;
            // The closing byte goes the way of every byte, even if it is another one: an 0xF0 opens nothing here, and a
            // 0 ends the copy.
            if (*source == 0) break;
        }
        *destination++ = map_byte<to_upper>(*source++);
    }
    *destination = 0;
}

} // namespace
} // namespace kxstr::letters

using kxstr::letters::map_string;

extern "C" {

KxChar *W6wstrlwr(KxChar *string) {
    return kxstr::simd::kernels().change_case16(kxstr::letters::lower_map(), string);
}

KxChar *W6wstrupr(KxChar *string) {
    return kxstr::simd::kernels().change_case16(kxstr::letters::upper_map(), string);
}

uint8_t *W6dstrlwr(uint8_t *stream) {
    return kxstr::letters::map_stream<kxstr::letters::to_lower>(stream);
}

uint8_t *W6dstrupr(uint8_t *stream) {
    return kxstr::letters::map_stream<kxstr::letters::to_upper>(stream);
}

uint8_t *W6dstrLowerCh(uint8_t *position) {
    return kxstr::letters::map_stream_char<kxstr::letters::to_lower>(position);
}

uint8_t *W6dstrUpperCh(uint8_t *position) {
    return kxstr::letters::map_stream_char<kxstr::letters::to_upper>(position);
}

uint16_t W6dstrLowerCh2(const uint8_t *position) {
    return kxstr::letters::to_lower(kxstr::forms::stream_char(position));
}

void s2upper(uint8_t *destination, const uint8_t *source) {
    kxstr::letters::copy_upper(destination, source);
}

void ws2upper(KxChar *destination, const KxChar *source) {
    if (destination == nullptr || source == nullptr) return;
    destination[map_string(kxstr::letters::upper_map(), source, destination)] = 0;
}

void ws2uppern(KxChar *destination, const KxChar *source, int32_t size) {
    if (size < 2) return;
    const std::size_t room = static_cast<std::uint32_t>(size) / sizeof(KxChar);
    const std::size_t length = map_string(kxstr::letters::upper_map(), source, destination, room);
    if (length < room) destination[length] = 0;
}
}
