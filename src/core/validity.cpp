#include "core/validity.h"

#include <kxstr/core.h>

#include "platform/system.h"

extern "C" uint32_t ValidKxCharacter(uint32_t ch) {
    return kxstr::core::is_valid(kxstr::low16(ch), kxstr::platform::is_double_byte_system()) ? 1 : 0;
}
