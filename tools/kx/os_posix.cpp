#include "os.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <iconv.h>
#include <initializer_list>
#include <mutex>
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

// ---- Files that a signal removes ----

// The handler may take no lock and touch no heap, so the names lie in places that are always there. A name that is too
// long, or one too many, stays when a signal comes: that is untidy, no more.
struct Unfinished {
    std::atomic<bool> used;
    std::array<char, 1024> path;
};
std::array<Unfinished, 64> g_unfinished;
std::mutex g_adding;

void keep_unfinished(const char *path) {
    const std::lock_guard lock(g_adding);
    const std::size_t size = std::strlen(path) + 1;
    for (Unfinished &file : g_unfinished) {
        if (file.used || size > file.path.size()) continue;
        std::memcpy(file.path.data(), path, size);
        file.used = true;
        return;
    }
}

extern "C" void remove_unfinished(int signal) {
    for (const Unfinished &file : g_unfinished)
        if (file.used) ::unlink(file.path.data());
    // As if nobody had caught it.
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    ::sigaction(signal, &action, nullptr);
    ::raise(signal);
}

constexpr int kCaughtSignals[] = {SIGINT, SIGTERM, SIGHUP};

void catch_signals() {
    for (const int signal : kCaughtSignals) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue; // as nohup(1) wants it
        action = {};
        action.sa_handler = remove_unfinished;
        ::sigaction(signal, &action, nullptr);
    }
}

// Reading or writing one of them then fails, as it does when the descriptor is closed.
void take_standard_streams() {
    for (const int descriptor : {kStandardInput, kStandardOutput, kStandardError}) {
        if (::fcntl(descriptor, F_GETFD) >= 0) continue;
        if (::open("/dev/null", descriptor == kStandardInput ? O_WRONLY : O_RDONLY) < 0) ::_exit(1);
    }
}

} // namespace

void prepare(int &, char **&) {
    take_standard_streams();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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

// ---- Converters of text ----

namespace {

constexpr const char *kUnits = "UTF-16LE";

class Iconv final : public Transcoder {
  public:
    Iconv(iconv_t descriptor, iconv_t probe, bool reads) : descriptor_(descriptor), probe_(probe), reads_(reads) {}
    ~Iconv() override {
        ::iconv_close(descriptor_);
        ::iconv_close(probe_);
    }

    Result convert(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination) override {
        const Result done = call(descriptor_, source, destination);
        if (!replaced_) return done;
        // Some systems write another character for one that the encoding lacks, and only count it. That one is a fault.
        ::iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
        Result one_by_one{Result::done, 0, 0, 0};
        while (one_by_one.read < source.size()) {
            const auto rest = source.subspan(one_by_one.read);
            const auto character = rest.first(std::min(rest.size(), size_of_first(rest)));
            const Result one = call(descriptor_, character, destination.subspan(one_by_one.written));
            if (replaced_) return {Result::fault, one_by_one.read, one_by_one.written, character.size()};
            one_by_one.read += one.read;
            one_by_one.written += one.written;
            if (one.stop != Result::done) return {one.stop, one_by_one.read, one_by_one.written, one.bad};
        }
        return one_by_one;
    }

    std::size_t end(std::span<std::uint8_t> destination) override {
        char *to = reinterpret_cast<char *>(destination.data());
        std::size_t room = destination.size();
        ::iconv(descriptor_, nullptr, nullptr, &to, &room);
        ::iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
        return destination.size() - room;
    }

  private:
    Result call(iconv_t descriptor, std::span<const std::uint8_t> source, std::span<std::uint8_t> destination) {
        // It reads through a pointer to what need not be constant.
        char *from = const_cast<char *>(reinterpret_cast<const char *>(source.data()));
        char *to = reinterpret_cast<char *>(destination.data());
        std::size_t left = source.size(), room = destination.size();
        const std::size_t count = ::iconv(descriptor, &from, &left, &to, &room);
        Result result{Result::done, source.size() - left, destination.size() - room, 0};
        replaced_ = !reads_ && count != 0 && count != static_cast<std::size_t>(-1);
        if (count != static_cast<std::size_t>(-1)) return result;
        switch (errno) {
        case E2BIG: result.stop = Result::full; break;
        case EINVAL: result.stop = Result::incomplete; break;
        default:
            result.stop = Result::fault;
            if (descriptor == descriptor_) result.bad = size_of_fault(source.subspan(result.read));
        }
        return result;
    }

    static std::size_t size_of_first(std::span<const std::uint8_t> units) {
        return units.size() > 1 && (units[1] & 0xFCu) == 0xD8 ? 4 : 2;
    }

    // As much as could have begun a character. What follows it goes with it unless it may be one of its own, such as a
    // line end.
    std::size_t size_of_fault(std::span<const std::uint8_t> bytes) {
        if (!reads_) return std::min(bytes.size(), size_of_first(bytes));
        constexpr std::uint8_t first_trail_byte = 0x40;
        for (std::size_t size = 1; size <= bytes.size(); ++size) {
            std::array<std::uint8_t, 16> units;
            ::iconv(probe_, nullptr, nullptr, nullptr, nullptr);
            const Result one = call(probe_, bytes.first(size), units);
            if (one.stop == Result::incomplete && one.read == 0) continue;
            return size > 1 && bytes[size - 1] < first_trail_byte ? size - 1 : size;
        }
        return bytes.size();
    }

    iconv_t descriptor_;
    iconv_t probe_; // for the size of faults
    bool reads_;
    bool replaced_ = false; // by the last call
};

// By the name as it is, and as systems spell the numbers of pages.
std::unique_ptr<Transcoder> open_iconv(const std::string &encoding, bool reads) {
    // What follows a slash would let characters change.
    if (encoding.find('/') != std::string::npos) return nullptr;
    const auto open = [&](const std::string &name) {
        return reads ? ::iconv_open(kUnits, name.c_str()) : ::iconv_open(name.c_str(), kUnits);
    };
    // NOLINTNEXTLINE(performance-no-int-to-ptr): so POSIX says that there is none
    const auto none = reinterpret_cast<iconv_t>(-1);
    for (const char *prefix : {"", "CP", "IBM", "WINDOWS-", "MAC-"}) {
        iconv_t descriptor = open(prefix + encoding);
        if (descriptor == none) continue;
        iconv_t probe = open(prefix + encoding);
        if (probe != none) return std::make_unique<Iconv>(descriptor, probe, reads);
        ::iconv_close(descriptor);
        return nullptr;
    }
    return nullptr;
}

} // namespace

const char *const kWhereEncodingsAre = "`iconv -l` lists them";

std::unique_ptr<Transcoder> open_reader(const std::string &encoding) {
    return open_iconv(encoding, true);
}

std::unique_ptr<Transcoder> open_writer(const std::string &encoding) {
    return open_iconv(encoding, false);
}

bool may_write(const char *path) {
    return ::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) == 0;
}

