#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/system.h"

namespace kxstr::platform {
namespace {

// malloc may answer null for a size of 0, which callers would take for a lack of memory.
std::size_t at_least_one(std::size_t size) noexcept {
    return size != 0 ? size : 1;
}

} // namespace

void *process_heap() noexcept {
    static char heap; // only its address counts: there is one heap
    return &heap;
}

void *heap_allocate(std::size_t size) noexcept {
    return std::malloc(at_least_one(size));
}

void *heap_reallocate(void *block, std::size_t size) noexcept {
    return std::realloc(block, at_least_one(size));
}

void heap_free(void *block) noexcept {
    std::free(block);
}

void *task_allocate(std::size_t size) noexcept {
    return heap_allocate(size);
}

void task_free(void *block) noexcept {
    heap_free(block);
}

void *reserve_address_space(std::size_t size) noexcept {
    // cppcheck-suppress invalidFunctionArg ; -1 is what memory without a file asks for
    void *start = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    // cppcheck-suppress memleak ; the caller has it
    return start != MAP_FAILED ? start : nullptr;
}

bool commit_memory(void *start, std::size_t size) noexcept {
    // From the start of its page: on a host with larger pages the step before may have ended within one.
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(start) % page;
    return mprotect(static_cast<char *>(start) - before, size + before, PROT_READ | PROT_WRITE) == 0;
}

void release_address_space(void *start, std::size_t size) noexcept {
    if (start != nullptr) munmap(start, size);
}

} // namespace kxstr::platform
