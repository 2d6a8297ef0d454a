#include "chunk_converter.h"

#include <algorithm>
#include <array>

#include "line_ends.h"
#include "text/exact.h"
#include "text/scalars.h"

namespace kx {
namespace {

// Nothing for a piece of a character, and for more than one.
std::optional<char32_t> value_of(const kxstr::text::Scalar &scalar, std::span<const std::uint8_t> bytes) {
    if (scalar.kind != kxstr::text::Scalar::character || scalar.length != bytes.size()) return std::nullopt;
    return scalar.value;
}

} // namespace

ChunkConverter::ChunkConverter(const Encoding &from, const Encoding &to, const TextPages &pages,
                               const Transform *transform, std::unique_ptr<Decoder> decoder)
    : from_(from),
      to_(to),
      text_page_(pages.text),
      transform_(transform != nullptr ? std::optional(*transform) : std::nullopt),
      direct_(transform == nullptr && !decoder && !is_kx_encoding(to)
                  ? Converter::make(from, to, pages.text, pages.written)
                  : nullptr),
      naming_(from.kind == EncodingKind::code_page
                  ? Converter::make(from, {EncodingKind::utf8, {}}, pages.text, pages.written)
                  : nullptr),
      encoder_(make_encoder(to, pages.text, pages.written)) {
    if (transform != nullptr && !is_kx_encoding(from) && !is_kx_encoding(to)) {
        around_ = Converter::make(from, to, pages.text, pages.written);
        map_ = CharacterMap::make(from, to);
    }
    decoder_ =
        decoder ? std::move(decoder) : make_decoder(from, pages.text, is_kx_encoding(to), /* composes = */ !around_);
    if (direct_ && naming_ && !is_double_byte(from.page)) find_united_bytes();
    // What is KX text already has nothing to be united any more.
    const Encoding back = goes_through_unicode(from) ? Encoding{EncodingKind::utf16le, {}} : from;
    if ((transform != nullptr || is_kx_encoding(to)) && !is_kx_encoding(from))
        back_ = make_encoder(back, pages.text, pages.text);
}

// A page without a published mapping goes by the library's table, where a few of its characters are one with others:
// the byte does not come back then.
void ChunkConverter::find_united_bytes() {
    const auto back = Converter::make({EncodingKind::utf8, {}}, from_, text_page_, text_page_);
    std::array<bool, 256> united{};
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        const auto source = static_cast<std::uint8_t>(byte);
        ByteBuffer utf8, again;
        if (naming_->convert({{&source, 1}, 1, true}, utf8).bad_length != 0) continue;
        united[byte] = back->convert({utf8, 1, true}, again).bad_length == 0 && again.size() == 1 && again[0] < 0x80;
    }
    if (std::ranges::count(united, true) != 0) united_bytes_ = united;
}

void ChunkConverter::begin() {
    if (direct_) direct_->begin();
    decoder_->begin();
    encoder_->begin();
}

bool ChunkConverter::append(char32_t character, ByteBuffer &bytes) {
    return direct_ ? direct_->append(character, bytes) : encoder_->append(character, bytes);
}

ChunkConverter::Result ChunkConverter::convert(const Chunk &chunk, ByteBuffer &bytes, const OnChange &on_change) {
    const Result result = direct_ ? convert_directly(chunk, bytes, on_change)
                          : map_  ? convert_by_map(chunk, bytes, on_change)
                                  : convert_by_kx_text(chunk, 0, bytes, on_change);
    if (!chunk.last || result.stopped) return result;
    if (direct_) {
        direct_->end(bytes);
    } else {
        encoder_->end(bytes);
    }
    return result;
}

