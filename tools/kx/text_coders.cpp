// Code pages, Unicode and KX text by the library's conversion of texts, with KX text on the other side.
#include <kxstr/text.h>

#include "coders.h"
#include "text/converter.h"

namespace kx {
namespace {

// One converter of the library, from one form to another.
class Conversion {
  public:
    Conversion(const KxTextForm &from, const KxTextForm &to, bool composes = true) {
        KxTextPrepare(&converter_, &from, &to, 0);
        if (!composes) kxstr::text::keep_marks_apart(converter_);
    }

    KxTextResult convert(std::span<const std::uint8_t> source, bool last, void *to, std::size_t room) {
        KxTextResult result;
        KxTextConvert(&converter_, source.data(), source.size(), last ? 1 : 0, to, room, &result);
        return result;
    }
    std::size_t size_of_first(std::span<const std::uint8_t> source) const {
        return kxstr::text::size_of_first(converter_, source);
    }

  private:
    KxTextConverter converter_;
};

KxTextForm kx_text(const CodePage &page) {
    return {KX_TEXT_KX, page.kx_number, nullptr};
}

class TextDecoder final : public Decoder {
  public:
    TextDecoder(const KxTextForm &form, const CodePage &text_page, bool composes)
        : form_(form.form), conversion_(form, kx_text(text_page), composes) {}

    Result decode(const Chunk &chunk, DecodedText &units) override {
        const std::size_t mark = chunk.offset == 0 ? KxTextMark(form_, chunk.bytes.data(), chunk.bytes.size()) : 0;
        const auto source = chunk.bytes.subspan(mark);
        KxChar *const to = units.grow(source.size());
        const KxTextResult done = conversion_.convert(source, chunk.last, to, source.size() * sizeof(KxChar));
        const std::size_t count = done.written / sizeof(KxChar);
        units.chars.resize(units.chars.size() - source.size() + count);
        std::size_t at = 0;
        for (std::size_t i = 0; units.placed && i < count; ++i) {
            units.places.push_back(static_cast<std::uint32_t>(mark + at));
            at += conversion_.size_of_first(source.subspan(at));
        }
        const bool waits = !chunk.last && done.fault == source.size() - done.read;
        return {mark + done.read, waits ? 0 : done.fault};
    }

  private:
    std::uint32_t form_;
    Conversion conversion_;
};

class TextEncoder final : public Encoder {
  public:
    TextEncoder(const CodePage &text_page, const KxTextForm &form) : conversion_(kx_text(text_page), form) {}

    std::size_t encode(std::span<const KxChar> units, ByteBuffer &bytes) override {
        constexpr std::size_t most = 3; // bytes of a unit
        const std::size_t size = bytes.size();
        bytes.resize(size + most * units.size());
        const KxTextResult done =
            conversion_.convert({reinterpret_cast<const std::uint8_t *>(units.data()), units.size_bytes()}, true,
                                bytes.data() + size, most * units.size());
        bytes.resize(size + done.written);
        return done.read / sizeof(KxChar);
    }

  private:
    Conversion conversion_;
};

} // namespace

std::unique_ptr<Decoder> make_text_decoder(const KxTextForm &form, const CodePage &text_page, bool composes) {
    return std::make_unique<TextDecoder>(form, text_page, composes);
}

std::unique_ptr<Encoder> make_text_encoder(const CodePage &text_page, const KxTextForm &form) {
    return std::make_unique<TextEncoder>(text_page, form);
}

} // namespace kx
