// The decoders and encoders behind encodings.h.
#pragma once

#include "encodings.h"

namespace kx {

// Of the forms that the library converts texts of, from and to KX text of a page.
std::unique_ptr<Decoder> make_text_decoder(const KxTextForm &form, const CodePage &text_page, bool composes);
std::unique_ptr<Encoder> make_text_encoder(const CodePage &text_page, const KxTextForm &form);

// What a decoder of streams makes of a 0 where a code begins: nothing as the last byte of a file, else no code.
Decoder::Result end_of_stream(const Chunk &chunk, std::size_t at);

std::unique_ptr<Decoder> make_stream_decoder(bool with_codes);
std::unique_ptr<Encoder> make_stream_encoder(const CodePage &text_page, const CodePage &written_page);
std::unique_ptr<Decoder> make_stream5_decoder(const CodePage &text_page, bool with_codes);
std::unique_ptr<Encoder> make_stream5_encoder(const CodePage &text_page, const CodePage &written_page);
std::unique_ptr<Encoder> make_sio_encoder(const CodePage &text_page, const CodePage &written_page);

} // namespace kx
