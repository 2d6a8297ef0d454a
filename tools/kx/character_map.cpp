#include "character_map.h"

#include "text/converter.h"
#include "text/scalars.h"

namespace kx {
namespace {

using Bytes = std::span<const std::uint8_t>;

// The unit or native code that the bytes are, as the library's conversion reads and writes it.
std::optional<std::uint16_t> unit_of(const Encoding &form, Bytes bytes) {
    using kxstr::text::Scalar;
    if (form.kind == EncodingKind::code_page) {
        if (bytes.size() == 1) return bytes[0];
        if (bytes.size() != 2 || bytes[0] == 0) return std::nullopt;
        return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    }
    const auto order = is_high_first(form) ? kxstr::text::ByteOrder::high_first : kxstr::text::ByteOrder::low_first;
    const Scalar one =
        form.kind == EncodingKind::utf8 ? kxstr::text::read_utf8(bytes) : kxstr::text::read_utf16(bytes, order);
    const bool is_unit = one.kind == Scalar::character && one.length == bytes.size() && one.value <= 0xFFFF;
    return is_unit ? std::optional(static_cast<std::uint16_t>(one.value)) : std::nullopt;
}

} // namespace

std::unique_ptr<CharacterMap> CharacterMap::make(const Encoding &from, const Encoding &to) {
    const auto source = text_form(from, {}), target = text_form(to, {});
    if (!source || !target || is_kx_encoding(from) || is_kx_encoding(to)) return nullptr;
    return std::unique_ptr<CharacterMap>(new CharacterMap(from, to, *source, *target));
}

CharacterMap::CharacterMap(const Encoding &from, const Encoding &to, const KxTextForm &source, const KxTextForm &target)
    : from_(from), to_(to), units_(known_.size(), KX_NONE) {
    KxTextPrepare(&converter_, &source, &target, 0);
    kxstr::text::set_map(converter_, units_.data());
}

std::size_t CharacterMap::convert(const Chunk &chunk, ByteBuffer &bytes, const Way &way) {
    constexpr std::size_t most = 3; // bytes of a byte
    for (std::size_t done = 0;;) {
        const Bytes rest = chunk.bytes.subspan(done);
        const std::size_t size = bytes.size();
        bytes.resize(size + most * rest.size());
        KxTextResult result;
        const std::uint32_t status = KxTextConvert(&converter_, rest.data(), rest.size(), chunk.last ? 1 : 0,
                                                   bytes.data() + size, most * rest.size(), &result);
        bytes.resize(size + result.written);
        done += result.read;
        // A byte that the map says nothing about is none of a single-byte page.
        const bool is_fault = status == KX_TEXT_NO_EQUIVALENT || status == KX_TEXT_MALFORMED;
        if (!is_fault || !learn(rest.subspan(result.read, result.fault), way)) return done;
    }
}

// Whether the character goes by the map now and did not before.
bool CharacterMap::learn(Bytes character, const Way &way) {
    const auto unit = unit_of(from_, character);
    if (!unit || known_[*unit]) return false;
    const auto add = [&](std::uint16_t unit_read, Bytes bytes) {
        known_[unit_read] = true;
        written_.clear();
        if (way(bytes, written_)) units_[unit_read] = unit_of(to_, written_).value_or(KX_NONE);
    };
    if (from_.kind == EncodingKind::code_page && !is_double_byte(from_.page)) {
        for (unsigned byte = 0; byte <= 0xFF; ++byte) {
            const auto one = static_cast<std::uint8_t>(byte);
            add(one, {&one, 1});
        }
        kxstr::text::set_map(converter_, units_.data());
    } else {
        add(*unit, character);
    }
    return units_[*unit] != KX_NONE;
}

} // namespace kx
