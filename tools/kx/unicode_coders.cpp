// UTF-8 and UTF-16. A U+FEFF that begins a file is the mark of its form and no text; elsewhere it is a character, one
// that KX text does not have. Nothing beyond U+FFFF has a KX character, but it is one character all the same.
#include <algorithm>

#include "coders.h"

namespace kx {
namespace {

constexpr std::uint32_t kByteOrderMark = 0xFEFF;

constexpr bool is_surrogate(std::uint32_t value) {
    return value >= 0xD800 && value <= 0xDFFF;
}
constexpr bool is_high_surrogate(std::uint32_t value) {
    return value >= 0xD800 && value <= 0xDBFF;
}
constexpr bool is_low_surrogate(std::uint32_t value) {
    return value >= 0xDC00 && value <= 0xDFFF;
}

// What stands at the start of some bytes.
struct Scalar {
    enum Kind { character, malformed, incomplete } kind;
    std::size_t length; // bytes
    std::uint32_t value;
};

// Malformed bytes are taken in the largest piece that could have begun a character, as the Unicode Standard recommends.
// Not written shorter, not a surrogate, not above U+10FFFF: the range of the second byte sees to that.
Scalar read_utf8(std::span<const std::uint8_t> bytes) {
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {Scalar::character, 1, first};
    if (first < 0xC2 || first > 0xF4) return {Scalar::malformed, 1, 0};
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    std::uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    std::uint32_t value = first & (0x7Fu >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if (at == bytes.size()) return {Scalar::incomplete, at, 0};
        if (bytes[at] < low || bytes[at] > high) return {Scalar::malformed, at, 0};
        value = (value << 6) | (bytes[at] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {Scalar::character, length, value};
}

template <ByteOrder Order> std::uint16_t load(const std::uint8_t *bytes) {
    const unsigned low = bytes[Order == ByteOrder::little ? 0 : 1];
    const unsigned high = bytes[Order == ByteOrder::little ? 1 : 0];
    return static_cast<std::uint16_t>(low | (high << 8));
}

template <ByteOrder Order> Scalar read_utf16(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 2) return {Scalar::incomplete, bytes.size(), 0};
    const std::uint16_t unit = load<Order>(bytes.data());
    if (!is_surrogate(unit)) return {Scalar::character, 2, unit};
    if (!is_high_surrogate(unit)) return {Scalar::malformed, 2, 0};
    if (bytes.size() < 4) return {Scalar::incomplete, 2, 0};
    const std::uint16_t next = load<Order>(bytes.data() + 2);
    if (!is_low_surrogate(next)) return {Scalar::malformed, 2, 0};
    return {Scalar::character, 4, 0x10000u + ((unit & 0x3FFu) << 10) + (next & 0x3FFu)};
}

template <ByteOrder Order> void write_utf16(std::uint16_t unit, std::vector<std::uint8_t> &bytes) {
    const auto low = static_cast<std::uint8_t>(unit);
    const auto high = static_cast<std::uint8_t>(unit >> 8);
    bytes.push_back(Order == ByteOrder::little ? low : high);
    bytes.push_back(Order == ByteOrder::little ? high : low);
}

// Decodes as far as all is plain: the bytes taken. What stops it is for Read to judge.
using BulkDecoder = std::size_t(std::span<const std::uint8_t> bytes, CharMap &characters, DecodedText &units);

std::size_t bulk_utf8(std::span<const std::uint8_t> bytes, CharMap &characters, DecodedText &units) {
    constexpr std::size_t block = 4096;
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::size_t size = std::min(block, bytes.size() - at);
        KxChar *const to = units.grow(size);
        const auto done = kxstr::simd::kernels().units_of_utf8(bytes.data() + at, size, to);
        const bool all = characters.translate({to, done.written}, to) == done.written;
        units.chars.resize(units.chars.size() - size + (all ? done.written : 0));
        if (all) at += done.read;
        // A character may lie across the end of a block.
        if (!all || done.read + 3 < block) break;
    }
    return at;
}

std::size_t bulk_none(std::span<const std::uint8_t>, CharMap &, DecodedText &) {
    return 0;
}

template <Scalar (*Read)(std::span<const std::uint8_t>), BulkDecoder *Bulk>
class UnicodeDecoder final : public Decoder {
  public:
    explicit UnicodeDecoder(const CodePage &text_page)
        : characters_([text_page](std::uint16_t unit) { return kx_of_unicode(text_page, unit); }) {}

