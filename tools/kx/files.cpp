#include "files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "os.h"

namespace kx {
namespace {

constexpr std::size_t kChunkSize = std::size_t{64} * 1024;
constexpr const char *kStandard = "-";

std::int64_t now_in_milliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
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
        descriptor_ = os::kStandardInput;
    } else {
        descriptor_ = os::open_to_read(path.c_str());
        if (descriptor_ < 0) {
            report(command_, name_, errno);
            return;
        }
    }
    buffer_.resize(kChunkSize);
    good_ = true;
}

Input::~Input() {
    if (descriptor_ > os::kStandardInput) os::close(descriptor_);
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
        const std::ptrdiff_t count = os::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
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
    const auto file = os::regular_file(input.descriptor());
    return file ? file->size : 0;
}

// ---- Output ----

Output::Output(const char *command, const std::string &path) : command_(command), name_(path) {
    if (path.empty() || path == kStandard) {
        name_ = "(standard output)";
        descriptor_ = os::kStandardOutput;
    } else {
        descriptor_ = os::open_to_write(path.c_str());
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
        const std::ptrdiff_t count = os::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0) return fail("cannot write to ");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return good_;
}

bool Output::close() {
    if (!good_) return false;
    good_ = false;
    // Some file systems report a full disk only here.
    if (os::close(descriptor_) < 0) return fail("cannot write to ");
    return true;
}

bool is_one_of(const std::string &output, std::span<const std::string> inputs) {
    const auto regular_file = [](const std::string &path, int standard) {
        return path.empty() || path == kStandard ? os::regular_file(standard) : os::regular_file(path.c_str());
    };
    const auto target = regular_file(output, os::kStandardOutput);
    return target && std::ranges::any_of(inputs, [&](const std::string &input) {
               const auto source = regular_file(input, os::kStandardInput);
               return source && source->is_same_as(*target);
           });
}

// ---- Progress ----

Progress::Progress(const Input &input) : Progress(size_of(input)) {
    name_ = input.name();
}

Progress::Progress(std::uint64_t total)
    : total_(total), wanted_(os::is_terminal(os::kStandardError)), due_(now_in_milliseconds() + 1000) {}

Progress::~Progress() {
    clear();
}

void Progress::clear() {
    if (shown_) std::fputs("\r\033[K", stderr);
    shown_ = false;
}

void Progress::at(std::uint64_t done, const std::string &name) {
    if (!wanted_ || now_in_milliseconds() < due_) return;
    due_ = now_in_milliseconds() + 200;
    shown_ = true;
    constexpr std::uint64_t mebi = std::uint64_t{1024} * 1024;
    std::fprintf(stderr, "\r\033[K%s: %" PRIu64 " MiB", name.c_str(), done / mebi);
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
