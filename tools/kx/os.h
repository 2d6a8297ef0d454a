// What the tool asks of the operating system: files by descriptor. Failing calls return -1, or nothing, and set errno.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kx::os {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

// Once, before anything else: a closed pipe becomes a write error like others, no byte is changed on its way through
// the standard streams, and on Windows the arguments, names of files among them, become UTF-8.
void prepare(int &argc, char **&argv);

int open_to_read(const char *path);
int open_to_write(const char *path); // created, or emptied
std::ptrdiff_t read(int descriptor, void *bytes, std::size_t size);
std::ptrdiff_t write(int descriptor, const void *bytes, std::size_t size);
int close(int descriptor);

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

} // namespace kx::os
