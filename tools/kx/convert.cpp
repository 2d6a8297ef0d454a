#include "convert.h"

#include <cstdio>

#include "command.h"
#include "files.h"
#include "forms.h"
#include "options.h"

namespace kx {
namespace {

constexpr int kSubstOption = 256;
constexpr int kAnsiOption = 257;

constexpr Option kOptions[] = {
    {'f', "from", "FORM", "the form of the input"},
    {'t', "to", "FORM", "the form of the output"},
    {'o', "output", "FILE", "write to FILE, not to standard output"},
    {'c', nullptr, nullptr, "leave out characters that do not convert"},
    {kSubstOption, "subst", "CHAR", "write CHAR (in UTF-8) for characters that do not convert"},
    {kAnsiOption, "ansi", "PAGE", "the code page that KX text was, or is to be, written with"},
    {'l', "list", nullptr, "list the forms and the code pages"},
};

constexpr Usage kUsageText{
    "kx convert", "-f FROM -t TO [-c | --subst=CHAR] [-o OUT] [FILE...]",
    "Converts text from one form to another, by way of KX text. Reads standard input when no\n"
    "FILE is given, or when FILE is -.",
    kOptions,
    "A character that does not convert ends the work: its place in the input, in bytes from 0, is\n"
    "told, what came before it is written, and the exit status is 1.\n"
    "Tab, line feed, form feed and carriage return are the same in all forms. The other control\n"
    "characters are kept, too, but in a DOS code page their bytes stand for glyphs.\n"
    "A byte order mark at the start of a file is skipped; none is written.\n"
    "KX text does not say which code page its East Asian characters and the bytes without a KX\n"
    "character belong to. It is PAGE; else the code page on the other side; else the ANSI code\n"
    "page of the locale.\n"
    "Exit status: 0 all was converted, 1 something was not or could not be read or written, 2 the\n"
    "command line is wrong."};

struct Request {
    std::optional<Form> from;
    std::optional<Form> to;
    std::optional<Page> ansi;
    std::optional<std::string> substitute;
    bool drop = false;
    bool list = false;
    std::string output;
    std::vector<std::string> inputs;
};

// The page of the KX text between the forms, and of the KX text to be written.
struct TextPages {
    Page text;
    Page written;
};

TextPages pages_of(const Request &request) {
    const auto own = [&](const Form &form) -> std::optional<Page> {
        if (form.kind == FormKind::code_page) return form.page;
        if (form.kind == FormKind::kx) return request.ansi;
        return std::nullopt;
    };
    const std::optional<Page> from = own(*request.from);
    const std::optional<Page> to = own(*request.to);
    const Page otherwise = request.ansi.value_or(host_page());
    const Page text = from.value_or(to.value_or(otherwise));
    return {text, to.value_or(text)};
}

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, " %02X", byte);
        text += digits;
    }
    return text;
}

class Conversion {
  public:
    Conversion(const Request &request, std::span<const std::uint8_t> substitute, Output &output)
        : request_(request), substitute_(substitute), output_(output) {
        const TextPages pages = pages_of(request);
        decoder_ = make_decoder(*request.from, pages.text);
        encoder_ = make_encoder(*request.to, pages.text, pages.written);
    }

    // False when the work must end; the reason has been told then.
    bool run(Input &input) {
        Progress progress(input);
        for (;;) {
            const Chunk chunk = input.next();
            if (!input.good()) return false;
            units_.clear();
            bytes_.clear();
            const Decoder::Result result = decoder_->decode(chunk, units_);
            const bool converted =
                encode(input, chunk, result.consumed) &&
                (result.bad_length == 0 || replace(input, chunk, result.consumed, result.bad_length));
            if (!output_.write(bytes_) || !converted) return false;
            const std::size_t done = result.consumed + result.bad_length;
            if (chunk.last && done == chunk.bytes.size()) return true;
            input.consume(done);
            progress.at(chunk.offset + done);
        }
    }

