// The settings file on disk: read whole, replaced whole, never seen half written.
#pragma once

#include <cstdint>
#include <string>

#include "platform/system.h"

namespace kxstr::platform {

// Tells one state of a file from another without reading it. All zero: there is no file.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0; // inode
    std::uint64_t size = 0;
    std::int64_t modified = 0; // nanoseconds
    std::int64_t changed = 0;  // likewise; also moves when the file is renamed or its permissions change
    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

// The functions return a RegistryStatus. Symbolic links are followed.

// kNotFound when there is no file, also for want of its folder.
std::uint32_t identify_file(const char *path, FileIdentity &identity) noexcept;

struct FileContent {
    std::string bytes;
    FileIdentity identity;
    // The file changed so shortly before it was read that another change in the same tick of the file system's clock
    // would leave the identity as it is.
    bool just_changed = false;
};
std::uint32_t read_file(const std::string &path, FileContent &content);

// The right to replace a file, held until the end of the object's life. All processes that change the file take it.
//
// It is a lock on the folder: the file itself is replaced at every write, so a lock on it would be on a file that is
// gone, and a lock file would be one more thing to leave behind. A process that dies lets go of it. The file system
// must be able to lock folders; network file systems that cannot give kNoResources.
class FileReplacer {
  public:
    FileReplacer() = default;
    FileReplacer(const FileReplacer &) = delete;
    FileReplacer &operator=(const FileReplacer &) = delete;
    ~FileReplacer();

    // Follows symbolic links to the file that is to be replaced, makes its folder (mode 0700) when it is missing, and
    // takes the lock. kBusy when it is not free, at once or after half a minute.
    std::uint32_t open(const std::string &path, WhenLocked when_locked);

    // Puts a new file in the place of the old one, with its mode and, where the system lets us, its owner; a first file
    // gets mode 0600. After a failure the old file is there as it was; once the new
    // one is in place nothing counts as a failure.
    std::uint32_t replace(const std::string &bytes);

  private:
    std::uint32_t write_temporary(const std::string &bytes);

    int folder_ = -1;
    std::string name_;      // of the file in the folder
    std::string temporary_; // one name for all: only the holder of the lock uses it, so a leftover is ours to remove
};

} // namespace kxstr::platform
