// Makes the memory and the system calls of a program fail: the linker leads every call of the library, the tool and the
// C++ runtime that are linked into it through faults.cpp (--wrap).
#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace kxstr::faults {

enum class Call : unsigned char {
    memory, // malloc, calloc, realloc, new
    open,
    read,
    write,
    close,
    fsync,
    rename,
    link,
    unlink,
    mkdir,
    stat,
    readlink,
    lseek,
    fchmod,
    fchown,
    futimens,
    faccessat,
    flock,
    mmap,
    mprotect,
    thread,
};
inline constexpr std::size_t kCalls = static_cast<std::size_t>(Call::thread) + 1;

const char *name_of(Call call);
// The errors that a call is made to fail with; 0: not at all, but it reads or writes only half of the bytes.
std::span<const int> errors_of(Call call);

struct Plan {
    std::optional<Call> call; // nothing: calls of any kind
    std::size_t first = 0;    // which of them fails, from 1; 0: none
    bool from_then_on = false;
    int error = 0; // of calls of any kind: the first one of each
};

// What happens to the calls that are made under test from now on: they are counted, and some fail.
void plan(const Plan &plan);
std::size_t count_of(Call call); // since then
std::size_t failures_of(Call call);

void set_under_test(bool is) noexcept;
// The result of what is under test; no other call counts or fails.
template <class Work> auto under_test(const Work &work) {
    struct Scope {
        Scope() { set_under_test(true); }
        ~Scope() { set_under_test(false); }
    } scope;
    return work();
}

std::ptrdiff_t live_blocks(); // of memory that what was under test has taken and not given back

} // namespace kxstr::faults
