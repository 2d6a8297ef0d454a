#include "character_map.h"

#include "text/scalars.h"

namespace kx {
namespace {

using Bytes = std::span<const std::uint8_t>;
using kxstr::text::Mapped;

// Takes the first unit or native code from the bytes, as the library's conversion reads and writes it.
std::optional<std::uint16_t> take_unit(const Encoding &form, Bytes &bytes) {
    using kxstr::text::Scalar;
    Scalar one{Scalar::character, 1, bytes.empty() ? 0u : bytes[0]};
    if (form.kind == EncodingKind::code_page) {
        if (bytes.size() > 1 && kxstr::text::is_lead_byte(form.page, bytes[0]))
            one = {Scalar::character, 2, static_cast<std::uint32_t>(bytes[0] << 8 | bytes[1])};
    } else {
        const auto order = is_high_first(form) ? kxstr::text::ByteOrder::high_first : kxstr::text::ByteOrder::low_first;
        one = form.kind == EncodingKind::utf8 ? kxstr::text::read_utf8(bytes) : kxstr::text::read_utf16(bytes, order);
    }
    if (bytes.empty() || one.kind != Scalar::character || one.value >= KX_NONE) return std::nullopt;
    bytes = bytes.subspan(one.length);
    return static_cast<std::uint16_t>(one.value);
}

// What a map has for these bytes; none for those that it cannot hold.
Mapped mapped(const Encoding &form, Bytes bytes) {
    const auto first = take_unit(form, bytes);
    if (!first) return {};
    if (bytes.empty()) return {*first, 0};
    const auto second = take_unit(form, bytes);
    return second && *second != 0 && bytes.empty() ? Mapped{*first, *second} : Mapped{};
}

} // namespace

std::unique_ptr<CharacterMap> CharacterMap::make(const Encoding &from, const Encoding &to) {
    const auto source = text_form(from, {}), target = text_form(to, {});
    if (!source || !target || is_kx_encoding(from) || is_kx_encoding(to)) return nullptr;
    return std::unique_ptr<CharacterMap>(new CharacterMap(from, to, *source, *target));
}

CharacterMap::CharacterMap(const Encoding &from, const Encoding &to, const KxTextForm &source, const KxTextForm &target)
    : from_(from), to_(to), units_(kUnits) {
    KxTextPrepare(&converter_, &source, &target, 0);
    kxstr::text::set_map(converter_, units_.data());
}

std::size_t CharacterMap::convert(const Chunk &chunk, ByteBuffer &bytes, const Way &way) {
    constexpr std::size_t most = 6; // bytes of a byte, which may become two units
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
    Bytes rest = character;
    const auto unit = take_unit(from_, rest);
    if (!unit || !rest.empty() || known_[*unit]) return false;
    const auto add = [&](std::uint16_t read, Bytes bytes) {
        known_[read] = true;
        written_.clear();
        if (way(bytes, written_)) units_[read] = mapped(to_, written_);
    };
    if (from_.kind != EncodingKind::code_page || is_double_byte(from_.page)) {
        add(*unit, character);
        return units_[*unit].first != KX_NONE;
    }
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        const auto one = static_cast<std::uint8_t>(byte);
        add(one, {&one, 1});
    }
    kxstr::text::set_map(converter_, units_.data());
    return true; // if not this one, then others
}

} // namespace kx
