// Everything that the rest of the library knows about vectors: a table of small loops over memory (kernels), one table
// for each family of processors, chosen when the library is loaded.
//
// Every kernel has a plain form, which says what it does; the vector forms give the same results. A family that has
// nothing better for a kernel takes the form of the family below it.
//
// The kernels that look for something read no page that a walk from unit to unit would not read as well, the limit of a
// walk being as good as a terminator; within that page they may read on. Lengths, limits and results count units: 8 in
// a name stands for bytes, 16 for units of 16 bits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kxstr::simd {

// Three units by which a string sought is told from most others, none of them 0, and where in it they lie. The third
// lies behind the others.
struct Signs16 {
    std::size_t at[3];
    std::uint16_t units[3];
};

struct Found16 {
    bool is_known;
    const std::uint16_t *place; // null when nowhere
};

// A value for each of the units that words of Latin letters are made of, by which strings are ordered: 0 for the
// terminator alone, kNotTold where it takes more than a value. Two letters of ASCII can be a pair, which moves the
// value of the first one; no other letters but their capitals have the values of these. Letters of ASCII have the
// values of their capitals.
struct OrderValues {
    // Who goes on where that is not told, with what the caller gave; so nothing has to be kept for it.
    using GoOn = int(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values, std::uint32_t flag,
                     std::uint32_t other_flag) noexcept;

    static constexpr std::uint8_t kNotTold = 0xFF;
    static constexpr std::uint16_t kFirstLatin = 0x102, kEndLatin = 0x200;

    alignas(64) std::uint8_t ascii[0x80];
    std::uint8_t latin[0x80]; // of the units from 0x100 on, one for each two of them; the first is 0, and nobody's
    // The same of a string's first unit: kNotTold, too, where what stands behind it may tell another order.
    std::uint8_t first[kEndLatin];

    // A bit for each pair that a unit begins, and for each that goes on with it. kMoves: always among the former, among
    // the latter where a pair that begins with the unit is not the next value.
    static constexpr std::size_t kPairs = 2;
    static constexpr std::uint8_t kMoves = 1 << kPairs;
    std::uint8_t begins[kEndLatin], follows[kEndLatin];
    static constexpr std::uint16_t kCaseBit = 0x20;
    struct Pair {
        std::uint16_t first, second; // small letters, the capitals count as well
        std::uint16_t step;
    };
    Pair pairs[kPairs];
    std::size_t pair_count;
    GoOn *go_on;

    std::uint8_t of(std::uint16_t unit) const noexcept {
        if (unit < 0x80) return ascii[unit];
        return unit >= kFirstLatin && unit < kEndLatin ? latin[(unit - 0x100) / 2] : kNotTold;
    }
};

// The kernels' types as functions: a member of the table is a pointer to one, and each family declares its form by it
// (families.h).
using FindZero16 = const std::uint16_t *(const std::uint16_t *string) noexcept;
using Size8 = std::uint32_t(const std::uint8_t *string) noexcept;
using Size16 = std::uint32_t(const std::uint16_t *string) noexcept;
using Find8 = const std::uint8_t *(const std::uint8_t *string, std::uint8_t wanted) noexcept;
using Find16 = const std::uint16_t *(const std::uint16_t *string, std::uint16_t wanted) noexcept;
using FindWithin16 = std::size_t(const std::uint16_t *units, std::size_t count, std::uint16_t wanted) noexcept;
using FindSigns16 = const std::uint16_t *(const std::uint16_t *string, const Signs16 &signs) noexcept;
using FindShort16 = Found16(const std::uint16_t *string, const std::uint16_t *wanted) noexcept;
using Outside8 = std::size_t(const std::uint8_t *bytes, std::size_t count, std::uint8_t low,
                             std::uint8_t high) noexcept;
using Outside16 = std::size_t(const std::uint16_t *units, std::size_t count, std::uint16_t low,
                              std::uint16_t high) noexcept;
