#include "files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "os.h"
#include "paths.h"

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
    // Without memory of its own: that there is none left may be what it tells.
    const bool bold = has_colours(os::kStandardError);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): glibc and the Windows runtime keep a text for each thread
    const char *const reason = error != 0 ? std::strerror(error) : "";
    std::fprintf(stderr, "%s%s%s: %s%s%s\n", bold ? kBold : "", command, bold ? kPlain : "", what.c_str(),
                 error != 0 ? ": " : "", reason);
}

bool has_colours(int descriptor) {
    const auto is = [](const char *name, const char *value) {
        const char *const found = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody changes the environment
        return found != nullptr && (value != nullptr ? std::strcmp(found, value) == 0 : *found != 0);
    };
    return !is("NO_COLOR", nullptr) && !is("TERM", "dumb") && os::is_terminal(descriptor);
}

Tell tell_as(const char *command) {
    return [command](const std::string &what, int error) { report(command, what, error); };
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

Input::Input(Tell tell, const std::string &path) : tell_(std::move(tell)), name_(path) {
    buffer_.resize(kChunkSize); // before the file is open: nobody would close it
    if (path == kStandard) {
        name_ = "(standard input)";
        descriptor_ = os::kStandardInput;
    } else {
        descriptor_ = os::open_to_read(path.c_str());
        if (descriptor_ < 0) {
            tell_(name_, errno);
            return;
        }
    }
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
            tell_(name_, errno);
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

std::span<const std::uint8_t> read_start(Input &input, std::size_t size) {
    Chunk chunk{};
    do {
        chunk = input.next();
    } while (input.good() && !chunk.last && chunk.bytes.size() < size);
    return input.good() ? chunk.bytes : std::span<const std::uint8_t>();
}

std::uint64_t size_of(const Input &input) {
    const auto file = os::regular_file(input.descriptor());
    return file ? file->size : 0;
}

// ---- Output ----

namespace {

// What a name stands for in the end, whether something is there or not. Only the last part matters: the new file comes
// beside it.
std::filesystem::path behind_links(std::filesystem::path path, std::error_code &error) {
    constexpr int most = 40; // as many as systems follow
    for (int i = 0; i < most; ++i) {
        const auto type = std::filesystem::symlink_status(path, error).type();
        if (type == std::filesystem::file_type::not_found) error.clear();
        if (error || type != std::filesystem::file_type::symlink) break;
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return path;
}

constexpr const char *kTemporary = ".kx-";

// A name that nothing has, in the folder of the file.
std::string name_beside(const std::string &path, unsigned number) {
    const std::string name = kTemporary + std::to_string(os::process_number()) + "-" + std::to_string(number);
    return text_of(path_of(path).parent_path() / name);
}

} // namespace

Output::Output(Tell tell, const std::string &path, Replacing how)
    : tell_(std::move(tell)), name_(path), how_(std::move(how)) {
    if (is_standard(path)) {
        name_ = "(standard output)";
        descriptor_ = os::kStandardOutput;
        good_ = true;
    } else {
        open_file(path);
    }
}

void Output::open_file(const std::string &path) {
    const os::FileKind kind = os::kind_of(path.c_str());
    replaces_ = kind == os::FileKind::regular;
    const auto old = replaces_ ? os::regular_file(path.c_str()) : std::nullopt;
    const auto standard = os::regular_file(os::kStandardOutput);
    if (old && standard && old->is_same_as(*standard)) {
        // /dev/stdout, most likely. Whoever opened it would not see another file in its place.
        descriptor_ = os::kStandardOutput;
    } else if (kind == os::FileKind::special) {
        descriptor_ = os::open_to_write(path.c_str()); // a device, a pipe
    } else if (kind == os::FileKind::none || (old && os::may_write(path.c_str()))) {
        create_beside(path);
    } // else nobody can tell what would be replaced
    good_ = descriptor_ >= 0;
    if (!good_) tell_(replaces_ ? "cannot write a file beside " + name_ : name_, errno);
}

Output::~Output() {
    if (descriptor_ >= 0 && descriptor_ != os::kStandardOutput) os::close(descriptor_);
    discard();
}

void Output::discard() {
    if (target_.empty()) return;
    os::remove(temporary_.c_str());
    os::settle(temporary_.c_str());
    target_.clear();
}

void Output::create_beside(const std::string &path) {
    std::error_code error;
    std::string target = text_of(behind_links(path_of(path), error));
    if (error) {
        errno = error.default_error_condition().value();
        return;
    }
    do {
        static std::atomic<unsigned> number = 0;
        temporary_ = name_beside(target, number++); // all names before there is something to remove
        descriptor_ = os::create(temporary_.c_str());
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ >= 0) target_ = std::move(target);
}

bool Output::fail(const std::string &what) {
    const bool enough = errno == EPIPE && descriptor_ == os::kStandardOutput;
    if (!enough) tell_(what + name_, errno);
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
    if (!target_.empty() && !replace()) return false;
    // Some file systems report a full disk only here.
    const int result = descriptor_ < 0 ? 0 : os::close(std::exchange(descriptor_, -1));
    if (result < 0) return fail("cannot write to ");
    good_ = false;
    return true;
}

bool Output::replace() {
    const char *const temporary = temporary_.c_str();
    const char *const target = target_.c_str();
    if (replaces_ && os::take_attributes(descriptor_, target, how_.keeps_times) < 0)
        return fail("cannot keep the permissions of ");
    // An old file must not be lost to a loss of power; a new one can be made again.
    const bool safe = !replaces_ || os::flush(descriptor_) == 0;
    if (!safe || os::close(std::exchange(descriptor_, -1)) < 0) return fail("cannot write to ");
    if (!how_.backup.empty() && os::keep_as(target, how_.backup.c_str()) < 0) {
        tell_("cannot keep " + name_ + " as " + how_.backup, errno);
        return good_ = false;
    }
    if (os::rename(temporary, target) < 0) {
        const int error = errno;
        if (!how_.backup.empty()) {
            os::rename(how_.backup.c_str(), target);
            os::remove(how_.backup.c_str()); // where it was a second name still
        }
        errno = error;
        return fail("cannot replace ");
    }
    os::settle(temporary);
    target_.clear();
    return true;
}

bool is_temporary(const std::string &path) {
    return text_of(path_of(path).filename()).starts_with(kTemporary);
}

bool is_one_of(const std::string &output, std::span<const std::string> inputs) {
    const auto regular_file = [](const std::string &path, int standard) {
        return is_standard(path) ? os::regular_file(standard) : os::regular_file(path.c_str());
    };
    const auto target = regular_file(output, os::kStandardOutput);
    return target && std::ranges::any_of(inputs, [&](const std::string &input) {
               const auto source = regular_file(input, os::kStandardInput);
               return source && source->is_same_as(*target);
           });
}

bool write_text(const char *command, const std::string &path, const std::string &text) {
    Output output(command, path);
    return output.good() && output.write(text) && output.close();
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
    static_cast<void>(std::fflush(stderr)); // what shows no progress is no fault
}

std::vector<std::string> operands_or_standard_input(int argc, char **argv, int first) {
    if (first >= argc) return {kStandard};
    return {argv + first, argv + argc};
}

} // namespace kx
