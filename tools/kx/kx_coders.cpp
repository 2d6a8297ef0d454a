// KX text: 16-bit units, little-endian.
#include "coders.h"
#include "platform/bytes.h"

namespace kx {
namespace {

class KxDecoder final : public Decoder {
  public:
    Result decode(const Chunk &chunk, DecodedText &units) override {
        const std::size_t whole = chunk.bytes.size() / 2 * 2;
        for (std::size_t at = 0; at < whole; at += 2)
            units.add(kxstr::load_u16le(chunk.bytes.data() + at), at);
        return {whole, chunk.last ? chunk.bytes.size() - whole : 0};
    }
};

class KxEncoder final : public Encoder {
  public:
    KxEncoder(const CodePage &text_page, const CodePage &written_page)
        : same_page_(text_page == written_page),
          characters_([=](KxChar ch) { return kx_of_kx(written_page, text_page, ch); }) {}

    std::size_t encode(std::span<const KxChar> units, std::vector<std::uint8_t> &bytes) override {
        for (std::size_t at = 0; at < units.size(); ++at) {
            // A text keeps its units, whatever they are, when nothing needs to change.
            const KxChar ch = same_page_ ? units[at] : characters_[units[at]];
            if (ch == KX_NONE && !same_page_) return at;
            bytes.push_back(static_cast<std::uint8_t>(ch));
            bytes.push_back(static_cast<std::uint8_t>(ch >> 8));
        }
        return units.size();
    }

  private:
    bool same_page_;
    CharMap characters_;
};

} // namespace

std::unique_ptr<Decoder> make_kx_decoder() {
    return std::make_unique<KxDecoder>();
}

std::unique_ptr<Encoder> make_kx_encoder(const CodePage &text_page, const CodePage &written_page) {
    return std::make_unique<KxEncoder>(text_page, written_page);
}

} // namespace kx