  private:
    bool encode(const Input &input, const Chunk &chunk, std::size_t consumed) {
        const std::span<const KxChar> units = units_.chars;
        std::size_t done = encoder_->encode(units, bytes_);
        while (done < units.size()) {
            const std::size_t place = units_.places[done];
            const std::size_t end = done + 1 < units.size() ? units_.places[done + 1] : consumed;
            if (!replace(input, chunk, place, end - place)) return false;
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
        report(kUsageText.command, input.name() + ": byte " + std::to_string(chunk.offset + place) + ":" +
                                       hex(chunk.bytes.subspan(place, length)) + " does not convert from " +
                                       name_of(*request_.from) + " to " + name_of(*request_.to));
        return false;
    }

    const Request &request_;
    std::span<const std::uint8_t> substitute_;
    Output &output_;
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    Units units_;
    std::vector<std::uint8_t> bytes_;
};

// The bytes of one UTF-8 character in the output's form; nothing when it is not exactly one, or does not convert.
std::optional<std::vector<std::uint8_t>> encode_substitute(const Request &request) {
    const Page page = pages_of(request).written;
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(request.substitute->data());
    // Not at the start of a file, where a byte order mark would be skipped.
    const Chunk chunk{{bytes, request.substitute->size()}, 1, true};
    Units units;
    const auto result = make_decoder({FormKind::utf8, {}}, page)->decode(chunk, units);
    if (result.bad_length != 0 || units.chars.size() != 1) return std::nullopt;
    std::vector<std::uint8_t> encoded;
    if (make_encoder(*request.to, page, page)->encode(units.chars, encoded) != 1) return std::nullopt;
    return encoded;
}

std::string take_option(Request &request, int id, const std::string &argument) {
    const auto take_form = [&](std::optional<Form> &form) -> std::string {
        form = find_form(argument);
        return form ? "" : "no form or code page '" + argument + "'; `kx convert -l` lists them";
    };
    switch (id) {
    case 'f': return take_form(request.from);
    case 't': return take_form(request.to);
    case 'o': request.output = argument; return "";
    case 'c': request.drop = true; return "";
    case 'l': request.list = true; return "";
    case kSubstOption: request.substitute = argument; return "";
    case kAnsiOption: {
        const std::optional<Form> form = find_form(argument);
        if (!form || form->kind != FormKind::code_page) {
            return "no code page '" + argument + "'; `kx convert -l` lists them";
        }
        request.ansi = form->page;
        return "";
    }
    default: return "";
    }
}

} // namespace

int run_convert(int argc, char **argv) {
    Request request;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) {
        return take_option(request, id, argument);
    });
    if (parsed.stop) return parsed.status;
    if (request.list) {
        std::fputs(list_of_forms().c_str(), stdout);
        return kSuccess;
    }
    if (!request.from || !request.to) return usage_error(kUsageText, "-f FROM and -t TO are both needed");
    if (request.drop && request.substitute) return usage_error(kUsageText, "-c and --subst exclude each other");
    std::vector<std::uint8_t> substitute;
    if (request.substitute) {
        auto encoded = encode_substitute(request);
        if (!encoded) {
            return usage_error(kUsageText, "'" + *request.substitute + "' is not one character that " +
                                               name_of(*request.to) + " has");
        }
        substitute = std::move(*encoded);
    }
    request.inputs = operands_or_standard_input(argc, argv, parsed.first_operand);
    if (is_one_of(request.output, request.inputs)) {
        report(kUsageText.command,
               "the output is also an input: " + (request.output.empty() ? "(standard output)" : request.output));
        return kFailure;
    }

    Output output(kUsageText.command, request.output);
    if (!output.good()) return kFailure;
    Conversion conversion(request, substitute, output);
    for (const std::string &path : request.inputs) {
        Input input(kUsageText.command, path);
        if (!input.good() || !conversion.run(input)) return kFailure;
    }
    return output.close() ? kSuccess : kFailure;
}

} // namespace kx
