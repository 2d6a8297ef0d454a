// Document streams of both generations, and sio text. A stream has no terminator here: a file ends by itself. One at
// the very end is skipped.
#include <algorithm>
#include <array>
#include <kxstr/forms.h>
#include <kxstr/text.h>

#include "codepage/country.h"
#include "coders.h"
#include "forms/code_size.h"
#include "forms/kx5_stream.h"
#include "forms/sio.h"
#include "forms/strip.h"
#include "platform/bytes.h"
#include "stream_codes.h"

namespace kx {
namespace {

namespace forms = kxstr::forms;

using kxstr::index_of;
using kxstr::set_of;

} // namespace

Decoder::Result end_of_stream(const Chunk &chunk, std::size_t at) {
    if (at + 1 < chunk.bytes.size()) return {at, 1};
    return chunk.last ? Decoder::Result{at + 1, 0} : Decoder::Result{at, 0};
}

namespace {

class StreamDecoder final : public CodeDecoder {
  public:
    explicit StreamDecoder(bool with_codes) : with_codes_(with_codes) {}

  private:
    std::optional<KxChar> unit_of(std::span<const std::uint8_t> code) override {
        return unit_of_stream_code(code, with_codes_);
    }

    bool with_codes_;
};

// ---- KX 5 ----

// KX 5 numbers half-width katakana in one way in Japan and in another elsewhere. The library asks for the country once.
void set_country_of(const CodePage &page) {
    using namespace kxstr::codepage;
    if (country_of_code_page(page.windows_number) == kJapanese) kx::set_country(kJapanese);
}

// Reads a KX 5 stream as a system of the text's code page does: on double-byte systems characters come in pairs, and
// Chinese ones by rules of their own.
class Stream5Decoder final : public Decoder {
  public:
    Stream5Decoder(const CodePage &text_page, bool with_codes) : page_(text_page), with_codes_(with_codes) {
        set_country_of(page_);
    }

    Result decode(const Chunk &chunk, DecodedText &units) override {
        std::size_t at = 0;
        while (at < chunk.bytes.size()) {
            if (chunk.bytes[at] == 0) return end_of_stream(chunk, at);
            const std::span<const std::uint8_t> rest = chunk.bytes.subspan(at);
            const std::size_t size = size_of(rest);
            if (size > rest.size()) return {at, chunk.last ? std::size_t{1} : 0};
            if (!is_sound(rest.first(size))) return {at, 1};
            convert(rest.first(size), at, units);
            at += size;
        }
        return {chunk.bytes.size(), 0};
    }

    std::size_t length(const Chunk &chunk, std::size_t place, std::size_t) const override {
        return size_of(chunk.bytes.subspan(place));
    }

  private:
    std::size_t size_of(std::span<const std::uint8_t> rest) const {
        const std::uint8_t first = rest[0];
        if (first >= forms::kFirstGroup5) {
            return forms::kGroupHeaderSize5 +
                   (rest.size() < forms::kGroupHeaderSize5 ? 0 : kxstr::load_u16le(&rest[2]));
        }
        if (first == forms::kExtended5) return forms::kExtendedSize5;
        if (is_attribute(first)) return forms::kAttributeSize5;
        return is_double_byte(page_) && forms::kFirstRow5 <= first && first <= forms::kLastRow5 ? forms::kPairSize5 : 1;
    }

    static forms::Kx5Text text_of(const CodePage &page) {
        switch (page.windows_number) {
        case 936: return forms::Kx5Text::simplified_pairs;
        case 950: return forms::Kx5Text::traditional_pairs;
        default: return is_double_byte(page) ? forms::Kx5Text::pairs : forms::Kx5Text::bytes;
        }
    }

    static bool is_sound(std::span<const std::uint8_t> code) {
        const std::uint8_t first = code[0];
        if (first == forms::kExtended5 || is_attribute(first)) return code.back() == first;
        return code.size() != forms::kPairSize5 || code[1] != 0;
    }

    void convert(std::span<const std::uint8_t> code, std::size_t at, DecodedText &units) const {
        if (code[0] >= forms::kFirstGroup5 || (is_attribute(code[0]) && !with_codes_)) return;
        std::array<std::uint8_t, 5> stream{};
        std::copy(code.begin(), code.end(), stream.begin());
        std::array<KxChar, 2> text{};
        forms::read_stream5(stream.data(), text.data(), sizeof text, text_of(page_));
        const KxChar ch = text[0];
        if (ch == 0) return;
        std::array<KxChar, 2> renumbered{ch};
        const std::uint32_t count = kxstr::is_code(ch) ? 1 : WtpiKX5toKX6(ch, &renumbered[0], &renumbered[1]);
        for (std::uint32_t i = 0; i < count; ++i)
            units.add(renumbered[i], at);
    }

    static constexpr bool is_attribute(std::uint8_t first) {
        return first == forms::kAttributeOn5 || first == forms::kAttributeOff5;
    }