using Mismatch8 = std::size_t(const std::uint8_t *a, const std::uint8_t *b, std::size_t limit) noexcept;
using Mismatch16 = std::size_t(const std::uint16_t *a, const std::uint16_t *b, std::size_t limit) noexcept;
using Compare8 = int(const std::uint8_t *a, const std::uint8_t *b) noexcept;
using Compare16 = int(const std::uint16_t *a, const std::uint16_t *b) noexcept;
using OrderByValues16 = OrderValues::GoOn;
using OrderByBlock16 = int(const std::uint16_t *a, const std::uint16_t *b, const std::uint8_t *block,
                           Compare16 *go_on) noexcept;
using Copy16 = std::uint16_t *(std::uint16_t *destination, const std::uint16_t *source) noexcept;

// How far a text came: units read and written of each side's own.
struct Progress {
    std::size_t read, written;
};

// The maps: `map` holds a value for each unit, and the units up to kLastSame map to themselves: bytes only from 0x20
// on. Nothing but the results is written.
inline constexpr std::uint16_t kLastSame = 0x7E;
using MapBytes = std::size_t(const std::uint16_t *map, const std::uint8_t *source, std::size_t limit,
                             std::uint16_t *destination) noexcept;
using MapUnits = std::size_t(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                             std::uint16_t *destination) noexcept;
// What becomes of units whose value is 0xFFFF.
enum class NoCode : bool { drop, mark };
// What a map of codes of two bytes, or of the characters that become such codes, has for its units, if that is put
// together of a value for each of their bytes, as the rules of double-byte pages mostly have it: vectors look bytes up
// without loading a value for each unit.
struct PairValues {
    // By a unit's high and by its low byte: the value's high and low byte. Unless one of them says that the map knows.
    static constexpr std::uint8_t kAskHigh = 0, kAskLow = 0xFF;
    alignas(64) std::uint8_t high[0x100];
    std::uint8_t low[0x100];
    // The values of the first 256 units, their bytes apart.
    std::uint8_t single_high[0x100];
    std::uint8_t single_low[0x100];
};
// The kernels that ask for the `values` of one find the pairs behind them.
struct alignas(64) PairMap {
    using Value = std::uint16_t;
    std::array<Value, 0x10000> values;
    PairValues pairs;
};

using EncodeUnits = Progress(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                             std::uint8_t *destination, NoCode no_code) noexcept;
using DecodePairs = Progress(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                             std::size_t count, std::uint16_t *destination) noexcept;

using DecodeShort = bool(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                         std::size_t limit, std::uint16_t *destination) noexcept;

using StreamOfShort = std::size_t(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                                  std::uint8_t *stream, std::size_t room) noexcept;

// Document streams; what a code is tells forms/code_size.h. Extended characters go by their size of four bytes,
// whatever the bytes are.
using SkipCharacters = const std::uint8_t *(const std::uint8_t *code) noexcept;
using FilterStream = Progress(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                              const std::uint8_t *kept) noexcept;
// `filtered`: the bytes that the codes take before extended characters give way.
struct Narrowed {
    std::size_t read, filtered, written, dropped;
};
using NarrowStream = Narrowed(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                              const std::uint8_t *kept, const std::uint16_t *codes) noexcept;
using WriteStream = Progress(std::uint8_t *stream, const std::uint16_t *characters, std::size_t count,
                             std::size_t room) noexcept;
using StreamOfBytes = std::size_t(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                                  std::size_t room) noexcept;

// Letter case. The characters first to first + span, of one set, change by `step`: all of them, or (`pairs` is 1, not
// 0) those of each pair 2k and 2k + 1 that stand in the other case. A step of 0: no range.
struct CaseRange {
    std::uint16_t first;
    std::uint16_t span;
    std::uint16_t step; // modulo 0x10000
    std::uint16_t pairs;

