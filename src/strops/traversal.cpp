#include <kxstr/strops.h>

#include "forms/step.h"

using namespace kxstr;

extern "C" {

KxChar *W6wstrFirstCh(const KxChar *position) {
    return const_cast<KxChar *>(forms::skip_codes(position));
}

KxChar *W6wstrNextCh(const KxChar *position) {
    return const_cast<KxChar *>(forms::next_char(position));
}

KxChar *W6wstrPrevCh(const KxChar *start, const KxChar *position) {
    if (position <= start) return const_cast<KxChar *>(start);
    do {
        --position;
    } while (position > start && is_code(*position));
    return const_cast<KxChar *>(position);
}

int32_t W6wstrchrcnt(const KxChar *string) {
    std::int32_t count = 0;
    for (const KxChar *ch = forms::skip_codes(string); *ch != 0; ch = forms::next_char(ch))
        ++count;
    return count;
}

uint8_t *W6dstrFirstCh(const uint8_t *position) {
    return const_cast<std::uint8_t *>(forms::skip_codes(position));
}

uint8_t *W6dstrNextCh(const uint8_t *position) {
    return const_cast<std::uint8_t *>(forms::next_char(position));
}

} // extern "C"
