#include "os.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx::os {
namespace {

// Calls the system again when a signal came between.
template <class Call> auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

std::optional<RegularFile> regular_file(int result, const struct stat &status) {
    if (result != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return RegularFile{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
                       static_cast<std::uint64_t>(status.st_size)};
}

} // namespace

void prepare(int &, char **&) {
    std::signal(SIGPIPE, SIG_IGN);
}

int open_to_read(const char *path) {
    return uninterrupted([&] { return ::open(path, O_RDONLY | O_CLOEXEC); });
}

int open_to_write(const char *path) {
    return uninterrupted([&] { return ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666); });
}

std::ptrdiff_t read(int descriptor, void *bytes, std::size_t size) {
    return uninterrupted([&] { return ::read(descriptor, bytes, size); });
}

std::ptrdiff_t write(int descriptor, const void *bytes, std::size_t size) {
    return uninterrupted([&] { return ::write(descriptor, bytes, size); });
}

int close(int descriptor) {
    return ::close(descriptor);
}

bool is_terminal(int descriptor) {
    return isatty(descriptor) != 0;
}

std::optional<RegularFile> regular_file(int descriptor) {
    struct stat status {};
    return regular_file(::fstat(descriptor, &status), status);
}

std::optional<RegularFile> regular_file(const char *path) {
    struct stat status {};
    return regular_file(::stat(path, &status), status);
}

} // namespace kx::os