    CodePage page_;
    bool with_codes_;
};

// ---- Writing ----

void put(ByteBuffer &bytes, std::initializer_list<unsigned> values) {
    for (const unsigned value : values)
        bytes.push_back(static_cast<std::uint8_t>(value));
}

constexpr bool is_attribute_off(KxChar ch) {
    return (ch & 1) != 0;
}

// The three write one unit each, or nothing and false when their form lacks it.

bool write_stream(KxChar ch, const CodePage &, ByteBuffer &bytes) {
    const unsigned index = index_of(ch), set = set_of(ch);
    if (ch == KX_LINE_FEED) {
        put(bytes, {forms::kHardLineEnd});
    } else if (ch == KX_CARRIAGE_RETURN) {
        put(bytes, {forms::kSoftLineEnd});
    } else if (forms::is_attribute(ch)) {
        const unsigned code = is_attribute_off(ch) ? forms::kAttributeOff : forms::kAttributeOn;
        put(bytes, {code, index / 2, code});
    } else if ((0 < ch && ch < forms::kFirstFunctionCode) || ch == forms::kFirstHyphenCode ||
               ch == forms::kSecondHyphenCode) {
        put(bytes, {index});
    } else if (ch != 0 && (!kxstr::is_code(ch) || ch == KX_TAB || ch == KX_FORM_FEED)) {
        put(bytes, {forms::kExtended, index, set, forms::kExtended});
    } else {
        return false;
    }
    return true;
}

bool write_stream5(KxChar ch, const CodePage &page, ByteBuffer &bytes) {
    const unsigned index = index_of(ch), set = set_of(ch);
    if (ch == KX_LINE_FEED || ch == KX_FORM_FEED || ch == KX_CARRIAGE_RETURN) {
        put(bytes, {index});
    } else if (ch == KX_TAB) {
        put(bytes, {forms::kExtended5, index, set, forms::kExtended5});
    } else if (forms::is_attribute(ch)) {
        const unsigned code = is_attribute_off(ch) ? forms::kAttributeOff5 : forms::kAttributeOn5;
        put(bytes, {code, index / 2, code});
    } else {
        const auto renumbered = static_cast<KxChar>(kxstr::is_code(ch) ? KX_NONE : WtpiKX6toKX5(ch));
        if (renumbered == KX_NONE) return false;
        if (set_of(renumbered) == kxstr::kAsciiSet) {
            // The library reads no other byte of set 0 back, and writes no pairs.
            if (index < ' ' || index > forms::kLastRow5) return false;
            if (is_double_byte(page) && index != ' ') put(bytes, {forms::kFirstRow5});
        }
        const KxChar text[]{renumbered, 0};
        std::array<std::uint8_t, 8> stream{};
        WwzTo5dz(text, stream.data(), stream.size());
        const std::size_t size = stream[0] == forms::kExtended5 ? forms::kExtendedSize5 : 1;
        bytes.insert(bytes.end(), stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
    }
    return true;
}

bool write_sio(KxChar ch, const CodePage &, ByteBuffer &bytes) {
    constexpr std::uint32_t flags =
        KX_KEEP_ATTRIBUTES | KX_KEEP_HARD_ENDS | KX_KEEP_SOFT_ENDS | KX_HYPHENS_AS_TEXT | KX_KEEP_TABS;
    const KxChar text[]{ch, 0};
    std::array<std::uint8_t, 8> sio{};
    std::size_t size = forms::string_to_sio(sio.data(), text, sio.size(), flags, kDoubleByteSystem);
    // An attribute counts as three, though it may have one or two bytes.
    if (forms::is_attribute(ch) && size == 3) size = 2;
    bytes.insert(bytes.end(), sio.begin(), sio.begin() + static_cast<std::ptrdiff_t>(size));
    return size != 0;
}

class StreamEncoder final : public Encoder {
  public:
    using Write = bool(KxChar ch, const CodePage &page, ByteBuffer &bytes);

    StreamEncoder(Write *write, const CodePage &text_page, const CodePage &written_page)
        : write_(write), written_page_(written_page) {
        const KxTextForm from{KX_TEXT_KX, text_page.kx_number, nullptr};
        const KxTextForm to{KX_TEXT_KX, written_page.kx_number, nullptr};
        KxTextPrepare(&characters_, &from, &to, 0);
    }

    std::size_t encode(std::span<const KxChar> units, ByteBuffer &bytes) override {
        std::array<KxChar, 256> written;
        for (std::size_t at = 0; at < units.size();) {
            KxTextResult done;
            const std::size_t count = std::min(units.size() - at, written.size());
            KxTextConvert(&characters_, &units[at], count * sizeof(KxChar), 1, written.data(), sizeof written, &done);
            for (const KxChar ch : std::span(written).first(done.written / sizeof(KxChar))) {
                if (!write_(ch, written_page_, bytes)) return at;
                ++at;
            }
            if (done.fault != 0) return at;
        }
        return units.size();
    }

  private:
    Write *write_;
    CodePage written_page_;
    KxTextConverter characters_;
};

} // namespace

std::unique_ptr<Decoder> make_stream_decoder(bool with_codes) {
    return std::make_unique<StreamDecoder>(with_codes);
}

std::unique_ptr<Decoder> make_stream5_decoder(const CodePage &text_page, bool with_codes) {
    return std::make_unique<Stream5Decoder>(text_page, with_codes);
}

std::unique_ptr<Encoder> make_stream_encoder(const CodePage &text_page, const CodePage &written_page) {
    return std::make_unique<StreamEncoder>(write_stream, text_page, written_page);
}

std::unique_ptr<Encoder> make_stream5_encoder(const CodePage &text_page, const CodePage &written_page) {
    set_country_of(written_page);
    return std::make_unique<StreamEncoder>(write_stream5, text_page, written_page);
}

std::unique_ptr<Encoder> make_sio_encoder(const CodePage &text_page, const CodePage &written_page) {
    return std::make_unique<StreamEncoder>(write_sio, text_page, written_page);
}

} // namespace kx