    Result decode(const Chunk &chunk, DecodedText &units) override {
        std::size_t at = 0;
        while (at < chunk.bytes.size()) {
            // A mark can stand at the very start only.
            if (!units.placed && chunk.offset + at != 0) at += Bulk(chunk.bytes.subspan(at), characters_, units);
            if (at == chunk.bytes.size()) break;
            const Scalar scalar = Read(chunk.bytes.subspan(at));
            if (scalar.kind == Scalar::incomplete) return {at, chunk.last ? chunk.bytes.size() - at : 0};
            const bool mark = scalar.value == kByteOrderMark && chunk.offset + at == 0;
            if (!mark) {
                const KxChar ch = scalar.kind == Scalar::character ? convert(scalar.value) : KX_NONE;
                if (ch == KX_NONE) return {at, scalar.length};
                units.add(ch, at);
            }
            at += scalar.length;
        }
        return {at, 0};
    }

  private:
    KxChar convert(std::uint32_t value) {
        return value <= 0xFFFF ? characters_[static_cast<std::uint16_t>(value)] : KX_NONE;
    }

    CharMap characters_;
};

class Utf8Encoder final : public Encoder {
  public:
    explicit Utf8Encoder(const CodePage &text_page)
        : units_([text_page](KxChar ch) { return unicode_of_kx(text_page, ch); }) {}

    std::size_t encode(std::span<const KxChar> units, std::vector<std::uint8_t> &bytes) override {
        translated_.resize(units.size());
        const std::size_t done = units_.translate(units, translated_.data());
        return done - append(kxstr::simd::kernels().utf8_of_units, std::span(translated_).first(done), 3, bytes);
    }

  private:
    CharMap units_;
    std::vector<std::uint16_t> translated_;
};

template <ByteOrder Order> class Utf16Encoder final : public Encoder {
  public:
    explicit Utf16Encoder(const CodePage &text_page)
        : units_([text_page](KxChar ch) { return unicode_of_kx(text_page, ch); }) {}

    std::size_t encode(std::span<const KxChar> units, std::vector<std::uint8_t> &bytes) override {
        for (std::size_t at = 0; at < units.size(); ++at) {
            const std::uint16_t unit = units_[units[at]];
            if (unit == KX_NONE || is_surrogate(unit)) return at;
            write_utf16<Order>(unit, bytes);
        }
        return units.size();
    }

  private:
    CharMap units_;
};

} // namespace

std::unique_ptr<Decoder> make_utf8_decoder(const CodePage &text_page) {
    return std::make_unique<UnicodeDecoder<read_utf8, bulk_utf8>>(text_page);
}

std::unique_ptr<Encoder> make_utf8_encoder(const CodePage &text_page) {
    return std::make_unique<Utf8Encoder>(text_page);
}

std::unique_ptr<Decoder> make_utf16_decoder(ByteOrder order, const CodePage &text_page) {
    if (order == ByteOrder::little)
        return std::make_unique<UnicodeDecoder<read_utf16<ByteOrder::little>, bulk_none>>(text_page);
    return std::make_unique<UnicodeDecoder<read_utf16<ByteOrder::big>, bulk_none>>(text_page);
}

std::unique_ptr<Encoder> make_utf16_encoder(ByteOrder order, const CodePage &text_page) {
    if (order == ByteOrder::little) return std::make_unique<Utf16Encoder<ByteOrder::little>>(text_page);
    return std::make_unique<Utf16Encoder<ByteOrder::big>>(text_page);
}

} // namespace kx
