// Letters that sort as one ("ch" in Spanish) and characters that sort as two letters.
#pragma once

#include "collate/values.h"

namespace kxstr::collate {

// Marks the pending character of a contraction: the current one sorts behind everything that begins with it.
inline constexpr KxChar kContracted = 0x80;

// Looks for a contraction or an expansion that begins with `ch`, which stands just before `position` (or is pending
// from the one before). Finding one replaces `ch`, moves `position` past a letter that was drawn in, and gives the
// character that is to be read next, with kContracted for a contraction. Finding none gives 0 and changes nothing.
KxChar contract(KxChar &ch, const KxChar *&position, const LanguageRules &rules) noexcept;

} // namespace kxstr::collate
