// Native code pages, single-byte and double-byte.
#include <array>

#include "coders.h"
#include "simd/kernels.h"

namespace kx {
namespace {

// The lowest byte that can follow a lead byte. A lower one (a line end, a space, a digit) is a character of its own, so
// that a stray lead byte does not take it along.
constexpr std::uint8_t kFirstTrailByte = 0x40;

class PageDecoder final : public Decoder {
  public:
    explicit PageDecoder(const CodePage &page)
        : characters_([page](std::uint16_t code) { return kx_of_code(page, code); }),
          double_byte_(is_double_byte(page)) {
        for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
            is_lead_[byte] = is_lead_byte(page, static_cast<std::uint8_t>(byte));
    }

    Result decode(const Chunk &chunk, DecodedText &units) override {
        const std::span<const std::uint8_t> bytes = chunk.bytes;
        if (!double_byte_ && !units.placed) return decode_bytes(bytes, units);
        const kxstr::simd::MapPage &singles = characters_.page(0);
        KxChar *const begin = units.placed ? nullptr : units.grow(bytes.size());
        KxChar *to = begin;
        std::size_t at = 0;
        Result result{bytes.size(), 0};
        while (at < bytes.size()) {
            const std::uint8_t byte = bytes[at];
            const std::size_t length = is_lead_[byte] ? 2 : 1;
            if (length > bytes.size() - at) {
                result = {at, chunk.last ? std::size_t{1} : 0};
                break;
            }
            const KxChar ch = length == 1 ? singles[byte] : characters_.page(byte)[bytes[at + 1]];
            if (ch == KX_NONE) {
                result = {at, length == 2 && bytes[at + 1] < kFirstTrailByte ? 1 : length};
                break;
            }
            if (to != nullptr) {
                *to++ = ch;
            } else {
                units.add(ch, at);
            }
            at += length;
        }
        if (begin != nullptr)
            units.chars.resize(units.chars.size() - bytes.size() + static_cast<std::size_t>(to - begin));
        return result;
    }

  private:
    Result decode_bytes(std::span<const std::uint8_t> bytes, DecodedText &units) {
        KxChar *const to = units.grow(bytes.size());
        const std::size_t done = kxstr::simd::kernels().translate8(bytes.data(), bytes.size(), to, characters_.page(0));
        units.chars.resize(units.chars.size() - (bytes.size() - done));
        return {done, done < bytes.size() ? std::size_t{1} : 0};
    }

    CharMap characters_;
    std::array<bool, 256> is_lead_{};
    bool double_byte_;
};

class PageEncoder final : public Encoder {
  public:
    PageEncoder(const CodePage &page, const CodePage &text_page)
        : codes_([page, text_page](KxChar ch) { return code_of_kx(page, text_page, ch); }) {}

    std::size_t encode(std::span<const KxChar> units, std::vector<std::uint8_t> &bytes) override {
        translated_.resize(units.size());
        const std::size_t done = codes_.translate(units, translated_.data());
        return done - append(kxstr::simd::kernels().bytes_of_codes, std::span(translated_).first(done), 2, bytes);
    }

  private:
    CharMap codes_;
    std::vector<std::uint16_t> translated_;
};

} // namespace

std::unique_ptr<Decoder> make_page_decoder(const CodePage &page) {
    return std::make_unique<PageDecoder>(page);
}

std::unique_ptr<Encoder> make_page_encoder(const CodePage &page, const CodePage &text_page) {
    return std::make_unique<PageEncoder>(page, text_page);
}

} // namespace kx
