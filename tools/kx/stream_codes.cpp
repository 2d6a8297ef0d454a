#include "stream_codes.h"

#include <algorithm>
#include <array>
#include <kxstr/text.h>

#include "forms/code_size.h"
#include "forms/strip.h"

namespace kx {
namespace {

namespace forms = kxstr::forms;

// By KX_STREAM_SOUND and so on.
constexpr std::array<const char *, 5> kFaults{nullptr, "runs past the end", "has no room for its ends", "is not closed",
                                              "ends with another size"};

// Beside the units in the tables of a decoder.
constexpr std::int32_t kNothing = -1;
constexpr std::int32_t kNotTold = -2;

} // namespace

std::optional<StreamCode> stream_code(const Chunk &chunk, std::size_t at) {
    KxStreamCode code;
    KxStreamNext(chunk.bytes.data() + at, chunk.bytes.size() - at, &code);
    if (code.fault == KX_STREAM_CUT_OFF && !chunk.last) return std::nullopt;
    return StreamCode{code.size, kFaults[code.fault]};
}

std::optional<KxChar> unit_of_stream_code(std::span<const std::uint8_t> bytes, bool with_codes) {
    const std::uint8_t first = bytes[0];
    if (with_codes && (first == forms::kFirstHyphenCode || first == forms::kSecondHyphenCode)) return KxChar{first};
    KxStreamCode code;
    KxStreamNext(bytes.data(), bytes.size(), &code);
    const bool is_told = code.kind == KX_STREAM_TEXT || (code.kind == KX_STREAM_ATTRIBUTE && with_codes);
    if (!is_told || (code.character == KX_NONE && first != forms::kExtended)) return std::nullopt;
    return code.character;
}

std::int32_t CodeDecoder::told_by(std::span<const std::uint8_t> code) {
    const auto unit = unit_of(code);
    return unit ? std::int32_t{*unit} : kNothing;
}

std::int32_t CodeDecoder::unit_of_extended(std::span<const std::uint8_t> code) {
    if (units_of_extended_.empty()) units_of_extended_.assign(0x10000, kNotTold);
    std::int32_t &unit = units_of_extended_[code[1] | static_cast<std::size_t>(code[2]) << 8];
    if (unit == kNotTold) unit = told_by(code);
    return unit;
}

Decoder::Result CodeDecoder::decode(const Chunk &chunk, DecodedText &units) {
    if (units_of_bytes_.empty()) {
        units_of_bytes_.assign(0x100, kNotTold);
        for (unsigned byte = 1; byte < 0x100; ++byte) {
            const auto code = static_cast<std::uint8_t>(byte);
            if (!forms::is_group(code) && !forms::is_fixed(code)) units_of_bytes_[byte] = told_by({&code, 1});
        }
    }
    const std::span<const std::uint8_t> bytes = chunk.bytes;
    KxChar *to = units.grow(bytes.size());
    Result result{bytes.size(), 0};
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t size = 1;
        std::int32_t unit = units_of_bytes_[bytes[at]];
        if (unit == kNotTold) {
            if (bytes[at] == forms::kExtended && bytes.size() - at > 3 && bytes[at + 3] == forms::kExtended) {
                size = 4;
                unit = unit_of_extended(bytes.subspan(at, size));
            } else if (bytes[at] == 0) {
                result = end_of_stream(chunk, at);
                break;
            } else {
                const auto code = stream_code(chunk, at);
                if (!code || code->fault != nullptr) {
                    result = {at, code ? std::size_t{1} : 0};
                    break;
                }
                size = code->size;
                unit = told_by(bytes.subspan(at, size));
            }
        }
        if (unit != kNothing) {
            *to++ = static_cast<KxChar>(unit);
            if (units.placed) units.places.push_back(static_cast<std::uint32_t>(at));
        }
        at += size;
    }
    units.chars.resize(static_cast<std::size_t>(to - units.chars.data()));
    return result;
}

} // namespace kx
