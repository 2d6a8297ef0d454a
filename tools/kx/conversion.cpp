#include "conversion.h"

#include <algorithm>
#include <cstdio>

#include "command.h"
#include "files.h"

namespace kx {
namespace {

class Conversion {
  public:
    Conversion(const char *command, const TextRequest &request, const TextPages &pages, const Transform *transform,
               std::span<const std::uint8_t> substitute, Output &output, std::unique_ptr<Decoder> decoder,
               std::unique_ptr<Converter> converter)
        : command_(command),
          request_(request),
          transform_(transform),
          substitute_(substitute),
          output_(output),
          decoder_(std::move(decoder)),
          encoder_(make_encoder(*request.to, pages.text, pages.written)),
          converter_(std::move(converter)) {}

    // False when the work must end; the reason has been told then.
    bool run(Input &input) {
        if (converter_) return run_directly(input);
        Progress progress(input);
        for (;;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            bytes_.clear();
            Decoder::Result result = decode(chunk, false);
            bool converted = encoder_->encode(units_.chars, bytes_) == units_.chars.size();
            if (!converted) {
                // A unit that does not convert is told by its place, which is worth the asking only now.
                bytes_.clear();
                result = decode(chunk, true);
                converted = encode(input, chunk, result.consumed);
            }
            if (converted && result.bad_length != 0)
                converted = replace(input, chunk, result.consumed, result.bad_length);
            if (!output_.write(bytes_) || !converted) return false;
            const std::size_t done = result.consumed + result.bad_length;
            if (chunk.last && done == chunk.bytes.size()) return true;
            input.consume(done);
            progress.at(chunk.offset + done);
        }
    }

  private:
    // By the library's conversion of whole texts.
    bool run_directly(Input &input) {
        Progress progress(input);
        for (;;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            std::size_t done = 0;
            for (bool more = true; more;) {
                const auto result = converter_->convert({chunk.bytes.subspan(done), chunk.offset + done, chunk.last});
                if (!output_.write(result.bytes)) return false;
                done += result.consumed;
                if (result.bad_length != 0) {
                    tell(input, chunk, done, result.bad_length);
                    return false;
                }
                more = result.more;
            }
            if (chunk.last && done == chunk.bytes.size()) return true;
            input.consume(done);
            progress.at(chunk.offset + done);
        }
    }

    Decoder::Result decode(const Chunk &chunk, bool placed) {
        units_.clear();
        units_.placed = placed || transform_ != nullptr;
        Decoder::Result result = decoder_->decode(chunk, units_);
        if (transform_ == nullptr) return result;
        const bool next_follows = !chunk.last && result.bad_length == 0;
        if (next_follows && !units_.chars.empty() && transform_->joins_next(units_.chars.back())) {
            result.consumed = units_.places.back();
            units_.chars.pop_back();
            units_.places.pop_back();
        }
        transform_->apply(units_);
        return result;
    }

    bool encode(const Input &input, const Chunk &chunk, std::size_t consumed) {
        const std::span<const KxChar> units = units_.chars;
        std::size_t done = encoder_->encode(units, bytes_);
        while (done < units.size()) {
            const std::size_t place = units_.places[done];
            // A character may have become several units, all with its place.
            const auto next = std::find_if(units_.places.begin() + static_cast<std::ptrdiff_t>(done),
                                           units_.places.end(), [&](std::size_t other) { return other != place; });
            const std::size_t end = next != units_.places.end() ? *next : consumed;
            if (!replace(input, chunk, place, decoder_->length(chunk, place, end))) return false;
            ++done;
            done += encoder_->encode(units.subspan(done), bytes_);
        }
        return true;
    }

    // What becomes of a character that does not convert.
    bool replace(const Input &input, const Chunk &chunk, std::size_t place, std::size_t length) {
        if (request_.drop) return true;
        if (request_.substitute) {
            bytes_.insert(bytes_.end(), substitute_.begin(), substitute_.end());
            return true;
        }
        tell(input, chunk, place, length);
        return false;
    }

    void tell(const Input &input, const Chunk &chunk, std::size_t place, std::size_t length) {
        report(command_, input.name() + ": byte " + std::to_string(chunk.offset + place) + ": " +
                             hex(chunk.bytes.subspan(place, length)) + " does not convert from " +
                             name_of(*request_.from) + " to " + name_of(*request_.to));
    }

