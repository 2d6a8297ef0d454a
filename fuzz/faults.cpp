#include "faults.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kxstr::faults {
namespace {

constexpr int kMemory[] = {ENOMEM}, kOpen[] = {EMFILE, EACCES}, kRead[] = {EIO, EINTR, 0},
              kWrite[] = {ENOSPC, EINTR, 0}, kSync[] = {EIO, EINVAL}, kLock[] = {ENOLCK, EINTR}, kThread[] = {EAGAIN},
              kOther[] = {EIO, EACCES};
constexpr struct {
    const char *name;
    std::span<const int> errors;
} kKinds[kCalls] = {{"memory", kMemory},   {"open", kOpen},    {"read", kRead},    {"write", kWrite},
                    {"close", kSync},      {"fsync", kSync},   {"rename", kOther}, {"link", kOther},
                    {"unlink", kOther},    {"mkdir", kOther},  {"stat", kOther},   {"readlink", kOther},
                    {"lseek", kOther},     {"fchmod", kOther}, {"fchown", kOther}, {"futimens", kOther},
                    {"faccessat", kOther}, {"flock", kLock},   {"mmap", kMemory},  {"mprotect", kMemory},
                    {"thread", kThread}};

struct Counter {
    std::atomic<std::size_t> calls, failures;
};
std::array<Counter, kCalls> g_counters;
std::atomic<std::size_t> g_all;
std::atomic<std::ptrdiff_t> g_blocks;
std::atomic<bool> g_under_test;
Plan g_plan;

enum class Fate : unsigned char { goes_through, fails, is_short };

Fate fate_of(Call call) noexcept {
    if (!g_under_test) return Fate::goes_through;
    Counter &counter = g_counters[static_cast<std::size_t>(call)];
    const std::size_t own = ++counter.calls, all = ++g_all;
    if (g_plan.first == 0 || (g_plan.call && *g_plan.call != call)) return Fate::goes_through;
    const std::size_t number = g_plan.call ? own : all;
    if (g_plan.from_then_on ? number < g_plan.first : number != g_plan.first) return Fate::goes_through;
    ++counter.failures;
    const int error = g_plan.call ? g_plan.error : errors_of(call)[0];
    if (error == 0) return Fate::is_short;
    errno = error;
    return Fate::fails;
}

bool fails(Call call) noexcept {
    return fate_of(call) == Fate::fails;
}

std::size_t half_of(std::size_t size) noexcept {
    return size > 1 ? size / 2 : size;
}

void *counted(void *block) noexcept {
    if (block != nullptr && g_under_test) ++g_blocks;
    return block;
}

} // namespace

const char *name_of(Call call) {
    return kKinds[static_cast<std::size_t>(call)].name;
}
std::span<const int> errors_of(Call call) {
    return kKinds[static_cast<std::size_t>(call)].errors;
}

void plan(const Plan &plan) {
    g_plan = plan;
    g_all = 0;
    for (Counter &counter : g_counters)
        counter.calls = counter.failures = 0;
}
void set_under_test(bool is) noexcept {
    g_under_test = is;
}
std::size_t count_of(Call call) {
    return g_counters[static_cast<std::size_t>(call)].calls;
}
std::size_t failures_of(Call call) {
    return g_counters[static_cast<std::size_t>(call)].failures;
}
std::ptrdiff_t live_blocks() {
    return g_blocks;
}

} // namespace kxstr::faults

using kxstr::faults::Call;
using kxstr::faults::Fate;
using namespace kxstr::faults;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the names that the linker's --wrap asks for
extern "C" {

void *__real_malloc(std::size_t);
void *__real_calloc(std::size_t, std::size_t);
void *__real_realloc(void *, std::size_t);
void __real_free(void *);

void *__wrap_malloc(std::size_t size) {
    return fails(Call::memory) ? nullptr : counted(__real_malloc(size));
}
void *__wrap_calloc(std::size_t count, std::size_t size) {
    return fails(Call::memory) ? nullptr : counted(__real_calloc(count, size));
}
void *__wrap_realloc(void *block, std::size_t size) {
    if (fails(Call::memory)) return nullptr;
    void *const grown = __real_realloc(block, size);
    return block == nullptr ? counted(grown) : grown;
}
void __wrap_free(void *block) {
    if (block != nullptr && g_under_test) --g_blocks;
    __real_free(block);
}

// The calls that give -1: KIND, the name, its parameters and its arguments.
#define KXSTR_WRAP(kind, name, parameters, arguments)                                                                  \
    int __real_##name parameters;                                                                                      \
    int __wrap_##name parameters {                                                                                     \
        return fails(Call::kind) ? -1 : __real_##name arguments;                                                       \
    }
