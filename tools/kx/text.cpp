#include "text.h"

#include <kxstr/text.h>

#include "codepage/country.h"
#include "platform/system.h"

namespace kx {

CodePage system_page() {
    const CodePage page = page_of_windows_number(kxstr::platform::ansi_code_page());
    // UTF-8, for one, is no page that KX text can be written with.
    const KxTextForm text{KX_TEXT_KX, page.kx_number, nullptr};
    KxTextConverter converter;
    return KxTextPrepare(&converter, &text, &text, 0) != 0 ? page : page_of_windows_number(1252);
}

void set_country(std::uint8_t id) {
    kxstr::codepage::set_country(id);
}

} // namespace kx