    const char *command_;
    const TextRequest &request_;
    const Transform *transform_; // or null
    std::span<const std::uint8_t> substitute_;
    Output &output_;
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    std::unique_ptr<Converter> converter_; // or null: by way of KX text
    DecodedText units_;
    std::vector<std::uint8_t> bytes_;
};

// The bytes of one UTF-8 character in the output's form; nothing when it is not exactly one, or does not convert.
std::optional<std::vector<std::uint8_t>> encode_substitute(const TextRequest &request, const CodePage &page) {
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(request.substitute->data());
    // Not at the start of a file, where a byte order mark would be skipped.
    const Chunk chunk{{bytes, request.substitute->size()}, 1, true};
    DecodedText units;
    const auto result = make_decoder({EncodingKind::utf8, {}}, page)->decode(chunk, units);
    if (result.bad_length != 0 || units.chars.size() != 1) return std::nullopt;
    std::vector<std::uint8_t> encoded;
    if (make_encoder(*request.to, page, page)->encode(units.chars, encoded) != 1) return std::nullopt;
    return encoded;
}

} // namespace

std::string take_text_option(TextRequest &request, int id, const std::string &argument) {
    const auto take_encoding = [&](std::optional<Encoding> &form) -> std::string {
        form = find_encoding(argument);
        return form ? "" : "no form or code page '" + argument + "'; `kx convert -l` lists them";
    };
    switch (id) {
    case 'f': {
        const std::string fault = take_encoding(request.from);
        return fault.empty() && request.from->kind == EncodingKind::sio ? "sio text is only written" : fault;
    }
    case 't': return take_encoding(request.to);
    case 'o': request.output = argument; return "";
    case 'c': request.drop = true; return "";
    case kSubstId: request.substitute = argument; return "";
    case kAnsiId: return take_page(request.ansi, argument);
    default: return "";
    }
}

TextPages pages_of(const TextRequest &request, const CodePage &otherwise) {
    const auto own = [&](const Encoding &form) -> std::optional<CodePage> {
        if (form.kind == EncodingKind::code_page) return form.page;
        if (is_kx_encoding(form)) return request.ansi;
        return std::nullopt;
    };
    const std::optional<CodePage> from = own(*request.from);
    const std::optional<CodePage> to = own(*request.to);
    const CodePage outside = request.ansi.value_or(otherwise);
    const CodePage text = from.value_or(to.value_or(outside));
    return {text, to.value_or(text)};
}

int run_text(const Usage &usage, const TextRequest &request, const TextPages &pages, const Transform *transform,
             std::unique_ptr<Decoder> decoder) {
    if (request.drop && request.substitute) return usage_error(usage, "-c and --subst exclude each other");
    std::unique_ptr<Converter> converter;
    if (transform == nullptr && decoder == nullptr)
        converter = Converter::make(*request.from, *request.to, pages.text, pages.written, request.drop);
    std::optional<std::vector<std::uint8_t>> substitute(std::in_place);
    if (request.substitute) {
        const bool taken = converter && converter->set_substitute(*request.substitute);
        if (!converter) substitute = encode_substitute(request, pages.written);
        if (converter ? !taken : !substitute) {
            return usage_error(usage, "'" + *request.substitute + "' is not one character that " +
                                          name_of(*request.to) + " has");
        }
    }
    if (is_one_of(request.output, request.inputs)) {
        report(usage.command,
               "the output is also an input: " + (request.output.empty() ? "(standard output)" : request.output));
        return kFailure;
    }

    Output output(usage.command, request.output);
    if (!output.good()) return kFailure;
    if (!decoder) decoder = make_decoder(*request.from, pages.text, is_kx_encoding(*request.to));
    Conversion conversion(usage.command, request, pages, transform, *substitute, output, std::move(decoder),
                          std::move(converter));
    for (const std::string &path : request.inputs) {
        Input input(usage.command, path);
        if (!input.good() || !conversion.run(input)) return kFailure;
    }
    return output.close() ? kSuccess : kFailure;
}

} // namespace kx
