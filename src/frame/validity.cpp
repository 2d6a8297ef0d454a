#include "frame/validity.h"

#include <kxstr/frame.h>

#include "platform/system.h"

extern "C" uint32_t ValidKxCharacter(uint32_t ch) {
    return kxstr::frame::is_valid(kxstr::low16(ch), kxstr::platform::is_double_byte_system()) ? 1 : 0;
}
