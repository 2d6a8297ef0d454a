// The text API: whole and in pieces, with exactly the room that was measured, with the kernels in force and the plain
// ones.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <kxstr/codepage.h>
#include <kxstr/text.h>

#include "simd/families.h"
#include "targets.h"

namespace kxstr::fuzz {
namespace {

struct Fault {
    std::uint32_t reason;
    std::size_t at, size;
    bool operator==(const Fault &) const = default;
};

// What became of a whole text. Where a fault ends the work it goes on behind it.
struct Outcome {
    std::vector<std::uint8_t> bytes;
    std::vector<Fault> faults;
    std::size_t replaced = 0;
    bool operator==(const Outcome &) const = default;
};

KxTextForm form_of(Input &input, const KxCodePage *page) {
    const std::uint32_t form = input.below(8); // 0 is none
    const bool has_page = form == KX_TEXT_CODE_PAGE || ((form == KX_TEXT_KX || form == KX_TEXT_KXLE) && input.flag());
    return {form, has_page ? code_page_of(input) : 0, has_page && input.below(8) == 0 ? page : nullptr};
}

bool is_fault(std::uint32_t reason) {
    return reason >= KX_TEXT_INCOMPLETE;
}

void check(const KxTextResult &result, std::uint32_t reason, std::size_t length, std::size_t room) {
    require(result.read <= length && result.written <= room, "within the bounds");
    require(reason <= KX_TEXT_MALFORMED, "a reason");
    require(is_fault(reason) ? result.fault > 0 && result.fault <= length - result.read : result.fault == 0,
            "the fault's size");
    require(reason != KX_TEXT_DONE || result.read == length, "done is done");
}

// At once: measured, then with exactly that room.
Outcome convert_whole(Input &input, KxTextConverter converter, std::span<const std::uint8_t> text) {
    Outcome outcome;
    std::size_t at = 0;
    for (;;) {
        const Buffer<std::uint8_t> source(input, text.subspan(at));
        KxTextConverter measuring = converter;
        KxTextResult measured, result;
        const std::uint32_t expected = KxTextMeasure(&measuring, source.data(), source.size(), 1, &measured);
        const Buffer<std::uint8_t> to(input, measured.written);
        const std::uint32_t reason =
            KxTextConvert(&converter, source.data(), source.size(), 1, to.data(), to.size(), &result);
        check(result, reason, source.size(), to.size());
        require(reason == expected && result.read == measured.read && result.written == measured.written &&
                    result.replaced == measured.replaced && result.fault == measured.fault,
                "as it was measured");
        outcome.bytes.insert(outcome.bytes.end(), to.begin(), to.begin() + result.written);
        outcome.replaced += result.replaced;
        at += result.read;
        if (reason == KX_TEXT_DONE) return outcome;
        require(is_fault(reason), "what was measured fits");
        require(reason != KX_TEXT_INCOMPLETE, "the last piece is not incomplete");
        outcome.faults.push_back({reason, at, result.fault});
        at += result.fault;
    }
}

// A piece grows where nothing comes of it, and so does the room.
Outcome convert_in_pieces(Input &input, KxTextConverter converter, std::span<const std::uint8_t> text) {
    Outcome outcome;
    std::size_t at = 0;
    const std::size_t piece = 1 + input.below(40), most_room = input.below(40);
    std::size_t length = piece, room = most_room;
    for (;;) {
        length = std::min(length, text.size() - at);
        const bool last = at + length == text.size();
        const Buffer<std::uint8_t> source(input, text.subspan(at, length)), to(input, room);
        KxTextResult result;
        const std::uint32_t reason =
            KxTextConvert(&converter, source.data(), length, last ? 1 : 0, to.data(), room, &result);
        check(result, reason, length, room);
        outcome.bytes.insert(outcome.bytes.end(), to.begin(), to.begin() + result.written);
        outcome.replaced += result.replaced;
        at += result.read;
        if (reason == KX_TEXT_DONE && last) return outcome;
        require(reason != KX_TEXT_INCOMPLETE || !last, "the last piece is not incomplete");
        if (reason == KX_TEXT_NO_EQUIVALENT || reason == KX_TEXT_MALFORMED) {
            outcome.faults.push_back({reason, at, result.fault});
            at += result.fault;
        }
        const bool stuck = result.read == 0 && result.written == 0;
        length = !stuck ? piece : reason == KX_TEXT_INCOMPLETE ? length + 1 : length;
        room = !stuck ? most_room : reason == KX_TEXT_FULL ? room + 1 : room;
        require(room < 64 && length < text.size() + 64, "a piece that is long enough and has room enough goes on");
    }
}

} // namespace

void text(Input &input) {
    choose_system(input);
    KxCodePage page;
    WcvtClrCodepage(&page);
    WcvtSetCodepage(code_page_of(input), KX_BOTH_DIRECTIONS, &page);
    const KxTextForm from = form_of(input, &page), to = form_of(input, &page);
    const std::uint32_t flags = input.below(4);
    KxTextConverter converter;
    if (KxTextPrepare(&converter, &from, &to, flags) == 0) return;
    if ((flags & KX_TEXT_DROP) == 0 && input.flag()) KxTextSubstitute(&converter, input.number() % 0x110000);

    const std::uint8_t shape = input.byte();
    auto bytes = input.part(3000);
    std::vector<std::uint8_t> units;
    if (shape % 4 == 0) { // units of KX text rather than any bytes
        for (const std::uint16_t unit : kx_of(input))
            units.insert(units.end(), {static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(unit >> 8)});
        bytes = units;
    }
    const Buffer<std::uint8_t> start(input, bytes);
    require(KxTextMark(from.form, start.data(), start.size()) <= 3, "a mark has three bytes at most");
    const Outcome whole = convert_whole(input, converter, bytes);
    require(convert_in_pieces(input, converter, bytes) == whole, "in pieces as at once");
    // The kernels may not differ in a byte.
    const simd::Kernels *const chosen = simd::chosen_kernels;
    simd::chosen_kernels = &simd::plain::kKernels;
    require(convert_whole(input, converter, bytes) == whole, "with the plain kernels as with the chosen ones");
    simd::chosen_kernels = chosen;
}

} // namespace kxstr::fuzz
