#include "frame/language.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <kxstr/frame.h>

namespace kxstr::frame {
namespace {

struct LanguageState {
    std::array<char, 8> language{'E', 'N'};
    bool initialised = false;
};

constinit LanguageState state;

void store_language(const char *language) noexcept {
    // Measured first, and moved rather than copied: a host may hand back the pointer from VaskGetLanguage.
    const std::size_t length = language == nullptr ? 0 : strnlen(language, state.language.size() - 1);
    if (length != 0) std::memmove(state.language.data(), language, length);
    std::memset(state.language.data() + length, 0, state.language.size() - length);
}

} // namespace

const char *language() noexcept {
    return state.language.data();
}

} // namespace kxstr::frame

extern "C" {

uint32_t VaskInit(const char *language) {
    if (!kxstr::frame::state.initialised) {
        kxstr::frame::state.initialised = true;
        kxstr::frame::store_language(language);
    }
    return 1;
}

void VaskUnInit(void) {
    kxstr::frame::state.initialised = false;
}

uint32_t VaskSetLanguage(const char *language) {
    kxstr::frame::store_language(language);
    return 1;
}

const char *VaskGetLanguage(void) {
    return kxstr::frame::language();
}
}
