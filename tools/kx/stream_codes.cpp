#include "stream_codes.h"

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

} // namespace kx
