#include "platform/portable/settings_file.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/system.h"

namespace kxstr::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kLockPatience = 30s;
constexpr auto kLockPause = 1ms;
constexpr int kMostLinks = 40; // symbolic links in a row, as the system has it
constexpr std::int64_t kSecond = 1'000'000'000;
// Longer than a tick of any file system's clock in use on local disks.
constexpr std::int64_t kClockTick = kSecond / 20;

std::uint32_t status_of(int error) noexcept {
    switch (error) {
    case 0: return kSuccess;
    case ENOENT:
    case ENOTDIR: return kNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EEXIST: // a leftover of somebody else in a folder where only owners remove files
    case ETXTBSY: return kAccessDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return kDiskFull;
    case EINVAL:
    case ENAMETOOLONG: return kBadParameter;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
    case ENOLCK:
    case ELOOP: return kNoResources;
    default: return kInputOutputError;
    }
}

class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    explicit operator bool() const noexcept { return number_ >= 0; }
    int number() const noexcept { return number_; }

  private:
    int number_;
};

std::int64_t nanoseconds(const timespec &time) noexcept {
    return time.tv_sec * kSecond + time.tv_nsec;
}

FileIdentity identity_of(const struct stat &info) noexcept {
    return {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
            static_cast<std::uint64_t>(info.st_size), nanoseconds(info.st_mtim), nanoseconds(info.st_ctim)};
}

