#include "files.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx {
namespace {

constexpr std::size_t kChunkSize = std::size_t{64} * 1024;
constexpr const char *kStandard = "-";

// Calls the system again when a signal came between.
template <class Call> auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace

void report(const char *command, const std::string &what, int error) {
    if (error == 0) {
        std::fprintf(stderr, "%s: %s\n", command, what.c_str());
    } else {
        std::fprintf(stderr, "%s: %s: %s\n", command, what.c_str(), std::strerror(error));
    }
}

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, " %02X", byte);
        text += digits;
    }
    return text.empty() ? text : text.substr(1);
}

// ---- Input ----

Input::Input(const char *command, const std::string &path) : command_(command), name_(path) {
    if (path == kStandard) {
        name_ = "(standard input)";
        descriptor_ = STDIN_FILENO;
    } else {
        descriptor_ = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); });
        if (descriptor_ < 0) {
            report(command_, name_, errno);
            return;
        }
    }
    buffer_.resize(kChunkSize);
    good_ = true;
}

Input::~Input() {
    if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
}

Chunk Input::next() {
    if (good_ && !ended_) {
        if (begin_ > 0) {
            std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
            end_ -= begin_;
            begin_ = 0;
        }
        // The caller could do nothing with a full buffer: what it needs is longer.
        if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
        const ssize_t count =
            uninterrupted([&] { return read(descriptor_, buffer_.data() + end_, buffer_.size() - end_); });
        if (count < 0) {
            report(command_, name_, errno);
            good_ = false;
        } else {
            end_ += static_cast<std::size_t>(count);
            ended_ = count == 0;
        }
    }
    return {std::span(buffer_).subspan(begin_, end_ - begin_), offset_, ended_};
}

void Input::consume(std::size_t count) {
    begin_ += count;
    offset_ += count;
}

std::uint64_t size_of(const Input &input) {
    struct stat status {};
    if (fstat(input.descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

// ---- Output ----

Output::Output(const char *command, const std::string &path) : command_(command), name_(path) {
    if (path.empty() || path == kStandard) {
        name_ = "(standard output)";
        descriptor_ = STDOUT_FILENO;
    } else {
        descriptor_ = uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666); });
        if (descriptor_ < 0) {
            report(command_, name_, errno);
            return;
        }
    }
    good_ = true;
}

Output::~Output() {
    if (good_) close();
}

bool Output::fail(const char *what) {
    report(command_, what + name_, errno);
    good_ = false;
    return false;
}

bool Output::write(std::span<const std::uint8_t> bytes) {
    while (good_ && !bytes.empty()) {
        const ssize_t count = uninterrupted([&] { return ::write(descriptor_, bytes.data(), bytes.size()); });
        if (count < 0) return fail("cannot write to ");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return good_;
}

bool Output::close() {
    if (!good_) return false;
    good_ = false;
    // Some file systems report a full disk only here.
    if (::close(descriptor_) < 0) return fail("cannot write to ");
    return true;
}

bool is_one_of(const std::string &output, std::span<const std::string> inputs) {
    struct stat target {};
    const bool standard = output.empty() || output == kStandard;
    if ((standard ? fstat(STDOUT_FILENO, &target) : stat(output.c_str(), &target)) != 0) return false;
    if (!S_ISREG(target.st_mode)) return false;
    for (const std::string &input : inputs) {
        struct stat source {};
        const int result = input == kStandard ? fstat(STDIN_FILENO, &source) : stat(input.c_str(), &source);
        if (result == 0 && source.st_dev == target.st_dev && source.st_ino == target.st_ino) return true;
    }
    return false;
}

// ---- Progress ----

Progress::Progress(const Input &input)
    : name_(input.name()),
      total_(size_of(input)),
      wanted_(isatty(STDERR_FILENO) != 0),
      due_(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::at(std::uint64_t done) {
    if (!wanted_ || Clock::now() < due_) return;
    due_ = Clock::now() + std::chrono::milliseconds(200);
    shown_ = true;
    constexpr std::uint64_t mebi = std::uint64_t{1024} * 1024;
    std::fprintf(stderr, "\r\033[K%s: %" PRIu64 " MiB", name_.c_str(), done / mebi);
    if (total_ > 0 && done <= total_) {
        std::fprintf(stderr, " of %" PRIu64 " (%" PRIu64 " %%)", total_ / mebi, done * 100 / total_);
    }
    std::fflush(stderr);
}

std::vector<std::string> operands_or_standard_input(int argc, char **argv, int first) {
    if (first >= argc) return {kStandard};
    return {argv + first, argv + argc};
}

} // namespace kx
