#include "core/language.h"

#include <cstdint>
#include <cstring>
#include <kxstr/core.h>

namespace kxstr::core {

constinit std::array<char, 8> language_store{'E', 'N'};

namespace {

constinit bool is_initialised = false;

void store_language(const char *language) noexcept {
    // Measured first, and moved rather than copied: a host may hand back the pointer from VaskGetLanguage.
    const std::size_t length = language == nullptr ? 0 : strnlen(language, language_store.size() - 1);
    if (length != 0) std::memmove(language_store.data(), language, length);
    std::memset(language_store.data() + length, 0, language_store.size() - length);
}

} // namespace

} // namespace kxstr::core

extern "C" {

uint32_t VaskInit(const char *language) {
    if (!kxstr::core::is_initialised) {
        kxstr::core::is_initialised = true;
        kxstr::core::store_language(language);
    }
    return 1;
}

void VaskUnInit(void) {
    kxstr::core::is_initialised = false;
}

uint32_t VaskSetLanguage(const char *language) {
    kxstr::core::store_language(language);
    return 1;
}

const char *VaskGetLanguage(void) {
    return kxstr::core::language();
}
}