bool read_all(int file, std::string &bytes) {
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(file, buffer, sizeof buffer);
        if (count == 0) return true;
        if (count > 0) {
            bytes.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
}

bool write_all(int file, const std::string &bytes) noexcept {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = ::write(file, bytes.data() + done, bytes.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// A path into its folder (with the slash; "./" when it has none) and the name.
struct SplitPath {
    std::string folder;
    std::string name;
};

SplitPath split(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return {"./", path};
    return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

// Where a chain of symbolic links ends, whether something is there or not.
std::uint32_t follow_links(std::string &path) {
    for (int links = 0; links <= kMostLinks; ++links) {
        char target[4096];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0) return errno == EINVAL || errno == ENOENT ? kSuccess : status_of(errno);
        if (static_cast<std::size_t>(length) == sizeof target) return kBadParameter;
        const std::string_view text(target, static_cast<std::size_t>(length));
        path = text.starts_with('/') ? std::string(text) : split(path).folder.append(text);
    }
    return kNoResources;
}

// So that a loss of power cannot bring the old state of the folder back. Whoever looks sees the new one without it, and
// some folders cannot be flushed: one that may not be read, or one of a file system that has nothing to flush. So a
// failure changes nothing.
void flush_folder(int folder) noexcept {
    if (folder >= 0) static_cast<void>(::fsync(folder));
}

// Makes a folder and what is missing above it. Returns an errno.
int make_folder(const std::string &folder) {
    std::string path = folder;
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (::mkdir(path.c_str(), 0700) != 0) {
        if (errno == EEXIST) return 0;
        if (errno != ENOENT) return errno;
        const std::string above = split(path).folder;
        if (above == "/" || above == "./") return ENOENT;
        if (const int error = make_folder(above); error != 0) return error;
        if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return errno;
    }
    const Descriptor above(::open(split(path).folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    flush_folder(above.number());
    return 0;
}

// Going beyond the limit would not only fail but raise a signal that ends the host.
bool exceeds_size_limit(std::size_t size) noexcept {
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && size > limit.rlim_cur;
}

} // namespace

std::uint32_t identify_file(const char *path, FileIdentity &identity) noexcept {
    struct stat info {};
    if (::stat(path, &info) != 0) return status_of(errno);
    identity = identity_of(info);
    return kSuccess;
}

std::uint32_t read_file(const std::string &path, FileContent &content) {
    // Not blocking: the path may name a pipe.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file) return status_of(errno);
    for (int attempt = 0; attempt < 8; ++attempt) {
        struct stat info {};
        if (::fstat(file.number(), &info) != 0) return status_of(errno);
        if (S_ISDIR(info.st_mode)) return kAccessDenied;
        if (!S_ISREG(info.st_mode)) return kDamaged;
        // The clock that stamps files, which stands still between ticks.
        timespec now{};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
        content.identity = identity_of(info);
        content.just_changed = nanoseconds(now) - content.identity.changed < kClockTick;
        content.bytes.clear();
        if (::lseek(file.number(), 0, SEEK_SET) != 0 || !read_all(file.number(), content.bytes)) {
            return status_of(errno);
        }
        // An editor may write into the file itself while we read.
        if (::fstat(file.number(), &info) != 0) return status_of(errno);
        if (identity_of(info) == content.identity && content.bytes.size() == content.identity.size) break;
        content.just_changed = true;
    }
    return kSuccess;
}

FileReplacer::~FileReplacer() {
    if (folder_ >= 0) ::close(folder_);
}

std::uint32_t FileReplacer::open(const std::string &path, WhenLocked when_locked) {
    std::string target = path;
    if (const std::uint32_t status = follow_links(target); status != kSuccess) return status;
    const auto [folder, name] = split(target);
    if (name.empty()) return kBadParameter;
    name_ = name;
    temporary_ = "." + name + ".new";

    const auto open_folder = [&folder = folder] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); };
    folder_ = open_folder();
    if (folder_ < 0 && errno == ENOENT) {
        if (const int error = make_folder(folder); error != 0) return status_of(error);
        folder_ = open_folder();
    }
    if (folder_ < 0) return status_of(errno);

    // Trying again and again rather than waiting: a stopped process must not stop us for ever.
    const auto give_up = std::chrono::steady_clock::now() + kLockPatience;
    while (::flock(folder_, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return kNoResources;
        if (when_locked == WhenLocked::gives_up || std::chrono::steady_clock::now() > give_up) return kBusy;
        std::this_thread::sleep_for(kLockPause);
    }
    return kSuccess;
}

std::uint32_t FileReplacer::write_temporary(const std::string &bytes) {
    if (::unlinkat(folder_, temporary_.c_str(), 0) != 0 && errno != ENOENT) return status_of(errno);
    const Descriptor file(
        ::openat(folder_, temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) return status_of(errno);

    struct stat old {};
    bool has_mode = false; // to take over
    mode_t kept = 07777;   // of it
    if (::fstatat(folder_, name_.c_str(), &old, 0) == 0) {
        // A file that its owner made read-only is not ours to replace, though the folder would allow it.
        if (::faccessat(folder_, name_.c_str(), W_OK, AT_EACCESS) != 0) return status_of(errno);
        // Only a privileged process can keep a foreign owner; the group alone may be one of our own.
        if (::fchown(file.number(), old.st_uid, old.st_gid) != 0) {
            // What a file may do as its owner or group is nothing to hand on to others.
            kept &= ~static_cast<mode_t>(S_ISUID);
            if (::fchown(file.number(), static_cast<uid_t>(-1), old.st_gid) != 0) {
                if (errno != EPERM) return status_of(errno);
                kept &= ~static_cast<mode_t>(S_ISGID);
            }
        }
        has_mode = true;
    } else if (errno != ENOENT) {
        return status_of(errno);
    }
    if (!write_all(file.number(), bytes)) return status_of(errno);
    // Last: a change of the owner takes mode bits away, and so does writing.
    if (has_mode && ::fchmod(file.number(), old.st_mode & kept) != 0) return status_of(errno);
    if (::fsync(file.number()) != 0) return status_of(errno);
    return kSuccess;
}

std::uint32_t FileReplacer::replace(const std::string &bytes) {
    if (exceeds_size_limit(bytes.size())) return kDiskFull;
    std::uint32_t status = write_temporary(bytes);
    if (status == kSuccess && ::renameat(folder_, temporary_.c_str(), folder_, name_.c_str()) != 0) {
        status = status_of(errno);
    }
    if (status != kSuccess) {
        ::unlinkat(folder_, temporary_.c_str(), 0);
        return status;
    }
    flush_folder(folder_);
    return kSuccess;
}

} // namespace kxstr::platform
