#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <string>

#include "platform/ansi_text.h"
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
    std::mutex mutex;
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

} // namespace

std::uint16_t add_atom(const char *text) noexcept try {
    if (text == nullptr) return 0;
    const std::size_t length = strnlen(text, kMaxLength + 1);
    if (length == 0 || length > kMaxLength) return 0;
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
