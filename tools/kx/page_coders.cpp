// Native code pages, single-byte and double-byte.
#include <array>

#include "coders.h"

namespace kx {
namespace {

// The lowest byte that can follow a lead byte. A lower one (a line end, a space, a digit) is a character of its own, so
// that a stray lead byte does not take it along.
constexpr std::uint8_t kFirstTrailByte = 0x40;

class PageDecoder final : public Decoder {
  public:
    explicit PageDecoder(const Page &page)
        : characters_([page](std::uint16_t code) { return kx_of_code(page, code); }) {
        for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
            is_lead_[byte] = is_lead_byte(page, static_cast<std::uint8_t>(byte));
    }

    Result decode(const Chunk &chunk, Units &units) override {
        const std::span<const std::uint8_t> bytes = chunk.bytes;
        std::size_t at = 0;
        while (at < bytes.size()) {
            const std::size_t length = is_lead_[bytes[at]] ? 2 : 1;
            if (length > bytes.size() - at) return {at, chunk.last ? std::size_t{1} : 0};
            const auto code = static_cast<std::uint16_t>(length == 1 ? bytes[at] : (bytes[at] << 8) | bytes[at + 1]);
            const KxChar ch = characters_[code];
            if (ch == KX_NONE) return {at, length == 2 && bytes[at + 1] < kFirstTrailByte ? 1 : length};
            units.add(ch, at);
            at += length;
        }
        return {at, 0};
    }

  private:
    CharMap characters_;
    std::array<bool, 256> is_lead_{};
};

class PageEncoder final : public Encoder {
  public:
    PageEncoder(const Page &page, const Page &text_page)
        : codes_([page, text_page](KxChar ch) { return code_of_kx(page, text_page, ch); }) {}

    std::size_t encode(std::span<const KxChar> units, std::vector<std::uint8_t> &bytes) override {
        for (std::size_t at = 0; at < units.size(); ++at) {
            const std::uint16_t code = codes_[units[at]];
            if (code == KX_NONE) return at;
            if (code > 0xFF) bytes.push_back(static_cast<std::uint8_t>(code >> 8));
            bytes.push_back(static_cast<std::uint8_t>(code));
        }
        return units.size();
    }

  private:
    CharMap codes_;
};

} // namespace

std::unique_ptr<Decoder> make_page_decoder(const Page &page) {
    return std::make_unique<PageDecoder>(page);
}

std::unique_ptr<Encoder> make_page_encoder(const Page &page, const Page &text_page) {
    return std::make_unique<PageEncoder>(page, text_page);
}

} // namespace kx
