#include "through_unicode.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "coders.h"
#include "line_ends.h"
#include "tables/tool_pages.h"
#include "text/scalars.h"

namespace kx {
namespace {

using Bytes = std::span<const std::uint8_t>;
using kxstr::text::ByteOrder;
namespace tables = kxstr::tables;

const Encoding kUnits{EncodingKind::utf16le, {}};
constexpr std::size_t kMostUnits = 4;          // bytes of a character in UTF-16
constexpr std::uint32_t kNoCharacter = 0xFFFD; // of a table

// ---- Converters of our own ----

// The number or the name of one of the tool's own pages.
const tables::ToolPage *table_page(const Encoding &form) {
    for (const tables::ToolPage &page : tables::kToolPages)
        for (const char *const before : {"", "cp", "dos-"})
            if (form.name == before + std::to_string(page.number)) return &page;
    return nullptr;
}

struct OwnForm {
    explicit OwnForm(const Encoding &encoding)
        : size(unit_size(encoding)), high_first(is_high_first(encoding)), page(table_page(encoding)) {}

    std::size_t size; // bytes of a unit
    bool high_first;
    const tables::ToolPage *page; // null for ASCII, which is a page without the bytes from 80 up
};

kxstr::text::Scalar read_utf16(const OwnForm &, Bytes source) {
    return kxstr::text::read_utf16(source, ByteOrder::low_first);
}

std::size_t write_utf16(const OwnForm &, std::uint32_t character, std::uint8_t *bytes) {
    return kxstr::text::write_utf16(character, bytes, ByteOrder::low_first);
}

kxstr::text::Scalar read_utf32(const OwnForm &form, Bytes source) {
    using kxstr::text::Scalar;
    const std::size_t size = form.size;
    if (source.size() < size) return {Scalar::incomplete, source.size(), 0};
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | source[form.high_first ? i : size - 1 - i];
    const bool is_one = value <= kxstr::text::kLastScalar && !kxstr::text::is_surrogate(value);
    return {is_one ? Scalar::character : Scalar::malformed, size, value};
}

std::size_t write_utf32(const OwnForm &form, std::uint32_t character, std::uint8_t *bytes) {
    for (std::size_t i = 0; i < form.size; ++i)
        bytes[form.high_first ? form.size - 1 - i : i] = static_cast<std::uint8_t>(character >> (8 * i));
    return form.size;
}

kxstr::text::Scalar read_byte(const OwnForm &form, Bytes source) {
    using kxstr::text::Scalar;
    if (source[0] < 0x80) return {Scalar::character, 1, source[0]};
    const std::uint32_t character = form.page != nullptr ? form.page->characters[source[0] - 0x80] : kNoCharacter;
    return {character != kNoCharacter ? Scalar::character : Scalar::malformed, 1, character};
}

std::size_t write_byte(const OwnForm &form, std::uint32_t character, std::uint8_t *bytes) {
    bytes[0] = static_cast<std::uint8_t>(character);
    if (character < 0x80) return 1;
    if (form.page == nullptr || character == kNoCharacter) return 0;
    const auto *const found = std::ranges::find(form.page->characters, character);
    bytes[0] = static_cast<std::uint8_t>(0x80 + (found - form.page->characters.begin()));
    return found != form.page->characters.end() ? 1 : 0;
}

bool is_utf32(const Encoding &form) {
    return form.kind == EncodingKind::utf32le || form.kind == EncodingKind::utf32be;
}

using Read = kxstr::text::Scalar(const OwnForm &form, Bytes source);
using Write = std::size_t(const OwnForm &form, std::uint32_t character, std::uint8_t *bytes); // at most 4, or 0

Read *read_of(const Encoding &form) {
    return is_utf32(form) ? read_utf32 : form == kUnits ? read_utf16 : read_byte;
}

Write *write_of(const Encoding &form) {
    return is_utf32(form) ? write_utf32 : form == kUnits ? write_utf16 : write_byte;
}

// Between UTF-16 and a form of other characters, one at a time.
class ByCharacters final : public Transcoder {
  public:
    ByCharacters(const Encoding &from, const Encoding &to)
        : from_(from), to_(to), read_(read_of(from)), write_(write_of(to)) {}