    bool holds(std::uint16_t unit) const noexcept { return static_cast<std::uint16_t>(unit - first) <= span; }
};
// What the characters of the ranges become in one direction. What they become does not change again.
struct CaseMap {
    static constexpr std::size_t kSlots = 32;
    static constexpr std::size_t kCommon = 4;

    // The widest range of a set stands at set % 32, in the way of no other set's. One with an odd step is of pairs.
    alignas(64) std::uint16_t first[kSlots];
    std::uint16_t span[kSlots];
    std::uint16_t step[kSlots];

    // All ranges: those that every map has (ASCII is [0]), more that have slots, too, up to `slotted`, and the rest.
    CaseRange ranges[kCommon + 16];
    std::size_t slotted;
    std::size_t count;
    CaseRange behind_common;  // from the first to the last character of the ranges behind kCommon
    CaseRange behind_slotted; // the same behind `slotted`
    bool lower;               // steps go up, and change the even ones of pairs; else down, and the odd ones

    std::uint16_t of(std::uint16_t unit) const noexcept {
        const std::size_t slot = unit / 256u % kSlots;
        if (static_cast<std::uint16_t>(unit - first[slot]) <= span[slot])
            return moved(unit, step[slot], step[slot] % 2 != 0);
        if (!behind_slotted.holds(unit)) return unit;
        for (std::size_t i = slotted; i < count; ++i) {
            if (ranges[i].holds(unit)) return moved(unit, ranges[i].step, ranges[i].pairs != 0);
        }
        return unit;
    }

  private:
    std::uint16_t moved(std::uint16_t unit, std::uint16_t by, bool pairs) const noexcept {
        if (pairs && (unit % 2 != 0) == lower) return unit;
        return static_cast<std::uint16_t>(lower ? unit + by : unit - by);
    }
};
using MapCase16 = std::size_t(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to,
                              std::size_t limit) noexcept;
using ChangeCase16 = std::uint16_t *(const CaseMap &map, std::uint16_t *string) noexcept;
using MismatchByCase16 = std::size_t(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                                     std::size_t limit) noexcept;
// 256 entries of 16 bits, their bytes apart as vectors look them up.
struct MapPage {
    std::uint8_t low[0x100];
    std::uint8_t high[0x100];

    constexpr std::uint16_t operator[](std::size_t index) const noexcept {
        return static_cast<std::uint16_t>(low[index] | (high[index] << 8));
    }
    constexpr void set(std::size_t index, std::uint16_t value) noexcept {
        low[index] = static_cast<std::uint8_t>(value);
        high[index] = static_cast<std::uint8_t>(value >> 8);
    }
};
using Translate8 = std::size_t(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units,
                               const MapPage &table) noexcept;
using Translate16 = std::size_t(const std::uint16_t *from, std::size_t count, std::uint16_t *to,
                                const MapPage *const *pages) noexcept;
using Utf8OfUnits = Progress(const std::uint16_t *units, std::size_t count, std::uint8_t *bytes) noexcept;
using UnitsOfUtf8 = Progress(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units) noexcept;
// A page in UTF-8. The bytes 0x80..0xFF: up to three bytes for each, in two layouts: together with their number, which
// is 0 for a byte without a character; and the first, second and third ones apart, 0 where there is none. The bytes
// below: one for each, below 0x80 as well; themselves, unless `changes_low`.
struct Utf8Page {
    std::uint8_t entries[0x80][4];
    std::uint8_t apart[3][0x80];
    std::uint8_t low[0x80];
    bool changes_low;
};
using Utf8OfBytes = Progress(const Utf8Page &page, const std::uint8_t *from, std::size_t count,
                             std::uint8_t *to) noexcept;
// The byte that a page has for a unit, 0 for none, in tables of 256 for the high bytes that occur. Units below 0x80 are
// themselves.
struct ByteOfUnits {
    static constexpr std::size_t kTables = 12;
    std::uint8_t table_of[0x100]; // of a unit's high byte; 0, the table of the units below 0x100, for another: none
    std::uint8_t bytes[kTables][0x100];

