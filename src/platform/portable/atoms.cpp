#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ansi_text.h"
#include "platform/portable/mutex.h"
#include "platform/system.h"

namespace kxstr::platform {
namespace {

constexpr std::uint16_t kFirstAtom = 0xC000;
constexpr std::size_t kAtoms = 0x10000 - kFirstAtom;
constexpr std::size_t kMaxLength = 255; // bytes

struct Atoms {
    struct Use {
        std::uint16_t atom;
        std::size_t count;
    };
    Mutex mutex;
    std::map<std::u16string, Use> by_text; // upper-case text
    std::map<std::uint16_t, std::map<std::u16string, Use>::iterator> by_number;
    std::uint16_t next = kFirstAtom;

    std::uint16_t free_number() {
        while (by_number.contains(next))
            next = next == 0xFFFF ? kFirstAtom : static_cast<std::uint16_t>(next + 1);
        return next;
    }
};

Atoms &atoms() {
    static Atoms all;
    return all;
}

// The atom that `#` and a decimal number name; nothing for other texts.
std::optional<std::uint16_t> numbered_atom(std::string_view text) noexcept {
    const std::string_view digits = text.substr(1);
    if (text[0] != '#' || digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) return std::nullopt;
    std::uint32_t number = 0;
    for (const char digit : digits)
        number = std::min(number * 10 + static_cast<std::uint32_t>(digit - '0'), std::uint32_t{kFirstAtom});
    return static_cast<std::uint16_t>(number == kFirstAtom ? 0 : number);
}

} // namespace

std::uint16_t add_atom(const char *text) noexcept try {
    if (text == nullptr) return 0;
    const std::size_t length = strnlen(text, kMaxLength + 1);
    if (length == 0 || length > kMaxLength) return 0;
    if (const auto numbered = numbered_atom({text, length})) return *numbered;
    Atoms &all = atoms();
    const std::lock_guard guard(all.mutex);
    std::u16string key = upper_case(ansi_to_wide({text, length}));
    if (const auto found = all.by_text.find(key); found != all.by_text.end()) {
        ++found->second.count;
        return found->second.atom;
    }
    if (all.by_number.size() == kAtoms) return 0;
    const std::uint16_t atom = all.free_number();
    const auto place = all.by_number.emplace(atom, all.by_text.end()).first;
    try {
        place->second = all.by_text.emplace(std::move(key), Atoms::Use{atom, 1}).first;
    } catch (const std::bad_alloc &) {
        all.by_number.erase(place);
        throw;
    }
    return atom;
} catch (const std::bad_alloc &) {
    return 0;
}

void delete_atom(std::uint16_t atom) noexcept {
    Atoms &all = atoms();
    const std::lock_guard guard(all.mutex);
    const auto found = all.by_number.find(atom);
    if (found == all.by_number.end() || --found->second->second.count != 0) return;
    all.by_text.erase(found->second);
    all.by_number.erase(found);
}

} // namespace kxstr::platform