    Result convert(Bytes source, std::span<std::uint8_t> destination) override {
        using kxstr::text::Scalar;
        Result done{Result::done, 0, 0, 0};
        while (done.read < source.size()) {
            const Scalar one = read_(from_, source.subspan(done.read));
            std::uint8_t bytes[4];
            const std::size_t size = one.kind == Scalar::character ? write_(to_, one.value, bytes) : 0;
            const std::size_t room = destination.size() - done.written;
            done.stop = one.kind == Scalar::incomplete ? Result::incomplete
                        : size == 0                    ? Result::fault
                        : size > room                  ? Result::full
                                                       : Result::done;
            done.bad = done.stop == Result::fault ? one.length : 0;
            if (done.stop != Result::done) return done;
            std::memcpy(destination.data() + done.written, bytes, size);
            done.read += one.length;
            done.written += size;
        }
        return done;
    }

  private:
    OwnForm from_, to_;
    Read *read_;
    Write *write_;
};

// The library's conversion.
class OfLibrary final : public Transcoder {
  public:
    OfLibrary(const Encoding &from, const Encoding &to) {
        const KxTextForm source = *text_form(from, {}), target = *text_form(to, {});
        KxTextPrepare(&converter_, &source, &target, 0);
    }

    Result convert(Bytes source, std::span<std::uint8_t> destination) override {
        KxTextResult done;
        const std::uint32_t status =
            KxTextConvert(&converter_, source.data(), source.size(), 0, destination.data(), destination.size(), &done);
        switch (status) {
        case KX_TEXT_DONE: return {Result::done, done.read, done.written, 0};
        case KX_TEXT_FULL: return {Result::full, done.read, done.written, 0};
        case KX_TEXT_INCOMPLETE: return {Result::incomplete, done.read, done.written, 0};
        default: return {Result::fault, done.read, done.written, done.fault};
        }
    }

