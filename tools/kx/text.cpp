#include "text.h"

#include "codepage/country.h"
#include "platform/system.h"

namespace kx {

CodePage system_page() {
    return page_of_windows_number(kxstr::platform::ansi_code_page());
}

void set_country(std::uint8_t id) {
    kxstr::codepage::set_country(id);
}

} // namespace kx
