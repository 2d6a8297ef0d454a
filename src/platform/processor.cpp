#include "platform/processor.h"

// Asking the processor itself makes a virtual machine's host step in, each time for as long as a page takes to load.
// The loader has asked already.
#if defined(__x86_64__) && defined(__GLIBC__) && __has_include(<sys/platform/x86.h>)
#    define _Bool bool // NOLINT(bugprone-reserved-identifier,cert-*): the header is C
#    include <sys/platform/x86.h>
#    undef _Bool
#    define KXSTR_LOADER_KNOWS
#endif

namespace kxstr::platform {

// Cold, as what else runs while the library is loaded: so it lies together, and few pages are read.
[[gnu::cold]] VectorUnit vector_unit() noexcept {
#if defined(KXSTR_LOADER_KNOWS)
    if (!CPU_FEATURE_ACTIVE(AVX2) || !CPU_FEATURE_ACTIVE(BMI1) || !CPU_FEATURE_ACTIVE(BMI2) ||
        !CPU_FEATURE_ACTIVE(POPCNT))
        return VectorUnit::kNone;
    if (!CPU_FEATURE_ACTIVE(AVX512F) || !CPU_FEATURE_ACTIVE(AVX512BW) || !CPU_FEATURE_ACTIVE(AVX512VL) ||
        !CPU_FEATURE_ACTIVE(AVX512DQ) || !CPU_FEATURE_ACTIVE(AVX512_VBMI) || !CPU_FEATURE_ACTIVE(AVX512_VBMI2))
        return VectorUnit::kAvx2;
    return VectorUnit::kAvx512;
#elif defined(__x86_64__) && !defined(_WIN32)
    __builtin_cpu_init(); // may come before the initialisers of the compiler's own runtime
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") || !__builtin_cpu_supports("bmi2") ||
        !__builtin_cpu_supports("popcnt"))
        return VectorUnit::kNone;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw") ||
        !__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512dq") ||
        !__builtin_cpu_supports("avx512vbmi") || !__builtin_cpu_supports("avx512vbmi2"))
        return VectorUnit::kAvx2;
    return VectorUnit::kAvx512;
#else
    return VectorUnit::kNone;
#endif
}

} // namespace kxstr::platform
