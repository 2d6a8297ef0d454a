#include "codepage/selection.h"

#include <array>

#include "codepage/country.h"
#include "codepage/descriptor.h"
#include "codepage/state.h"
#include "platform/system.h"

namespace kxstr::codepage {
namespace {

struct CountryDefaults {
    std::uint16_t dos;
    std::uint16_t windows;
};

// By country; 0 where the system decides.
constexpr std::array<CountryDefaults, 7> kCountryDefaults{{
    {0, 0},      // none
    {932, 932},  // Japanese
    {934, 949},  // Korean
    {938, 950},  // Traditional Chinese
    {936, 936},  // Simplified Chinese
    {710, 1256}, // Arabic
    {862, 1255}, // Hebrew
}};

} // namespace

std::uint16_t dos_code_page() noexcept {
    const std::uint16_t by_country = kCountryDefaults[country_id()].dos;
    return by_country != 0 ? by_country : static_cast<std::uint16_t>(platform::oem_code_page());
}

std::uint16_t windows_code_page() noexcept {
    ProcessState &state = process_state();
    if (state.windows_code_page == 0) state.windows_code_page = kCountryDefaults[country_id()].windows;
    if (state.windows_code_page == 0) {
        state.windows_code_page = static_cast<std::uint16_t>(platform::ansi_code_page());
    }
    return state.windows_code_page;
}

void fill_descriptors() noexcept {
    ProcessState &state = process_state();
    // A double-byte system has one code page for both.
    const std::uint16_t oem = platform::is_double_byte_system() ? windows_code_page() : dos_code_page();
    set_code_page(state.oem, oem, kBothDirections);
    set_code_page(state.ansi, windows_code_page(), kBothDirections);
}

void ensure_descriptors() noexcept {
    ProcessState &state = process_state();
    if (state.descriptors_ready) return;
    fill_descriptors();
    state.descriptors_ready = true;
}

void clear_descriptors() noexcept {
    ProcessState &state = process_state();
    if (!state.descriptors_ready) return;
    state.ansi = {};
    state.oem = {};
    state.descriptors_ready = false;
}

const KxCodePage &ansi_descriptor() noexcept {
    ensure_descriptors();
    return process_state().ansi;
}

const KxCodePage &oem_descriptor() noexcept {
    ensure_descriptors();
    return process_state().oem;
}

} // namespace kxstr::codepage
