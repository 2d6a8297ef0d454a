#include "codepage/selection.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <kxstr/codepage.h>
#include <new>
#include <string_view>
#include <vector>

#include "codepage/country.h"
#include "codepage/descriptor.h"
#include "core/language.h"
#include "platform/bytes.h"
#include "platform/system.h"
#include "registry/key.h"
#include "registry/link_engine.h"
#include "registry/values.h"

namespace kxstr::codepage {

constinit CodePageState kept_code_pages{};

namespace {

constexpr CodePageState &state = kept_code_pages;

using KeyPath = std::array<char, 100>;
constinit KeyPath last_key_path{}; // for the callers that hold its address, and for nobody else

constexpr std::string_view kRoot = "HKEY_CURRENT_USER\\";
static_assert(std::string_view(kCodePageSettings).starts_with(kRoot));

// Of the current language, with the root's name.
KeyPath key_path() noexcept {
    KeyPath path{};
    char *end = path.data();
    for (const std::string_view part : {std::string_view(kCodePageSettings), std::string_view(core::language())})
        end = std::ranges::copy(part, end).out;
    return path;
}

// The number at the end of a link: the first two bytes of what it leads to. 0 when it leads nowhere.
std::uint16_t number_behind_link(registry::CYWKey &key, const char *value_name) noexcept try {
    if (key.GetLinkEngine() == 0) return 0;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> link;
    if (registry::read_value(key.key, value_name, type, link) != platform::kSuccess) return 0;
    type = registry::kLinkType;
    std::uint32_t size = 0;
    std::uint8_t *const result = registry::expand(*key.link_engine, link, type, false, false, size);
    if (result == nullptr) return 0;
    std::array<std::uint8_t, 2> number{};
    std::copy_n(result, std::min<std::size_t>(size, number.size()), number.begin());
    platform::task_free(result);
    return load_u16le(number.data());
} catch (const std::bad_alloc &) {
    return 0;
}

} // namespace

void keep_windows_code_page(std::uint16_t number) noexcept {
    state.windows_code_page.store(number, std::memory_order_relaxed);
}

void forget_code_pages() noexcept {
    keep_windows_code_page(0);
    state.descriptors_ready = true;
    clear_descriptors();
}

const char *settings_key() noexcept {
    const KeyPath path = key_path();
    // A path that is right is not written, so that threads may read the one that they hold.
    const platform::FirstUse guard;
    if (last_key_path != path) last_key_path = path;
    return last_key_path.data();
}

std::uint16_t stored_code_page(const char *value_name) noexcept {
    const KeyPath path = key_path();
    std::array<std::uint8_t, 2> number{};
    std::uint32_t type = 0;
    auto size = static_cast<std::uint32_t>(number.size());
    const std::uint32_t status = platform::query_value_at(platform::kCurrentUser, path.data() + kRoot.size(),
                                                          value_name, &type, number.data(), size);
    if (registry::is_link(type) && (status == platform::kSuccess || status == platform::kMoreData)) {
        registry::CYWKey key(path.data(), 0, platform::WhenLocked::gives_up);
        return key.is_open() ? number_behind_link(key, value_name) : std::uint16_t{0};
    }
    return status == platform::kSuccess ? load_u16le(number.data()) : std::uint16_t{0};
}

DefaultCodePage default_dos_code_page() noexcept {
    const std::uint16_t by_country = usual_code_pages(country_id()).dos;
    if (by_country != 0) return {by_country, true};
    return {static_cast<std::uint16_t>(platform::oem_code_page()), false};
}

DefaultCodePage default_windows_code_page() noexcept {
    const std::uint16_t by_country = usual_code_pages(country_id()).windows;
    if (by_country != 0) return {by_country, true};
    return {static_cast<std::uint16_t>(platform::ansi_code_page()), false};
}

std::uint16_t dos_code_page() noexcept {
    const std::uint16_t stored = stored_code_page(kDosValue);
    return stored != 0 ? stored : default_dos_code_page().number;
}

std::uint16_t windows_code_page() noexcept {
    std::uint16_t kept = state.windows_code_page.load(std::memory_order_relaxed);
    if (kept != 0) return kept;
    std::uint16_t found = stored_code_page(kWindowsValue);
    if (found == 0) found = default_windows_code_page().number;
    // One decision holds for all: the settings may have changed between two threads' looks.
    const bool first = state.windows_code_page.compare_exchange_strong(kept, found, std::memory_order_relaxed);
    return first ? found : kept;
}

bool store_windows_code_page(std::uint16_t code_page) noexcept {
    registry::CYWKey key(key_path().data(), 0);
    if (!key.is_open()) return false;
    std::array<std::uint8_t, 2> number{};
    store_u16le(number.data(), code_page);
    constexpr std::uint32_t kFollowLinks = 1;
    if (key.SetValue(kWindowsValue, registry::kCodePageType, number.data(), number.size(), kFollowLinks, 0) !=
        platform::kSuccess) {
        return false;
    }
    keep_windows_code_page(code_page);
    return true;
}

namespace {

void set_descriptors() noexcept {
    // A double-byte system has one code page for both.
    const std::uint16_t oem = platform::is_double_byte_system() ? windows_code_page() : dos_code_page();
    set_code_page(state.oem, oem, kBothDirections);
    set_code_page(state.ansi, windows_code_page(), kBothDirections);
}

} // namespace

void fill_descriptors() noexcept {
    const platform::FirstUse guard;
    set_descriptors();
}

void ensure_descriptors() noexcept {
    if (state.descriptors_ready.load(std::memory_order_acquire)) return;
    const platform::FirstUse guard;
    if (state.descriptors_ready.load(std::memory_order_relaxed)) return;
    set_descriptors();
    state.descriptors_ready.store(true, std::memory_order_release);
}

void clear_descriptors() noexcept {
    if (!state.descriptors_ready) return;
    state.ansi = {};
    state.oem = {};
    state.descriptors_ready = false;
}

} // namespace kxstr::codepage

extern "C" {

const char *WcvtGetRegistryLoc(void) {
    return kxstr::codepage::settings_key();
}

uint16_t WcvtGetDOSCodepage(void) {
    return kxstr::codepage::dos_code_page();
}

uint16_t WcvtGetWinCodepage(void) {
    return kxstr::codepage::windows_code_page();
}

uint32_t WcvtSetWinCodepage(uint32_t code_page) {
    return kxstr::codepage::store_windows_code_page(static_cast<uint16_t>(code_page)) ? 1 : 0;
}

const KxCodePage *WtpiGetAnsiCodepageTbl(void) {
    return &kxstr::codepage::ansi_descriptor();
}

const KxCodePage *WtpiGetOemCodepageTbl(void) {
    return &kxstr::codepage::oem_descriptor();
}
}
