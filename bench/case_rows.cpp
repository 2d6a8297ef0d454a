// Lower case of KX strings, against ICU's for the language.
#include "peers.h"
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstring>
#include <kxstr/letters.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace kxbench {
namespace {

constexpr std::size_t kSizes[] = {16, 1 << 10, 1 << 16};

struct Letters {
    Text text;
    std::string language;

    void clear_output() { text.clear_output(); }
};

// Unit by unit, as the single-character function has it.
bool is_lower_kx(const Letters &in, const KxChar *result) {
    return std::ranges::equal(in.text.kx, std::span(result, in.text.kx.size()), {},
                              [](KxChar ch) { return wtolower(ch); });
}

// The last sigma of a Greek word is a letter of its own to ICU only.
bool is_lower_unicode(const Letters &in, std::int32_t size) {
    constexpr UChar kSigma = 0x03C3, kFinalSigma = 0x03C2;
    const auto without_final = [](UChar32 unit) { return unit == kFinalSigma ? UChar32{kSigma} : unit; };
    return size == static_cast<std::int32_t>(in.text.size()) &&
           std::ranges::equal(
               std::span(in.text.utf16).first(in.text.size()), std::span(in.text.units_out).first(in.text.size()), {},
               [&](std::uint16_t unit) { return without_final(u_tolower(unit)); }, without_final);
}

} // namespace

void add_case_rows() {
    for (const std::string language : current().texts) {
        for (const std::size_t size : kSizes) {
            Row<Letters>("W6wstrlwr", language, size,
                         [=] {
                             return Letters{text_of(language, size), language};
                         })
                // It works in place, so the text is put back each time. The peer, which writes elsewhere, copies as
                // much.
                .entrant(
                    "ours",
                    [](Letters &in) {
                        std::memcpy(in.text.units_out.data(), in.text.kx.data(), in.text.kx.size() * 2);
                        return W6wstrlwr(in.text.units_out.data());
                    },
                    is_lower_kx)
                .entrant(
                    "icu",
                    [](Letters &in) {
                        UErrorCode status = U_ZERO_ERROR;
                        std::memcpy(in.text.units_out.data(), in.text.utf16.data(), in.text.utf16.size() * 2);
                        return u_strToLower(uchars(in.text.units_out.data()),
                                            static_cast<std::int32_t>(in.text.units_out.size()),
                                            uchars(in.text.utf16.data()), static_cast<std::int32_t>(in.text.size()),
                                            in.language.c_str(), &status);
                    },
                    is_lower_unicode)
                .entrant(
                    "floor-memcpy",
                    [](Letters &in) {
                        return std::memcpy(in.text.units_out.data(), in.text.kx.data(), in.text.kx.size() * 2);
                    },
                    [](const Letters &, auto) { return true; });
        }
    }
}

} // namespace kxbench