    std::uint8_t operator[](std::uint16_t unit) const noexcept {
        const std::uint8_t table = table_of[unit >> 8];
        return table == 0 && unit > 0xFF ? std::uint8_t{0} : bytes[table][unit & 0xFF];
    }
};
using BytesOfUtf8 = Progress(const ByteOfUnits &page, const std::uint8_t *from, std::size_t count,
                             std::uint8_t *to) noexcept;
using BytesOfMapped = Progress(const std::uint16_t *map, const std::uint16_t *units, std::size_t count,
                               std::uint8_t *bytes) noexcept;

struct Kernels {
    const char *name; // plain, avx2, avx512

    // What these give is what the exported functions give: the way back from them would take a third of the time that
    // a short string takes.
    Size8 *size8;                // bytes before the terminator, modulo 2^32
    Size16 *size16;              // the same, bytes, too
    Find8 *find8;                // the first `wanted` before the terminator, or null
    Find16 *find16;              // the same
    Copy16 *copy16;              // copies a string with its terminator; the two may overlap. The destination
    ChangeCase16 *change_case16; // map_case16 in place, without a limit. The string

    FindZero16 *find_zero16;     // the terminator
    Find16 *find_last16;         // the last `wanted` before the terminator, or null
    FindWithin16 *find_within16; // units before the first `wanted`, or all `count`
    FindSigns16 *find_signs16;   // the first place with the signs, all of them before the terminator, or null
    FindShort16
        *find_short16; // where a string holds another, not empty: a quick answer for short ones, where there is one

    // Units before the first one that is less than `low` or greater than `high`, or all `count`. low <= high.
    Outside8 *outside8;
    Outside16 *outside16;

    // Where two strings differ first or both end; `limit` when that is not before it.
    Mismatch8 *mismatch8;
    Mismatch16 *mismatch16;
    Mismatch16 *mismatch16_caseless; // a to z are taken as A to Z
    // The difference of the units at that place, without a limit.
    Compare8 *compare8;
    Compare8 *compare8_caseless; // a to z are taken as A to Z
    Compare16 *compare16;

    // How two strings lie by the first values that differ: negative or positive. What go_on says where that is not
    // told: for strings without such values, where a string begins with no ASCII and no Latin unit, where up to there
    // units without a value differ, where (if there are pairs) one without a value stands right before that place or a
    // pair may have lost its first letter to what stands before it; and in vector forms where units without a value are
    // the same or the way is long.
    OrderByValues16 *order_by_values16;

    // How two strings lie by the units that differ first, as a block of a collation sequence has them (block_order.h):
    // -1 or 1; what go_on says where that is not told, in vector forms also where the way there is long.
    OrderByBlock16 *order_by_block16;
    OrderByBlock16 *order_by_block16_caseless; // a to z are taken as A to Z

    // Document streams.
    // The first code that is the terminator, or neither one below 0xD0 nor an extended character.
    SkipCharacters *skip_characters;
    // Copies codes up to such a one, to one that does not fit, or until the room is full; a vector form may stop at an
    // earlier extended character. `kept`: what each byte below 0xD0 becomes (256 bytes), 0 for nothing; 0xF0 stands for
    // itself. The destination may be the source.
    FilterStream *filter_stream;
    // The same, and extended characters give way to native codes of all 65,536 characters (the values of a PairMap):
    // one byte, two if above 0xFF, 0xFFFF drops the character. The room is that for what filter_stream would write.
    // Stops at no extended character before the room is full.
    NarrowStream *narrow_stream;
    // Characters as a stream: those of set 0 as a byte, others as extended characters, 0xFFFF for none. Stops at one
    // that does not fit.
    WriteStream *write_stream;
    // The same of what a map has for the bytes of a string (the map as below), up to the terminator, and no further
    // than there is room; gives the bytes written. The two do not overlap.
    StreamOfBytes *stream_of_bytes;

