// The engine behind registry links: a link's data is an expression that says where the real value lives.
//
//     <Key\Value>                         the value under HKEY_CURRENT_USER\Software
//     <\HKEY_LOCAL_MACHINE\Key\Value>     the value under another root
//     <Key\Value>|<Other\Value>           what the first leaves open, the second may give
//     <Key\One>*<Key\Two>                 two texts joined, each alternative of one with each of the other
//     "text"                              text, quotes included
//
// A reference to a plain value ends the evaluation: the result is that value's data, whatever came before. References
// to missing values add nothing, references to links are evaluated in turn.
//
// Text is UTF-16, little-endian by bytes, in the registry, in the work area and in results.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/roots.h"
#include "platform/system.h"
#include "registry/search_list.h"

namespace kxstr::registry {

// Errors beside those of the system (kOutOfMemory, kCannotOpen).
inline constexpr std::uint32_t kUnterminatedQuote = 0xE2D50001;
inline constexpr std::uint32_t kUnterminatedReference = 0xE2D50002; // also a join without two references to join
inline constexpr std::uint32_t kStrayCloseOrLoop = 0xE2D50003;

inline constexpr std::uint32_t kWorkAreaSize = 1'048'576;
inline constexpr std::uint32_t kWorkAreaStep = 4096; // committed at a time
inline constexpr unsigned kMaxLinkDepth = 256; // links within links; bounds the stack, deeper ones are out of memory
// The work of one evaluation, so that links to links to links do not take time without end: each reference counts 1,
// and so do each 4096 bytes of text that are read for it or joined. More is out of memory, too.
inline constexpr unsigned kMaxLinkWork = 4096;

struct LinkEngine {
    platform::KeyHandle settings_key = platform::KeyHandle::null; // holds the syntax characters
    platform::KeyHandle base_key = platform::KeyHandle::null;     // of references without a root
    // Quote, join, reference open, reference close, alternative: the built-in ones, or a buffer of the task heap.
    const std::uint16_t *syntax = nullptr;
    std::uint8_t *work_area = nullptr;
    std::uint32_t reserved = 0; // bytes of the work area,
    std::uint32_t used = 0;     // with text,
    std::uint32_t committed = 0;
    YWSEARCHLIST active_links; // atoms of the links being expanded
    std::uint32_t last_error = 0;
};

// What becomes of keys and settings that are missing.
enum class Missing : std::uint8_t { created, left };

// Readies a fresh engine. False: `last_error` tells why, and the engine serves for nothing but release.
//
// The syntax characters are read from the registry. A stored text of fewer than five leaves the others as they are by
// default; one of more than seven, or no text at all, is replaced by the default (Missing::created: in the registry
// too). Keys and settings are created only if no other process is writing them: nobody waits for that.
bool set_up(LinkEngine &engine, Missing missing = Missing::created) noexcept;

// Evaluates a link.
//
// `link`     the link's data; a zero ends it early, an odd byte at its end does not count.
// `type`     kLinkType; becomes the type of the plain value that the evaluation ended with, if it did.
// `in_place` the result stays in the work area, appended to what is there.
// `target`   asks where a write goes instead of for the value: as text for target_of, behind whose terminator more may
//            follow. It is the last reference that the evaluation came to, found or not, else the literal text.
// `size`     bytes of the result. Text has a terminating zero, counted; data of a plain value has none but its own.
//
// Returns the work area (in place) or a block for platform::task_free; null after a failure, with `last_error` set.
std::uint8_t *expand(LinkEngine &engine, std::span<const std::uint8_t> link, std::uint32_t &type, bool in_place,
                     bool target, std::uint32_t &size) noexcept;

// What target mode yields, up to its first zero; nothing after a failure, with `last_error` set. Throws std::bad_alloc.
std::optional<std::u16string> target_text(LinkEngine &engine, std::span<const std::uint8_t> link);

// Gives everything back; the engine is as fresh.
void release(LinkEngine &engine) noexcept;

// Where a text points. Views into the text.
struct ValuePath {
    const platform::Root *root; // null: the base key
    std::u16string_view key_path;
    std::u16string_view value_name;
};
// Where a reference's value is read.
ValuePath value_path_of(std::u16string_view reference) noexcept;
// Where a write goes by the text that target mode yields: a text without a root is below HKEY_CURRENT_USER, although
// such a reference reads below HKEY_CURRENT_USER\Software. One with a root reads and writes in one place.
ValuePath target_of(std::u16string_view text) noexcept;

} // namespace kxstr::registry
