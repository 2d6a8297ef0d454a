#include "conversion.h"

#include <kxstr/codepage.h>

#include "command.h"
#include "line_ends.h"
#include "text/scalars.h"

namespace kx {
namespace {

// The bytes of one UTF-8 character in the output's form; nothing when it is not exactly one, or does not convert.
std::optional<ByteBuffer> encode_substitute(const TextRequest &request, const CodePage &page) {
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(request.substitute->data());
    // Not at the start of a file, where a byte order mark would be skipped.
    const Chunk chunk{{bytes, request.substitute->size()}, 1, true};
    if (auto direct = Converter::make({EncodingKind::utf8, {}}, *request.to, page, page);
        direct && !is_kx_encoding(*request.to)) {
        ByteBuffer encoded;
        const auto result = direct->convert(chunk, encoded);
        const bool is_one = count_characters({EncodingKind::utf8, {}}, chunk.bytes) == 1;
        if (is_one && result.bad_length == 0) direct->end(encoded);
        return is_one && result.bad_length == 0 ? std::optional(encoded) : std::nullopt;
    }
    DecodedText units;
    const auto result = make_decoder({EncodingKind::utf8, {}}, page)->decode(chunk, units);
    if (result.bad_length != 0 || units.chars.size() != 1) return std::nullopt;
    ByteBuffer encoded;
    if (make_encoder(*request.to, page, page)->encode(units.chars, encoded) != 1) return std::nullopt;
    return encoded;
}

// Of one that is written in UTF-8.
char32_t character_of(const std::string &utf8) {
    return kxstr::text::read_utf8({reinterpret_cast<const std::uint8_t *>(utf8.data()), utf8.size()}).value;
}

} // namespace

std::string take_text_option(TextRequest &request, int id, const Argument &argument) {
    const std::string &text = argument.text;
    FileChoices &files = request.files;
    switch (id) {
    case 'f':
        request.from = argument.form;
        return request.from->kind == EncodingKind::sio ? "sio text is only written" : "";
    case 't': request.to = to_write(argument.form); return "";
    case 'o': files.output = text; return "";
    case 'i':
        files.in_place = true;
        files.backup_suffix = text;
        return text.find('/') == std::string::npos ? "" : "'" + text + "' would be in another folder";
    case 'O': files.folder = text; return text.empty() ? "-O needs a folder" : "";
    case 'r': files.walks_folders = true; return "";
    case kFilesFromId: files.list = text; return "";
    case '0': files.list_has_zeros = true; return "";
    case 'j': request.threads = argument.number; return "";
    case 'c': request.drop = true; return "";
    case kSubstId: request.substitute = text; return "";
    case kStrictId: request.strict = true; return "";
    case kAnsiId: request.ansi = argument.page; return "";
    case kEolId: request.line_ends = *find_line_ends(text); return "";
    case kEofId: request.control_z_ends = true; return "";
    case kBomId: request.writes_mark = true; return "";
    case 'v': request.verbose = true; return "";
    case 'q': request.quiet = true; return "";
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

namespace {

// What is wrong with the options taken together, or an empty string.
std::string fault_of(const TextRequest &request) {
    if (request.drop && request.substitute) return "-c and --subst exclude each other";
    if (request.strict && (request.drop || request.substitute)) return "--strict excludes -c and --subst";
    if (request.writes_mark && byte_order_mark(*request.to).empty())
        return name_of(*request.to) + " begins with no byte order mark";
    if (request.line_ends != LineEnds::keep && !has_lines(*request.to))
        return "--eol has no say in " + name_of(*request.to);
    if (request.control_z_ends && request.from && is_kx_encoding(*request.from))
        return "a text in " + name_of(*request.from) + " ends with no Ctrl-Z";
    return fault_of(request.files);
}

} // namespace

int run_text(const Usage &usage, const TextRequest &request, const TextPages &pages, const Transform *transform,
             const MakeDecoder &make_decoder) {
    if (const std::string fault = fault_of(request); !fault.empty()) return usage_error(usage, fault);
    Choices choices{request.from, *request.to, pages, transform};
    if (request.substitute) {
        auto encoded = encode_substitute(request, pages.written);
        if (!encoded) {
            return usage_error(usage, "'" + *request.substitute + "' is not one character that " +
                                          name_of(*request.to) + " has");
        }
        choices.lost = Choices::substitute;
        choices.substitute_bytes = std::move(*encoded);
        choices.substitute_character = character_of(*request.substitute);
    } else if (request.drop) {
        choices.lost = Choices::drop;
    }
    choices.strict = request.strict;
    choices.line_ends = request.line_ends;
    choices.control_z_ends = request.control_z_ends;
    choices.writes_mark = request.writes_mark;

    FileChoices files = request.files;
    if (files.operands.empty() && !files.list) files.operands = {"-"};
    const bool joins = !files.in_place && files.folder.empty();
    if (joins && is_standard(files.output) && is_one_of(files.output, files.operands)) {
        report(usage.command, "the output is also an input: (standard output)");
        return kFailure;
    }
    const Plan plan = plan_jobs(files, tell_as(usage.command));
    WtpiGetCountryID(); // the library asks the system once, and not in several threads
    const FormOf form_of = [&](Input &input, const Tell &tell) -> std::optional<Encoding> {
        if (!request.from) return detect_encoding(input, *request.automatic, tell);
        const bool has_mark = request.from->kind == EncodingKind::utf16 || request.from->kind == EncodingKind::utf32;
        return has_mark ? by_mark(*request.from, read_start(input, kMostOfMark)) : *request.from;
    };
    const MakeLane make_lane = [&](const Encoding &from) {
        TextRequest own = request;
        own.from = from;
        Lane lane{choices, nullptr};
        lane.choices.from = from;
        if (!request.from) lane.choices.pages = pages_of(own, pages.text);
        lane.converter = std::make_unique<ChunkConverter>(from, choices.to, lane.choices.pages, transform,
                                                          make_decoder ? make_decoder() : nullptr);
        if (request.verbose) lane.converter->count_characters();
        return lane;
    };
    const RunChoices run{usage.command, request.threads, request.verbose, request.quiet};
    const bool done = run_plan(plan, choices, run, files.output, form_of, make_lane);
    return done ? kSuccess : kFailure;
}

} // namespace kx
