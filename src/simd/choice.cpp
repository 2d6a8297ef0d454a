#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/processor.h"
#include "simd/families.h"
#include "simd/nearest.h"

namespace kxstr::simd {
namespace {

// From the plain one up, as platform::VectorUnit has them.
constexpr const Kernels *kFamilies[] = {
    &plain::kKernels,
#ifdef KXSTR_VECTORS
    &avx2::kKernels,
    &avx512::kKernels,
#endif
};

// Before the initialisers of a host that has the library linked in statically; a call that is still earlier, or one
// during it, finds the plain kernels. Any process may heed the variable: it only takes families away.
[[gnu::constructor(101)]] void choose_kernels() noexcept {
    const auto families = available();
    const Kernels *best = families.back();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has begun yet
    if (const char *const wanted = std::getenv("KXSTR_KERNELS"); wanted != nullptr) {
        for (const Kernels *family : families)
            if (std::string_view(wanted) == family->name) best = family;
    }
    chosen_kernels = best;
    if (best != &plain::kKernels) nearest_end = kNearestEnd;
}

} // namespace

constinit const Kernels *chosen_kernels = &plain::kKernels;
constinit std::uint32_t nearest_end = 0;

[[gnu::cold]] std::span<const Kernels *const> available() noexcept {
    const auto best = static_cast<std::size_t>(platform::vector_unit());
    return std::span(kFamilies).first(std::min(best + 1, std::size(kFamilies)));
}

} // namespace kxstr::simd