    // A string up to its terminator, at most `limit` bytes, and a 0 behind the values; gives how many these are. Long
    // ones from the last byte to the first: source and destination may begin at one address.
    MapBytes *map_bytes;
    // A string up to and including the first value that is 0, which the terminator's is, at most `limit` units; gives
    // the values before the 0. Works in place.
    MapUnits *map_units;
    // A string up to its terminator, at most `limit` units, by the values of a PairMap. Values up to 0xFF are written
    // as one byte, 0x80 in place of a missing one, others as two, the high byte first. Works in place.
    EncodeUnits *encode_units;
    // Codes of one byte, or of two, the first of which has 0x80 in `leads` (256 entries, 0 below 0x80); a first byte
    // without a second at the end is left. 0 is not among the bytes. Without a map the codes stay what they are.
    DecodePairs *decode_pairs;
    // The same by the values of a PairMap.
    DecodePairs *decode_page;
    // The same of a string up to its terminator, at most `limit` values, and a 0 behind them; a first byte without a
    // second is dropped. A quick answer for short ones, where there is one: false, and nothing is done. Works in place.
    DecodeShort *decode_short;
    // The same as a stream, as write_stream has it, and a terminator behind it: the bytes of both, or 0 when nothing is
    // done, as where the room without the terminator does not take all.
    StreamOfShort *stream_of_short;

    // Letter case. The units before the terminator of `from`, at most `limit` of them, go to `to`, each as the map has
    // it; nothing is written behind them. Gives how many they are. `to` is `from`, or the two do not overlap.
    MapCase16 *map_case16;
    MismatchByCase16 *mismatch_by_case16; // mismatch16 of what the map makes of the units

    // Every byte, every unit gives way to its entry in a table: of 256 entries, or of 256 pages of so many by the
    // unit's high byte. Up to the first entry that is 0xFFFF or page that is null; give the units done. `to` may be
    // `from`.
    Translate8 *translate8;
    Translate16 *translate16;

    // Texts from one form to another, up to the first character that the other form lacks.
    // UTF-16 to UTF-8, not half surrogates nor 0xFFFF; room for 3 * count bytes.
    Utf8OfUnits *utf8_of_units;
    // UTF-8 to UTF-16, no characters beyond U+FFFF; room for `count` units. An incomplete character stays unread.
    UnitsOfUtf8 *units_of_utf8;
    // Codes of one or two bytes, the lead byte high, to bytes, not 0xFFFF; room for 2 * count bytes.
    Utf8OfUnits *bytes_of_codes;
    // A page of single bytes to UTF-8, up to a byte without a character; room for 3 * count bytes.
    Utf8OfBytes *utf8_of_bytes;
    // UTF-8 to such a page; room for `count` bytes. Characters beyond U+FFFF and incomplete ones stay unread.
    BytesOfUtf8 *bytes_of_utf8;
    // bytes_of_codes of the values that a map (two more may be read) has for units; those below 0x80 are themselves.
    BytesOfMapped *bytes_of_mapped;
};

// Hidden, so that the way to a kernel is two loads and a jump. Defined beside what chooses: whoever links the static
// library gets that only together with something that is needed.
#pragma GCC visibility push(hidden)
extern constinit const Kernels *chosen_kernels;
#pragma GCC visibility pop

// The best family that the processor can run. KXSTR_KERNELS in the environment names another one (one of available())
// for the whole process; a name that is none of them counts as unset. Before the library's initialisers have run these
// are the plain kernels. Threads: written only while the library is loaded.
inline const Kernels &kernels() noexcept {
    return *chosen_kernels;
}

// The families that the processor can run, plain first, best last.
std::span<const Kernels *const> available() noexcept;

} // namespace kxstr::simd
