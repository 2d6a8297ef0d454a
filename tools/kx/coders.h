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

} // namespace kx