  private:
    KxTextConverter converter_;
};

// ---- Helpers ----

// Appends all that becomes of the source.
Transcoder::Result convert_all(Transcoder &transcoder, Bytes source, ByteBuffer &bytes) {
    Transcoder::Result all{Transcoder::Result::done, 0, 0, 0};
    for (;;) {
        const Bytes rest = source.subspan(all.read);
        const std::size_t size = bytes.size();
        bytes.resize(size + 2 * rest.size() + os::kMostAtEnd);
        const auto done = transcoder.convert(rest, std::span(bytes).subspan(size));
        bytes.resize(size + done.written);
        all = {done.stop, all.read + done.read, all.written + done.written, done.bad};
        if (done.stop != Transcoder::Result::full) return all;
    }
}

void end(Transcoder &transcoder, ByteBuffer &bytes) {
    std::array<std::uint8_t, os::kMostAtEnd> rest;
    const std::size_t size = transcoder.end(rest);
    bytes.insert(bytes.end(), rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(size));
}

// Whether bytes mean other characters behind a code that shifts.
bool finds_shifts(Transcoder &reader) {
    constexpr std::string_view shifts[] = {"", "\x0E", "\x1B$B", "\x1B$)C\x0E", "\x1B$)A\x0E", "~{", "+"};
    constexpr std::string_view text = "AAAAAAAA";
    constexpr std::size_t most = 4; // bytes at the end; a letter may wait for a mark
    ByteBuffer units, plain;
    for (const std::string_view shift : shifts) {
        units.clear();
        end(reader, units);
        units.clear();
        const std::string all = std::string(shift).append(text);
        const Bytes bytes(reinterpret_cast<const std::uint8_t *>(all.data()), all.size());
        const auto done = convert_all(reader, bytes, units);
        if (done.stop == Transcoder::Result::fault) convert_all(reader, bytes.last(text.size()), units);
        units.erase(units.begin(), units.end() - static_cast<std::ptrdiff_t>(std::min(most, units.size())));
        if (shift.empty()) plain = units;
        if (units != plain) break;
    }
    const bool found = units != plain;
    end(reader, units);
    return found;
}

std::size_t count_of_units(Bytes units) {
    return count_characters(kUnits, units);
}

} // namespace

bool system_has(const std::string &name) {
    const Encoding form{EncodingKind::system, {}, name};
    return table_page(form) != nullptr || os::open_reader(name) != nullptr;
}

namespace {

// One of the two is UTF-16, the other is `form`.
std::unique_ptr<Transcoder> make_transcoder(const Encoding &form, const Encoding &from, const Encoding &to,
                                            std::unique_ptr<Transcoder> (*open_of_system)(const std::string &name)) {
    const bool is_page = form.kind == EncodingKind::ascii || table_page(form) != nullptr;
    if (is_page || is_utf32(form)) return std::make_unique<ByCharacters>(from, to);
    if (form.kind == EncodingKind::system) return open_of_system(form.name);
    return std::make_unique<OfLibrary>(from, to);
}

} // namespace

std::unique_ptr<Transcoder> make_reader(const Encoding &form) {
    return make_transcoder(form, form, kUnits, os::open_reader);
}

std::unique_ptr<Transcoder> make_writer(const Encoding &form) {
    return make_transcoder(form, kUnits, form, os::open_writer);
}

ByteBuffer bytes_of_character(char32_t character, const Encoding &form) {
    std::uint8_t units[kMostUnits];
    ByteBuffer bytes;
    const auto writer = make_writer(form);
    if (!writer) return bytes;
    const auto done =
        convert_all(*writer, Bytes(units, kxstr::text::write_utf16(character, units, ByteOrder::low_first)), bytes);
    if (done.stop != Transcoder::Result::done) return {};
    end(*writer, bytes);
    return bytes;
}

// ---- UnicodeText ----

UnicodeText::UnicodeText(const Encoding &form)
    : form_(form), reader_(make_reader(form)), shifts_(form.kind == EncodingKind::system && finds_shifts(*reader_)) {}

void UnicodeText::begin() {
    ByteBuffer rest;
    end(*reader_, rest);
    begin_at(0);
}

void UnicodeText::begin_at(std::uint64_t offset) {
    base_ = offset;
    source_.clear();
    units_.clear();
    places_.clear();
    placed_ = false;
    size_ = mark_ = bad_ = start_ = first_ = 0;
}

// So that it does not grow with the file.
void UnicodeText::forget_start() {
    if (start_ == 0) return;
    const auto bytes = static_cast<std::ptrdiff_t>(start_), units = static_cast<std::ptrdiff_t>(first_);
    base_ += start_;
    source_.erase(source_.begin(), source_.begin() + bytes);
    units_.erase(units_.begin(), units_.begin() + 2 * units);
    places_.erase(places_.begin(), places_.begin() + units);
    for (std::uint32_t &place : places_)
        place -= static_cast<std::uint32_t>(start_);
    size_ -= start_;
    mark_ = start_ = first_ = 0;
}

void UnicodeText::load(const Chunk &chunk) {
    const std::uint64_t end = base_ + size_;
    // Behind the last byte there may be a letter that waited for a mark.
    const bool ends_here = chunk.offset == end && (bad_ != 0 || (size_ == 0 && !units_.empty()));
    const bool is_here = base_ <= chunk.offset && (chunk.offset < end || ends_here);
    if (is_here) {
        start_ = static_cast<std::size_t>(chunk.offset - base_);
        first_ = 0;
        if (start_ != 0) {
            list_places();
            first_ = static_cast<std::size_t>(std::ranges::lower_bound(places_, start_) - places_.begin());
        }
        const bool all_is_here = chunk.offset + chunk.bytes.size() == looked_at_ && chunk.last == was_last_;
        if (bad_ != 0 || all_is_here) return;
        forget_start();
    } else {
        begin_at(chunk.offset);
    }
    if (chunk.offset == 0 && size_ == 0) {
        const ByteBuffer mark = byte_order_mark(form_);
        const bool has_mark = !mark.empty() && chunk.bytes.size() >= mark.size() &&
                              std::ranges::equal(chunk.bytes.first(mark.size()), mark);
        mark_ = size_ = has_mark ? mark.size() : 0;
    }
    looked_at_ = chunk.offset + chunk.bytes.size();
    was_last_ = chunk.last;
    read(chunk.bytes, chunk.last);
}

void UnicodeText::read(Bytes chunk, bool last) {
    const Bytes source = chunk.subspan(size_);
    bool incomplete = false;
    if (shifts_) {
        // One by one, or nobody could tell later where a character began.
        std::size_t at = 0;
        bool goes_on = true;
        while (goes_on && at < source.size()) {
            const std::size_t before = at;
            goes_on = step(*reader_, source, at, units_);
            places_.resize(units_.size() / 2, static_cast<std::uint32_t>(size_ + before));
        }
        incomplete = !goes_on && bad_ == 0;
        size_ += at;
        placed_ = true;
    } else {
        const auto done = convert_all(*reader_, source, units_);
        incomplete = done.stop == Transcoder::Result::incomplete;
        size_ += done.read;
        bad_ = done.bad;
        placed_ = false;
    }
    if (last && incomplete) bad_ = chunk.size() - size_;
    if (last && bad_ == 0) {
        end(*reader_, units_);
        if (placed_) places_.resize(units_.size() / 2, static_cast<std::uint32_t>(size_));
    }
    source_.assign(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(size_));
}

// Reads one character, byte by byte until it is one. Where there is none `bad_` says why, or the source ends.
bool UnicodeText::step(Transcoder &reader, Bytes source, std::size_t &at, ByteBuffer &units) {
    for (std::size_t size = 1; size <= source.size() - at; ++size) {
        std::array<std::uint8_t, os::kMostAtEnd> some;
        const auto done = reader.convert(source.subspan(at, size), some);
        if (done.stop == Transcoder::Result::incomplete && done.read == 0) continue;
        if (done.stop == Transcoder::Result::fault) bad_ = shifts_ ? 1 : done.bad;
        at += done.read;
        units.insert(units.end(), some.begin(), some.begin() + static_cast<std::ptrdiff_t>(done.written));
        return done.stop != Transcoder::Result::fault;
    }
    return false;
}

void UnicodeText::list_places() {
    if (placed_) return;
    if (!again_) again_ = make_reader(form_);
    constexpr unsigned most = 3; // characters that may become one: a letter and its marks
    const std::size_t bad = bad_;
    places_.clear();
    for (std::size_t at = mark_; at < size_;) {
        std::size_t next = at;
        ByteBuffer units;
        const Bytes wanted = Bytes(units_).subspan(2 * std::min(places_.size(), units_.size() / 2));
        for (unsigned count = 1; count <= most; ++count) {
            next = at;
            units.clear();
            for (unsigned i = 0; i < count && next < size_; ++i)
                step(*again_, source_, next, units);
            end(*again_, units); // what waits for a mark
            if (units.size() <= wanted.size() && std::ranges::equal(units, wanted.first(units.size()))) break;
        }
        places_.resize(places_.size() + units.size() / 2, static_cast<std::uint32_t>(at));
        at = std::max(next, at + 1);
    }
    places_.resize(units_.size() / 2, static_cast<std::uint32_t>(size_));
    bad_ = bad;
    placed_ = true;
}

std::size_t UnicodeText::place(std::size_t at) {
    const std::size_t unit = first_ + at / 2;
    if (2 * unit >= units_.size()) return size();
    if (at == 0 && (mark_ == 0 || first_ != 0)) return 0;
    list_places();
    return places_[unit] - start_;
}

std::size_t UnicodeText::end_of(std::size_t at) {
    list_places();
    const auto begin = places_.begin() + static_cast<std::ptrdiff_t>(first_ + at / 2);
    const auto next = std::find_if(begin, places_.end(), [&](std::uint32_t other) { return other != *begin; });
    return next != places_.end() ? *next - start_ : size();
}

std::optional<char32_t> UnicodeText::character_at(std::uint64_t offset) {
    if (offset < base_ || offset >= base_ + size_) return std::nullopt;
    list_places();
    const auto found = std::ranges::lower_bound(places_, offset - base_);
    if (found == places_.end() || *found != offset - base_) return std::nullopt;
    const auto at = 2 * static_cast<std::size_t>(found - places_.begin());
    const auto one = kxstr::text::read_utf16(Bytes(units_).subspan(at), ByteOrder::low_first);
    return one.kind == kxstr::text::Scalar::character ? std::optional<char32_t>(one.value) : std::nullopt;
}

// ---- Coders ----

namespace {

class UnicodeDecoder final : public Decoder {
  public:
    UnicodeDecoder(const Encoding &form, const CodePage &text_page, bool composes)
        : text_(form), decoder_(make_text_decoder(*text_form(kUnits, text_page), text_page, composes)) {}

