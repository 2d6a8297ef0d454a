#include <cstdlib>
#include <string_view>

#include "simd/families.h"

namespace kxstr::simd {
namespace {

// From the plain one up.
constexpr const Kernels *kFamilies[] = {
    &plain::kKernels,
#ifdef KXSTR_VECTORS
    &avx2::kKernels,
    &avx512::kKernels,
#endif
};

// How many of them the processor can run. The compiler's test asks the operating system, too, whether it saves the wide
// registers.
std::size_t count_available() noexcept {
#ifdef KXSTR_VECTORS
    __builtin_cpu_init(); // may come before the initialisers of the compiler's own runtime
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") || !__builtin_cpu_supports("bmi2") ||
        !__builtin_cpu_supports("popcnt"))
        return 1;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw") ||
        !__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512dq") ||
        !__builtin_cpu_supports("avx512vbmi") || !__builtin_cpu_supports("avx512vbmi2"))
        return 2;
#endif
    return std::size(kFamilies);
}

// Before the initialisers of a host that has the library linked in statically; a call that is still earlier, or one
// during it, finds the plain kernels. Any process may heed the variable: it only takes families away.
[[gnu::constructor(101)]] void choose_kernels() noexcept {
    const auto families = available();
    const Kernels *best = families.back();
    if (const char *const wanted = std::getenv("KXSTR_KERNELS"); wanted != nullptr) {
        for (const Kernels *family : families)
            if (std::string_view(wanted) == family->name) best = family;
    }
    chosen_kernels = best;
}

} // namespace

constinit const Kernels *chosen_kernels = &plain::kKernels;

std::span<const Kernels *const> available() noexcept {
    return std::span(kFamilies).first(count_available());
}

} // namespace kxstr::simd
