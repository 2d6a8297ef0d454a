// What the tool asks of the operating system: files by descriptor. Failing calls return -1, or nothing, and set errno.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace kx::os {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

// Once, before anything else: a closed pipe and a limit on the size of files become write errors like others, a closed
// standard stream cannot become a file that is opened later, no byte is changed on its way through the standard
// streams, and on Windows the arguments, names of files among them, become UTF-8.
void prepare(int &argc, char **&argv);

int open_to_read(const char *path);
int open_to_write(const char *path); // created, or emptied
std::ptrdiff_t read(int descriptor, void *bytes, std::size_t size);
std::ptrdiff_t write(int descriptor, const void *bytes, std::size_t size);
int close(int descriptor);

// ---- Converters of text ----

// From one form of text to another, piece by piece. Either one form is UTF-16, low byte first.
class Transcoder {
  public:
    struct Result {
        enum Stop { done, full, incomplete, fault } stop;
        std::size_t read;    // bytes
        std::size_t written; // bytes
        std::size_t bad;     // for a fault: bytes of the character behind those read
    };

    Transcoder() = default;
    virtual ~Transcoder() = default;
    Transcoder(const Transcoder &) = delete;
    Transcoder &operator=(const Transcoder &) = delete;

    // Up to the first character that does not convert, that is not complete or that does not fit.
    virtual Result convert(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination) = 0;
    // Begins anew; writes what a text must end with. Returns the number of bytes.
    virtual std::size_t end(std::span<std::uint8_t>) { return 0; }
};
constexpr std::size_t kMostAtEnd = 64; // bytes that `end` may write

// What the system has; null for an encoding that it does not know.
std::unique_ptr<Transcoder> open_reader(const std::string &encoding); // to UTF-16
std::unique_ptr<Transcoder> open_writer(const std::string &encoding); // from it
extern const char *const kWhereEncodingsAre;                          // for people

// ---- A new file in the place of an old one ----

bool may_write(const char *path);
// A file that is not there yet, for writing. Until `settle` it is removed when a signal ends the process.
int create(const char *path);
void settle(const char *path);
int remove(const char *path);
// Gives an open file the permissions of another and, as far as the process may, its owner; with `times` also when that
// was read and changed.
int take_attributes(int descriptor, const char *from, bool times);
// Until the bytes are where a loss of power does not reach them.
int flush(int descriptor);
// A file gets another name, which may be that of a file that then is gone.
int rename(const char *from, const char *to);
// Keeps a file under a second name, one that nothing has yet. Where files have one name only it loses the first.
int keep_as(const char *path, const char *second);
unsigned long process_number();

// A terminal that can clear a line.
bool is_terminal(int descriptor);

struct RegularFile {
    std::uint64_t device;
    std::uint64_t number; // on its device
    std::uint64_t size;   // bytes

    bool is_same_as(const RegularFile &other) const { return device == other.device && number == other.number; }
};

// Nothing for pipes, terminals, folders and what does not exist.
std::optional<RegularFile> regular_file(int descriptor);
std::optional<RegularFile> regular_file(const char *path);
enum class FileKind : unsigned char {
    none,    // nothing has this name
    regular, // a file
    special, // something else: a device, a pipe, a folder
    unknown, // it cannot be told; errno is set
};
FileKind kind_of(const char *path);

} // namespace kx::os