    void begin() override { text_.begin(); }

    Result decode(const Chunk &chunk, DecodedText &units) override {
        constexpr std::uint64_t inside = 1; // marks at the start are gone
        text_.load(chunk);
        const std::size_t first = units.places.size();
        const bool last = (chunk.last && text_.size() == chunk.bytes.size()) || text_.bad() != 0;
        const Result done = decoder_->decode({text_.units(), inside, last}, units);
        decoded_ = done.consumed;
        for (std::size_t i = first; i < units.places.size(); ++i)
            units.places[i] = static_cast<std::uint32_t>(text_.place(units.places[i]));
        const std::size_t consumed = text_.place(done.consumed);
        if (done.bad_length != 0) return {consumed, text_.end_of(done.consumed + done.bad_length - 2) - consumed};
        return {consumed, done.consumed == text_.units().size() ? text_.bad() : 0};
    }

    std::optional<char32_t> character_at(std::uint64_t offset) override { return text_.character_at(offset); }
    Bytes unicode() const override { return text_.units().first(decoded_); }

  private:
    UnicodeText text_;
    std::unique_ptr<Decoder> decoder_;
    std::size_t decoded_ = 0; // bytes of the units
};

// What both directions that end in a form beyond Unicode have.
class UnicodeWriter {
  public:
    explicit UnicodeWriter(const Encoding &form) : writer_(make_writer(form)) {}