ChunkConverter::Result ChunkConverter::convert_directly(const Chunk &chunk, ByteBuffer &bytes,
                                                        const OnChange &on_change) {
    Result result{0, 0, false};
    std::size_t told = chunk.bytes.size(); // the byte that was told to be united
    do {
        const auto bytes_left = chunk.bytes.subspan(result.consumed);
        const std::size_t skip = result.consumed == told ? 1 : 0;
        const auto end = united_bytes_
                             ? std::find_if(bytes_left.begin() + static_cast<std::ptrdiff_t>(skip), bytes_left.end(),
                                            [&](std::uint8_t byte) { return (*united_bytes_)[byte]; })
                             : bytes_left.end();
        const Chunk rest{{bytes_left.begin(), end}, chunk.offset + result.consumed, chunk.last};
        const Decoder::Result done = direct_->convert(rest, bytes, counts_ ? &result.characters : nullptr);
        result.consumed += done.consumed;
        if (done.bad_length == 0 && end != bytes_left.end()) {
            if (on_change({Change::united, result.consumed, 1})) {
                told = result.consumed;
                continue;
            }
            result.stopped = true;
        }
        if (done.bad_length == 0) break;
        if (!on_change({Change::lost, result.consumed, done.bad_length})) {
            result.stopped = true;
            break;
        }
        result.consumed += done.bad_length;
        ++result.characters;
    } while (result.consumed < chunk.bytes.size());
    return result;
}

// What cannot go by the map takes the other way, in stretches that grow where such characters are many.
ChunkConverter::Result ChunkConverter::convert_by_map(const Chunk &chunk, ByteBuffer &bytes,
                                                      const OnChange &on_change) {
    constexpr std::size_t least = 64, most = 4096;
    const CharacterMap::Way way = [this](std::span<const std::uint8_t> character, ByteBuffer &written) {
        return convert_alone(character, written);
    };
    const std::size_t mark =
        chunk.offset == 0 ? KxTextMark(text_form(from_, text_page_)->form, chunk.bytes.data(), chunk.bytes.size()) : 0;
    Result result{mark, 0, false};
    for (std::size_t stretch = least;;) {
        const Chunk rest{chunk.bytes.subspan(result.consumed), chunk.offset + result.consumed, chunk.last};
        const std::size_t mapped = map_->convert(rest, bytes, way);
        if (counts_) result.characters += kx::count_characters(from_, rest.bytes.first(mapped));
        result.consumed += mapped;
        if (result.consumed == chunk.bytes.size()) return result;
        stretch = mapped < stretch ? std::min(2 * stretch, most) : least;
        const std::size_t end = std::min(result.consumed + stretch, chunk.bytes.size());
        const Chunk part{chunk.bytes.first(end), chunk.offset, chunk.last && end == chunk.bytes.size()};
        const Result more = convert_by_kx_text(part, result.consumed, bytes, on_change);
        const bool is_stuck =
            more.consumed == result.consumed; // before half of a character, or one that joins the next
        result = {more.consumed, result.characters + more.characters, more.stopped};
        if (more.stopped || is_stuck) return result;
    }
}

// Of a single character; false where its neighbours or whoever is told about changes have a say.
bool ChunkConverter::convert_alone(std::span<const std::uint8_t> character, ByteBuffer &bytes) {
    const Chunk chunk{character, 1, true}; // not at the start of a file, where a mark would be skipped
    units_.clear();
    units_.placed = false;
    if (decoder_->decode(chunk, units_).bad_length == 0) {
        if (units_.chars.size() != 1 || transform_->joins_next(units_.chars[0])) return false;
        if (comes_back(character)) {
            transform_->apply(units_);
            if (encoder_->encode(units_.chars, bytes) == units_.chars.size()) return true;
            if (units_.chars.size() != 1) return false;
        }
    }
    return pass(chunk, {Change::lost, 0, character.size()}, bytes);
}