KXSTR_WRAP(fsync, fsync, (int file), (file))
KXSTR_WRAP(rename, rename, (const char *from, const char *to), (from, to))
KXSTR_WRAP(rename, renameat, (int in, const char *from, int out, const char *to), (in, from, out, to))
KXSTR_WRAP(link, link, (const char *from, const char *to), (from, to))
KXSTR_WRAP(unlink, unlink, (const char *path), (path))
KXSTR_WRAP(unlink, unlinkat, (int folder, const char *path, int flags), (folder, path, flags))
KXSTR_WRAP(mkdir, mkdir, (const char *path, mode_t mode), (path, mode))
KXSTR_WRAP(stat, stat, (const char *path, struct stat *status), (path, status))
KXSTR_WRAP(stat, lstat, (const char *path, struct stat *status), (path, status))
KXSTR_WRAP(stat, fstat, (int file, struct stat *status), (file, status))
KXSTR_WRAP(stat, fstatat, (int folder, const char *path, struct stat *status, int flags), (folder, path, status, flags))
KXSTR_WRAP(fchmod, fchmod, (int file, mode_t mode), (file, mode))
KXSTR_WRAP(fchown, fchown, (int file, uid_t user, gid_t group), (file, user, group))
KXSTR_WRAP(futimens, futimens, (int file, const timespec times[2]), (file, times))
KXSTR_WRAP(faccessat, faccessat, (int folder, const char *path, int mode, int flags), (folder, path, mode, flags))
KXSTR_WRAP(flock, flock, (int file, int operation), (file, operation))
KXSTR_WRAP(mprotect, mprotect, (void *start, std::size_t size, int protection), (start, size, protection))
#undef KXSTR_WRAP

int __real_open(const char *path, int flags, mode_t mode);
int __real_openat(int folder, const char *path, int flags, mode_t mode);
int __real_close(int file);
ssize_t __real_read(int file, void *bytes, std::size_t size);
ssize_t __real_write(int file, const void *bytes, std::size_t size);
ssize_t __real_readlink(const char *path, char *target, std::size_t size);
off_t __real_lseek(int file, off_t offset, int from);
void *__real_mmap(void *start, std::size_t size, int protection, int flags, int file, off_t offset);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *), void *argument);

int __wrap_open(const char *path, int flags, mode_t mode) {
    return fails(Call::open) ? -1 : __real_open(path, flags, mode);
}
int __wrap_openat(int folder, const char *path, int flags, mode_t mode) {
    return fails(Call::open) ? -1 : __real_openat(folder, path, flags, mode);
}
// The system has let go of the descriptor even so.
int __wrap_close(int file) {
    const Fate fate = fate_of(Call::close);
    const int error = errno, result = __real_close(file);
    if (fate != Fate::fails) return result;
    errno = error;
    return -1;
}
ssize_t __wrap_read(int file, void *bytes, std::size_t size) {
    const Fate fate = fate_of(Call::read);
    return fate == Fate::fails ? -1 : __real_read(file, bytes, fate == Fate::is_short ? half_of(size) : size);
}
ssize_t __wrap_write(int file, const void *bytes, std::size_t size) {
    const Fate fate = fate_of(Call::write);
    return fate == Fate::fails ? -1 : __real_write(file, bytes, fate == Fate::is_short ? half_of(size) : size);
}
ssize_t __wrap_readlink(const char *path, char *target, std::size_t size) {
    return fails(Call::readlink) ? -1 : __real_readlink(path, target, size);
}
off_t __wrap_lseek(int file, off_t offset, int from) {
    return fails(Call::lseek) ? -1 : __real_lseek(file, offset, from);
}
void *__wrap_mmap(void *start, std::size_t size, int protection, int flags, int file, off_t offset) {
    return fails(Call::mmap) ? MAP_FAILED : __real_mmap(start, size, protection, flags, file, offset);
}
int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *), void *argument) {
    return fails(Call::thread) ? EAGAIN : __real_pthread_create(thread, attributes, run, argument);
}
}

// Those of the runtime may lie in a shared library, where nothing is wrapped.
void *operator new(std::size_t size) {
    if (void *const block = __wrap_malloc(size != 0 ? size : 1)) return block;
    throw std::bad_alloc();
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return __wrap_malloc(size != 0 ? size : 1);
}
void operator delete(void *block) noexcept {
    __wrap_free(block);
}
void operator delete(void *block, std::size_t) noexcept {
    __wrap_free(block);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