    void begin() {
        ByteBuffer rest;
        kx::end(*writer_, rest);
    }
    void end(ByteBuffer &bytes) { kx::end(*writer_, bytes); }
    Transcoder::Result write(Bytes units, ByteBuffer &bytes) { return convert_all(*writer_, units, bytes); }
    bool append(char32_t character, ByteBuffer &bytes) {
        std::uint8_t units[kMostUnits];
        const std::size_t size = kxstr::text::write_utf16(character, units, ByteOrder::low_first);
        return write({units, size}, bytes).stop == Transcoder::Result::done;
    }

  private:
    std::unique_ptr<Transcoder> writer_;
};

class UnicodeEncoder final : public Encoder {
  public:
    UnicodeEncoder(const CodePage &text_page, const Encoding &form)
        : encoder_(make_text_encoder(text_page, *text_form(kUnits, text_page))), writer_(form) {}

    void begin() override { writer_.begin(); }
    void end(ByteBuffer &bytes) override { writer_.end(bytes); }
    bool append(char32_t character, ByteBuffer &bytes) override { return writer_.append(character, bytes); }

    std::size_t encode(std::span<const KxChar> units, ByteBuffer &bytes) override {
        constexpr std::size_t block = 512; // what follows a fault is encoded again
        std::size_t done = 0;
        while (done < units.size()) {
            const auto some = units.subspan(done, std::min(block, units.size() - done));
            unicode_.clear();
            encoder_->encode(some, unicode_); // a unit of UTF-16 each, up to the first that has none
            const std::size_t count = writer_.write(unicode_, bytes).read / 2;
            done += count;
            if (count != some.size()) break;
        }
        return done;
    }

  private:
    std::unique_ptr<Encoder> encoder_;
    UnicodeWriter writer_;
    ByteBuffer unicode_;
};

class UnicodeConverter final : public Converter {
  public:
    UnicodeConverter(const Encoding &from, const Encoding &to) : text_(from), writer_(to) {}

    void begin() override {
        text_.begin();
        writer_.begin();
    }
    void end(ByteBuffer &bytes) override { writer_.end(bytes); }
    bool append(char32_t character, ByteBuffer &bytes) override { return writer_.append(character, bytes); }
    std::optional<char32_t> character_at(std::uint64_t offset) override { return text_.character_at(offset); }

    Decoder::Result convert(const Chunk &chunk, ByteBuffer &bytes, std::uint64_t *characters) override {
        text_.load(chunk);
        const auto done = writer_.write(text_.units(), bytes);
        if (characters != nullptr) *characters += count_of_units(text_.units().first(done.read));
        if (done.stop == Transcoder::Result::done) return {text_.size(), text_.bad()};
        const std::size_t place = text_.place(done.read);
        return {place, text_.end_of(done.read) - place};
    }

  private:
    UnicodeText text_;
    UnicodeWriter writer_;
};

} // namespace

std::unique_ptr<Decoder> make_decoder_through_unicode(const Encoding &form, const CodePage &text_page, bool composes) {
    return std::make_unique<UnicodeDecoder>(form, text_page, composes);
}

std::unique_ptr<Encoder> make_encoder_through_unicode(const CodePage &text_page, const Encoding &form) {
    return std::make_unique<UnicodeEncoder>(text_page, form);
}

std::unique_ptr<Converter> make_converter_through_unicode(const Encoding &from, const Encoding &to, const CodePage &,
                                                          const CodePage &) {
    const bool has_kx = is_kx_encoding(from) || is_kx_encoding(to); // which goes by the rules of KX
    return has_kx ? nullptr : std::make_unique<UnicodeConverter>(from, to);
}

} // namespace kx