ChunkConverter::Result ChunkConverter::convert_by_kx_text(const Chunk &chunk, std::size_t first, ByteBuffer &bytes,
                                                          const OnChange &on_change) {
    Result result{first, 0, false};
    // Decoding without places goes by blocks, which is for nothing where a fault is in every one of them.
    constexpr std::size_t near = 256;
    bool placed = false;
    do {
        const std::size_t begin = result.consumed;
        const Chunk rest{chunk.bytes.subspan(begin), chunk.offset + begin, chunk.last};
        const std::size_t size = bytes.size();
        Piece piece = decode(rest, placed);
        if (piece.united || encoder_->encode(units_.chars, bytes) != units_.chars.size()) {
            // Whose unit it is that does not convert is told by decoding again; that is rarely needed.
            bytes.resize(size);
            if (!placed) piece = decode(rest, true);
            std::size_t stopped_at = 0;
            if (!encode(rest, piece.decoded.consumed, begin, bytes, on_change, stopped_at))
                return {begin + stopped_at, result.characters, true};
        }
        result.characters += piece.characters;
        result.consumed += piece.decoded.consumed;
        const std::size_t bad = piece.decoded.bad_length;
        if (bad == 0) break;
        placed = piece.decoded.consumed < near;
        const Change change{Change::lost, result.consumed, bad};
        if (!pass(chunk, change, bytes) && !on_change(change)) {
            result.stopped = true;
            break;
        }
        result.consumed += bad;
        ++result.characters;
    } while (result.consumed < chunk.bytes.size());
    return result;
}

ChunkConverter::Piece ChunkConverter::decode(const Chunk &chunk, bool placed) {
    units_.clear();
    units_.placed = placed;
    united_.clear();
    Decoder::Result result = decoder_->decode(chunk, units_);
    const bool next_follows = !chunk.last && result.bad_length == 0;
    if (transform_ && next_follows && !units_.chars.empty() && transform_->joins_next(units_.chars.back())) {
        if (!placed) return decode(chunk, true);
        result.consumed = units_.places.back();
        units_.chars.pop_back();
        units_.places.pop_back();
    }
    const bool united = back_ && !comes_back(chunk.bytes.first(result.consumed));
    if (united && placed) list_united(chunk, result.consumed);
    const std::uint64_t characters = units_.chars.size();
    if (transform_) transform_->apply(units_);
    return {result, characters, united};
}

bool ChunkConverter::encode(const Chunk &chunk, std::size_t consumed, std::size_t offset, ByteBuffer &bytes,
                            const OnChange &on_change, std::size_t &stopped_at) {
    const std::span<const KxChar> units = units_.chars;
    auto united = united_.begin();
    std::size_t told = units.size(); // the unit that was told to be united
    for (std::size_t done = 0;;) {
        std::size_t end = units.size();
        if (united != united_.end())
            end = static_cast<std::size_t>(std::ranges::lower_bound(units_.places, *united) - units_.places.begin());
        if (end > done) done += encoder_->encode(units.subspan(done, end - done), bytes);
        if (done == units.size()) return true;
        const bool is_united = done == end && done != told;
        const std::size_t place = stopped_at = units_.places[done];
        const std::size_t length = decoder_->length(chunk, place, end_of(done, consumed));
        const Change::Kind kind = is_united ? Change::united : Change::lost;
        if (pass({chunk.bytes, chunk.offset, chunk.last}, {kind, place, length}, bytes)) {
            while (done < units.size() && units_.places[done] == place)
                ++done;
        } else if (!on_change({kind, offset + place, length})) {
            return false;
        } else if (is_united) {
            told = done;
        } else {
            ++done;
        }
        if (is_united) ++united;
    }
}

// What no rule of KX text knows stays what it is where both forms have it: an emoji, a soft hyphen, a letter whose
// counterpart the page lacks.
bool ChunkConverter::pass(const Chunk &chunk, const Change &change, ByteBuffer &bytes) {
    if (!around_) return false;
    if (goes_through_unicode(from_) || goes_through_unicode(to_)) {
        const auto character = code_point(chunk, change);
        const std::size_t size = bytes.size();
        if (!character) return false;
        if (encoder_->append(*character, bytes)) return true;
        bytes.resize(size);
        ByteBuffer units(4);
        units.resize(kxstr::text::write_utf16(*character, units.data(), kxstr::text::ByteOrder::low_first));
        if (goes_through_unicode(to_)) return false;
        const auto writer = Converter::make({EncodingKind::utf16le, {}}, to_, text_page_, text_page_);
        return writer->convert({units, 1, true}, bytes).bad_length == 0;
    }
    const std::size_t size = bytes.size();
    const auto one = chunk.bytes.subspan(change.place, change.length);
    if (around_->convert({one, 1, true}, bytes).bad_length == 0) return true;
    bytes.resize(size);
    return false;
}

