#include <kxstr/forms.h>
#include <kxstr/strops.h>

extern "C" {

uint16_t W6dzTotz(const uint8_t *source, uint8_t *destination, uint32_t count, uint32_t flags) {
    return TpiKxToKxsioBuff(destination, source, count, flags);
}

uint16_t W6wzTotz(const KxChar *source, uint8_t *destination, uint32_t count, uint32_t flags) {
    return TpiKxwzToKxsioBuff(destination, source, count, flags);
}

} // extern "C"