int create(const char *path) {
    static std::once_flag once;
    std::call_once(once, catch_signals);
    // A signal waits until the file that it should remove is known.
    sigset_t caught, before;
    ::sigemptyset(&caught);
    for (const int signal : kCaughtSignals)
        ::sigaddset(&caught, signal);
    ::pthread_sigmask(SIG_BLOCK, &caught, &before);
    const int descriptor = uninterrupted([&] { return ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); });
    const int error = errno;
    if (descriptor >= 0) keep_unfinished(path);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return descriptor;
}

void settle(const char *path) {
    for (Unfinished &file : g_unfinished)
        if (file.used && std::strcmp(file.path.data(), path) == 0) file.used = false;
}

int remove(const char *path) {
    return ::unlink(path);
}

int take_attributes(int descriptor, const char *from, bool times) {
    struct stat status {};
    if (::stat(from, &status) != 0) return -1;
    // The owner first: changing it takes mode bits away. Only a privileged process can keep a foreign one, and nobody
    // else's rights are to be lent with a file of our own.
    mode_t mode = status.st_mode & 07777;
    if (::fchown(descriptor, status.st_uid, status.st_gid) != 0) {
        mode &= ~static_cast<mode_t>(S_ISUID);
        if (::fchown(descriptor, static_cast<uid_t>(-1), status.st_gid) != 0) mode &= ~static_cast<mode_t>(S_ISGID);
    }
    if (::fchmod(descriptor, mode) != 0) return -1;
    const std::array<timespec, 2> when{status.st_atim, status.st_mtim};
    return times ? ::futimens(descriptor, when.data()) : 0;
}

int flush(int descriptor) {
    // EINVAL: a file system that has nothing to flush.
    const int result = uninterrupted([&] { return ::fsync(descriptor); });
    return result < 0 && errno == EINVAL ? 0 : result;
}

int rename(const char *from, const char *to) {
    return std::rename(from, to);
}

int keep_as(const char *path, const char *second) {
    if (::link(path, second) == 0) return 0;
    const bool no_links = errno == EPERM || errno == ENOTSUP || errno == ENOSYS || errno == EMLINK;
    if (!no_links) return -1;
    struct stat status {};
    if (::lstat(second, &status) != 0) return std::rename(path, second);
    errno = EEXIST;
    return -1;
}

unsigned long process_number() {
    return static_cast<unsigned long>(::getpid());
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

FileKind kind_of(const char *path) {
    struct stat status {};
    if (::stat(path, &status) != 0) return errno == ENOENT ? FileKind::none : FileKind::unknown;
    return S_ISREG(status.st_mode) ? FileKind::regular : FileKind::special;
}

} // namespace kx::os
