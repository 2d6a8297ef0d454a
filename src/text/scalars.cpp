#include "text/scalars.h"

#include "platform/utf8.h"

namespace kxstr::text {

Scalar read_utf8(std::span<const std::uint8_t> bytes) noexcept {
    const Utf8Sequence sequence = kxstr::read_utf8(bytes);
    constexpr Scalar::Kind kinds[] = {Scalar::character, Scalar::malformed, Scalar::incomplete};
    static_assert(Utf8Sequence::character == 0 && Utf8Sequence::malformed == 1 && Utf8Sequence::incomplete == 2);
    return {kinds[sequence.kind], sequence.length, sequence.code_point};
}

Scalar read_utf16(std::span<const std::uint8_t> bytes, ByteOrder order) noexcept {
    if (bytes.size() < 2) return {Scalar::incomplete, bytes.size(), 0};
    const std::uint16_t unit = load_unit(bytes.data(), order);
    if (!is_surrogate(unit)) return {Scalar::character, 2, unit};
    if (!is_first_half(unit)) return {Scalar::malformed, 2, 0};
    if (bytes.size() < 4) return {Scalar::incomplete, bytes.size(), 0};
    const std::uint16_t next = load_unit(bytes.data() + 2, order);
    if (!is_second_half(next)) return {Scalar::malformed, 2, 0};
    return {Scalar::character, 4, join_halves(unit, next)};
}

std::size_t write_utf8(std::uint32_t character, std::uint8_t *bytes) noexcept {
    return kxstr::write_utf8(character, bytes);
}

std::size_t write_utf16(std::uint32_t character, std::uint8_t *bytes, ByteOrder order) noexcept {
    if (character < kFirstOfPairs) {
        store_unit(static_cast<std::uint16_t>(character), bytes, order);
        return 2;
    }
    store_unit(first_half(character), bytes, order);
    store_unit(second_half(character), bytes + 2, order);
    return 4;
}

} // namespace kxstr::text
