#include <kxstr/strops.h>

#include "core/text.h"
#include "forms/step.h"

using namespace kxstr;

namespace {

// Both positions are at text.
bool begins_with(const KxChar *text, const KxChar *prefix) noexcept {
    while (*prefix != 0 && *text == *prefix) {
        text = forms::next_char(text);
        prefix = forms::next_char(prefix);
    }
    return *prefix == 0;
}

bool contains(const KxChar *set, KxChar unit) noexcept {
    while (*set != 0 && *set != unit)
        ++set;
    return *set != 0;
}

} // namespace

extern "C" {

KxChar *W6wstrstr(const KxChar *string, const KxChar *to_find) {
    const KxChar *wanted = forms::skip_codes(to_find);
    if (*wanted == 0) return nullptr;
    for (const KxChar *start = forms::skip_codes(string); *start != 0; start = forms::next_char(start)) {
        if (begins_with(start, wanted)) return const_cast<KxChar *>(start);
    }
    return nullptr;
}

KxChar *W6wstrdelim(const KxChar *string, const KxChar *delimiters) {
    while (*string != 0 && !contains(delimiters, *string))
        ++string;
    return const_cast<KxChar *>(string);
}

} // extern "C"
