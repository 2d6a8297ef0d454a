#include "version.h"

#include <cstdio>
#include <string>

#include "platform/system.h"
#include "registry.h"
#include "simd/kernels.h"

namespace kx {
namespace {

namespace platform = kxstr::platform;

#if defined(__clang__)
constexpr const char *kCompiler = "Clang " __clang_version__;
#elif defined(__GNUC__)
constexpr const char *kCompiler = "GCC " __VERSION__;
#else
constexpr const char *kCompiler = "unknown";
#endif

void print(const char *name, const std::string &value, const std::string &origin) {
    std::printf("  %-18s %s  (%s)\n", name, value.c_str(), origin.c_str());
}

std::string hexadecimal(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}

std::string state_of_store() {
    switch (settings_status()) {
    case platform::kSuccess: return "";
    case platform::kNotFound: return "; it is not there";
    default: return "; it cannot be read";
    }
}

} // namespace

const char *const kVersion = KX_VERSION;

void print_version() {
    std::printf("kx %s\ncompiler: %s, %zu bits\n", kVersion, kCompiler, 8 * sizeof(void *));
    const auto *const kernels = kxstr::simd::chosen_kernels;
    const bool is_best = kernels == kxstr::simd::available().back();
    std::printf("kernels: %s (%s)\n", kernels->name, is_best ? "the best of this processor" : "KXSTR_KERNELS");

    const platform::Origins from = platform::origins();
    std::printf("settings in force, and where each came from:\n");
    print("ANSI code page", std::to_string(platform::ansi_code_page()), from.ansi_code_page);
    print("OEM code page", std::to_string(platform::oem_code_page()), from.oem_code_page);
    print("double-byte system", platform::is_double_byte_system() ? "yes" : "no", from.double_byte);
    print("system language", hexadecimal(platform::system_language()), from.system_language);
    print("keyboard language", hexadecimal(platform::keyboard_language()), from.keyboard_language);
    const std::string store = from.store_path;
    print("settings file", store.empty() ? "none" : store, from.store + (store.empty() ? "" : state_of_store()));
    const PagesInForce pages = pages_in_force("EN");
    print("DOS code page", pages.dos, pages.dos_origin);
    print("Windows code page", pages.windows, pages.windows_origin);
}

} // namespace kx
