#include <objbase.h>

#include "platform/system.h"
#include "platform/windows/windows.h"

namespace kxstr::platform {

void *process_heap() noexcept {
    static const HANDLE heap = GetProcessHeap();
    return heap;
}

void *heap_allocate(std::size_t size) noexcept {
    return HeapAlloc(process_heap(), 0, size);
}

void *heap_reallocate(void *block, std::size_t size) noexcept {
    return block == nullptr ? heap_allocate(size) : HeapReAlloc(process_heap(), 0, block, size);
}

void heap_free(void *block) noexcept {
    if (block != nullptr) HeapFree(process_heap(), 0, block);
}

void *task_allocate(std::size_t size) noexcept {
    return CoTaskMemAlloc(size);
}
void task_free(void *block) noexcept {
    CoTaskMemFree(block);
}

void *reserve_address_space(std::size_t size) noexcept {
    return VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_READWRITE);
}

bool commit_memory(void *start, std::size_t size) noexcept {
    return VirtualAlloc(start, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void release_address_space(void *start, std::size_t) noexcept {
    if (start != nullptr) VirtualFree(start, 0, MEM_RELEASE);
}

std::uint16_t add_atom(const char *text) noexcept {
    if (text == nullptr || *text == '\0') return 0;
    return AddAtomA(text);
}

void delete_atom(std::uint16_t atom) noexcept {
    DeleteAtom(atom);
}

} // namespace kxstr::platform
