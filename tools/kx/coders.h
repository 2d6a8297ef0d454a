// The decoders and encoders behind forms.h.
#pragma once

#include "forms.h"

namespace kx {

std::unique_ptr<Decoder> make_page_decoder(const Page &page);
std::unique_ptr<Encoder> make_page_encoder(const Page &page, const Page &text_page);

std::unique_ptr<Decoder> make_utf8_decoder(const Page &text_page);
std::unique_ptr<Encoder> make_utf8_encoder(const Page &text_page);

enum class ByteOrder { little, big };
std::unique_ptr<Decoder> make_utf16_decoder(ByteOrder order, const Page &text_page);
std::unique_ptr<Encoder> make_utf16_encoder(ByteOrder order, const Page &text_page);

std::unique_ptr<Decoder> make_kx_decoder();
std::unique_ptr<Encoder> make_kx_encoder(const Page &text_page, const Page &written_page);

// What a decoder of streams makes of a 0 where a code begins: nothing as the last byte of a file, else no code.
Decoder::Result end_of_stream(const Chunk &chunk, std::size_t at);

std::unique_ptr<Decoder> make_stream_decoder(bool with_codes);
std::unique_ptr<Encoder> make_stream_encoder(const Page &text_page, const Page &written_page);
std::unique_ptr<Decoder> make_stream5_decoder(const Page &text_page, bool with_codes);
std::unique_ptr<Encoder> make_stream5_encoder(const Page &text_page, const Page &written_page);
std::unique_ptr<Encoder> make_sio_encoder(const Page &text_page, const Page &written_page);

} // namespace kx