// Where the character of a unit ends in the chunk. It may have become several units, all with its place.
std::size_t ChunkConverter::end_of(std::size_t unit, std::size_t consumed) const {
    const auto begin = units_.places.begin() + static_cast<std::ptrdiff_t>(unit);
    const auto next = std::find_if(begin, units_.places.end(), [&](std::size_t other) { return other != *begin; });
    return next != units_.places.end() ? *next : consumed;
}

bool ChunkConverter::comes_back(std::span<const std::uint8_t> bytes) {
    if (goes_through_unicode(from_)) bytes = decoder_->unicode();
    came_back_.clear();
    return back_->encode(units_.chars, came_back_) == units_.chars.size() && std::ranges::equal(came_back_, bytes);
}

// The same for the unit of one character.
bool ChunkConverter::comes_back(const Chunk &chunk, std::size_t place, std::size_t end, KxChar ch) {
    std::array<std::uint8_t, 4> unicode;
    std::span<const std::uint8_t> bytes = chunk.bytes.subspan(place, end - place);
    if (goes_through_unicode(from_)) {
        const auto character = decoder_->character_at(chunk.offset + place);
        if (!character) return true;
        for (std::size_t at = place + 1; at < end; ++at)
            if (decoder_->character_at(chunk.offset + at)) return true; // a letter and its marks are the same
        const auto low_first = kxstr::text::ByteOrder::low_first;
        bytes = std::span(unicode).first(kxstr::text::write_utf16(*character, unicode.data(), low_first));
    } else if (kx::count_characters(from_, bytes) > 1) {
        return true;
    }
    came_back_.clear();
    return back_->encode({&ch, 1}, came_back_) == 1 && std::ranges::equal(came_back_, bytes);
}

void ChunkConverter::list_united(const Chunk &chunk, std::size_t consumed) {
    for (std::size_t at = 0; at < units_.chars.size(); ++at)
        if (!comes_back(chunk, units_.places[at], end_of(at, consumed), units_.chars[at]))
            united_.push_back(units_.places[at]);
    united_.erase(std::unique(united_.begin(), united_.end()), united_.end());
}

std::optional<char32_t> ChunkConverter::code_point(const Chunk &chunk, const Change &change) {
    const std::span<const std::uint8_t> bytes = chunk.bytes.subspan(change.place, change.length);
    const auto order = is_high_first(from_) ? kxstr::text::ByteOrder::high_first : kxstr::text::ByteOrder::low_first;
    if (from_.kind == EncodingKind::utf8) return value_of(kxstr::text::read_utf8(bytes), bytes);
    if (text_form(from_, text_page_) && is_unicode(from_))
        return value_of(kxstr::text::read_utf16(bytes, order), bytes);
    const auto told = [](char32_t value) { // a private-use value says less than the bytes
        return value >= 0xE000 && value <= 0xF8FF ? std::optional<char32_t>() : value;
    };
    if (goes_through_unicode(from_)) {
        const std::uint64_t offset = chunk.offset + change.place;
        const auto value = direct_ ? direct_->character_at(offset) : decoder_->character_at(offset);
        return value ? told(*value) : std::nullopt;
    }
    if (naming_) {
        // What a byte was before it was united only a published mapping knows.
        if (change.kind == Change::united && !kxstr::text::has_published_mapping(from_.page)) return std::nullopt;
        ByteBuffer utf8;
        const auto done = naming_->convert({bytes, 1, true}, utf8);
        const auto value =
            done.bad_length == 0 && !utf8.empty() ? value_of(kxstr::text::read_utf8(utf8), utf8) : std::nullopt;
        return value ? told(*value) : std::nullopt;
    }
    // Not in units_: this is asked about a change, while they are being written. Nor at the start of a file.
    one_.clear();
    const auto result = decoder_->decode({bytes, 1, true}, one_);
    if (result.bad_length != 0 || one_.chars.size() != 1) return std::nullopt;
    const std::uint16_t unit = unicode_of_kx(text_page_, one_.chars[0]);
    return unit != KX_NONE ? told(unit) : std::nullopt;
}

} // namespace kx
