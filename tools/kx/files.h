// Files as the commands of kx read and write them: in chunks, with standard input and output as "-", and with messages
// that name the file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kx {

// A part of an input, from a place that the reader chose.
struct Chunk {
    std::span<const std::uint8_t> bytes;
    std::uint64_t offset; // of the first byte in its file
    bool last;            // nothing follows: the file ends with these bytes
};

// Reads one file. No more than one chunk is kept, so memory does not grow with the file.
class Input {
  public:
    // "-" is standard input. A fault is reported and makes good() false.
    Input(const char *command, const std::string &path);
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    bool good() const noexcept { return good_; }
    const std::string &name() const noexcept { return name_; } // for messages
    int descriptor() const noexcept { return descriptor_; }

    // The bytes that are not consumed yet and what follows them, some more than at the last call unless it is `last`.
    // When reading fails the fault is reported and good() is false.
    Chunk next();
    void consume(std::size_t count);

  private:
    const char *command_;
    std::string name_;
    int descriptor_ = -1;
    bool good_ = false;
    bool ended_ = false;
    std::vector<std::uint8_t> buffer_;
    std::size_t begin_ = 0; // the bytes that wait are begin_..end_ of the buffer
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0; // of begin_ in the file
};

// The size of a regular file; 0 for other inputs.
std::uint64_t size_of(const Input &input);

// Writes one file, or standard output.
class Output {
  public:
    // An empty path or "-" is standard output. A fault is reported and makes good() false.
    Output(const char *command, const std::string &path);
    ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    bool good() const noexcept { return good_; }
    int descriptor() const noexcept { return descriptor_; }

    // Both report a fault and return false: a full disk, a pipe that nobody reads.
    bool write(std::span<const std::uint8_t> bytes);
    bool close();

  private:
    bool fail(const char *what);

    const char *command_;
    std::string name_;
    int descriptor_ = -1;
    bool good_ = false;
};

// Whether the output path names an existing regular file that is also one of the inputs. Writing it would destroy it.
bool is_one_of(const std::string &output, std::span<const std::string> inputs);

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

// "COMMAND: WHAT" and, for `errno` values other than 0, what the system says about it, on standard error.
void report(const char *command, const std::string &what, int error = 0);
// "F0 29 01 F0".
std::string hex(std::span<const std::uint8_t> bytes);

// The operands as paths; "-" when there are none.
std::vector<std::string> operands_or_standard_input(int argc, char **argv, int first);

} // namespace kx
