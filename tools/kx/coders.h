// The decoders and encoders behind encodings.h.
#pragma once

#include "encodings.h"
#include "simd/kernels.h"

namespace kx {

// Appends what a kernel makes of the units, at most `most` bytes of each. Returns how many units it left.
inline std::size_t append(kxstr::simd::Utf8OfUnits *kernel, std::span<const std::uint16_t> units, std::size_t most,
                          std::vector<std::uint8_t> &bytes) {
    const std::size_t size = bytes.size();
    bytes.resize(size + most * units.size());
    const kxstr::simd::Progress done = kernel(units.data(), units.size(), bytes.data() + size);
    bytes.resize(size + done.written);
    return units.size() - done.read;
}

std::unique_ptr<Decoder> make_page_decoder(const CodePage &page);
std::unique_ptr<Encoder> make_page_encoder(const CodePage &page, const CodePage &text_page);

std::unique_ptr<Decoder> make_utf8_decoder(const CodePage &text_page);
std::unique_ptr<Encoder> make_utf8_encoder(const CodePage &text_page);

enum class ByteOrder { little, big };
std::unique_ptr<Decoder> make_utf16_decoder(ByteOrder order, const CodePage &text_page);
std::unique_ptr<Encoder> make_utf16_encoder(ByteOrder order, const CodePage &text_page);

std::unique_ptr<Decoder> make_kx_decoder();
std::unique_ptr<Encoder> make_kx_encoder(const CodePage &text_page, const CodePage &written_page);

// What a decoder of streams makes of a 0 where a code begins: nothing as the last byte of a file, else no code.
Decoder::Result end_of_stream(const Chunk &chunk, std::size_t at);

std::unique_ptr<Decoder> make_stream_decoder(bool with_codes);
std::unique_ptr<Encoder> make_stream_encoder(const CodePage &text_page, const CodePage &written_page);
std::unique_ptr<Decoder> make_stream5_decoder(const CodePage &text_page, bool with_codes);
std::unique_ptr<Encoder> make_stream5_encoder(const CodePage &text_page, const CodePage &written_page);
std::unique_ptr<Encoder> make_sio_encoder(const CodePage &text_page, const CodePage &written_page);

} // namespace kx
