// Files as the commands of kx read and write them: in chunks, with standard input and output as "-", and with messages
// that name the file.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "bytes.h"

namespace kx {

// Takes what is to be said about a file, and the `errno` value that is the reason for it, or 0.
using Tell = std::function<void(const std::string &what, int error)>;
// Says it at once, as the command's.
Tell tell_as(const char *command);

// A part of an input, from a place that the reader chose.
struct Chunk {
    std::span<const std::uint8_t> bytes;
    std::uint64_t offset; // of the first byte in its file
    bool last;            // nothing follows: the file ends with these bytes
};

// Reads one file. No more than one chunk is kept, so memory does not grow with the file.
class Input {
  public:
    // "-" is standard input. A fault is told and makes good() false.
    Input(Tell tell, const std::string &path);
    Input(const char *command, const std::string &path) : Input(tell_as(command), path) {}
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    bool good() const noexcept { return good_; }
    const std::string &name() const noexcept { return name_; } // for messages
    int descriptor() const noexcept { return descriptor_; }

    // The bytes that are not consumed yet and what follows them, some more than at the last call unless it is `last`.
    // When reading fails the fault is told and good() is false.
    Chunk next();
    void consume(std::size_t count);

  private:
    Tell tell_;
    std::string name_;
    int descriptor_ = -1;
    bool good_ = false;
    bool ended_ = false;
    ByteBuffer buffer_;
    std::size_t begin_ = 0; // the bytes that wait are begin_..end_ of the buffer
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0; // of begin_ in the file
};

// What an input begins with, at least so many bytes where it has them; they stay to be read. Empty also when reading
// fails.
std::span<const std::uint8_t> read_start(Input &input, std::size_t size);

// The size of a regular file; 0 for other inputs.
std::uint64_t size_of(const Input &input);

// What a new file keeps of the one in whose place it comes. Its permissions in any case.
struct Replacing {
    bool keeps_times = false;
    std::string backup{}; // the path under which the old file stays; empty: nowhere
};

// Writes one file, or standard output. A file comes into its place only when it is complete: until then the old one is
// what it was, and may be read.
class Output {
  public:
    // An empty path or "-" is standard output. A fault is told and makes good() false.
    Output(Tell tell, const std::string &path, Replacing how = {});
    Output(const char *command, const std::string &path) : Output(tell_as(command), path) {}
    ~Output(); // without close() nothing has changed
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    bool good() const noexcept { return good_; }

    // Both tell a fault and return false: a full disk, a pipe that nobody reads. The end of such a pipe at standard
    // output goes without a word: who reads it has seen enough.
    bool write(std::span<const std::uint8_t> bytes);
    bool write(const std::string &text) {
        return write({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
    }
    bool close();

  private:
    void open_file(const std::string &path);
    void create_beside(const std::string &path);
    bool fail(const std::string &what);
    bool replace();
    void discard();

    Tell tell_;
    std::string name_;
    Replacing how_;
    std::string target_;    // the file to be replaced, behind all links; empty: the descriptor is that of the output
    std::string temporary_; // what is written until then
    bool replaces_ = false; // there is an old file
    int descriptor_ = -1;
    bool good_ = false;
};

// A whole output.
bool write_text(const char *command, const std::string &path, const std::string &text);

// Whether a name is one that Output gives a file that is not complete.
bool is_temporary(const std::string &path);

// Whether the output path names an existing regular file that is also one of the inputs.
bool is_one_of(const std::string &output, std::span<const std::string> inputs);
inline bool is_standard(const std::string &path) {
    return path.empty() || path == "-";
}

// A line on the terminal for an input that takes longer than a second; nothing when standard error is not a terminal.
class Progress {
  public:
    explicit Progress(const Input &input);
    explicit Progress(std::uint64_t total); // of several inputs, in bytes; 0: not known
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void at(std::uint64_t done) { at(done, name_); }
    void at(std::uint64_t done, const std::string &name);
    void clear(); // before a message

  private:
    std::string name_;
    std::uint64_t total_ = 0; // 0: not known
    bool wanted_;
    bool shown_ = false;
    std::int64_t due_; // when the line is written next, in milliseconds of a clock that only runs forward
};

// Whether what is written there is coloured: on a terminal, unless NO_COLOR or TERM=dumb are set.
bool has_colours(int descriptor);
inline constexpr const char *kRed = "\033[31m";
inline constexpr const char *kBold = "\033[1m";
inline constexpr const char *kDim = "\033[2m";
inline constexpr const char *kPlain = "\033[0m";

// "COMMAND: WHAT" and, for `errno` values other than 0, what the system says about it, on standard error.
void report(const char *command, const std::string &what, int error = 0);
// "F0 29 01 F0".
std::string hex(std::span<const std::uint8_t> bytes);

// The operands as paths; "-" when there are none.
std::vector<std::string> operands_or_standard_input(int argc, char **argv, int first);

} // namespace kx
