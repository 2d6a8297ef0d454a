// Parts of the C++ runtime for the shared library, which has the little that it uses of the runtime inside, in place of
// some that cost more to load than all of the rest.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

// In front of an exception the runtime keeps what it knows of it: 128 bytes in those of today.
constexpr std::size_t kHead = 256;

// For exceptions when there is no memory: one for each of so many threads. They are small: most are std::bad_alloc.
constexpr std::size_t kReserves = 16;
struct alignas(std::max_align_t) Reserve {
    std::byte bytes[kHead + 128];
};
constinit Reserve reserves[kReserves]{};
constinit std::atomic<bool> is_taken[kReserves]{};

void *reserve(std::size_t size) noexcept {
    for (std::size_t i = 0; i < kReserves && size <= sizeof(Reserve); ++i) {
        if (!is_taken[i].exchange(true)) return &reserves[i];
    }
    std::terminate();
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-*,readability-identifier-naming): the runtime's own names

// The runtime's form sets 72 KiB aside when it is loaded.
extern "C" void *__cxa_allocate_exception(std::size_t size) noexcept {
    void *area = std::malloc(kHead + size);
    if (area == nullptr) area = reserve(kHead + size);
    std::memset(area, 0, kHead);
    return static_cast<std::byte *>(area) + kHead;
}

extern "C" void __cxa_free_exception(void *exception) noexcept {
    void *const area = static_cast<std::byte *>(exception) - kHead;
    const auto offset = reinterpret_cast<std::uintptr_t>(area) - reinterpret_cast<std::uintptr_t>(reserves);
    if (offset < sizeof reserves) {
        is_taken[offset / sizeof(Reserve)] = false;
    } else {
        std::free(area);
    }
}

// The runtime's form tells the name of an exception that nobody catches, and what reads the compiler's names has more
// to relocate than the library.
namespace __gnu_cxx {
void __verbose_terminate_handler() {
    std::abort();
}
} // namespace __gnu_cxx

// NOLINTEND(bugprone-reserved-identifier,cert-*,readability-identifier-naming)
