// One file from one form to another: what is asked, how it is done, and what comes of it. Jobs know nothing of each
// other, so that each thread can have one.
#pragma once

#include <unordered_map>

#include "chunk_converter.h"
#include "files.h"
#include "line_ends.h"

namespace kx {

// What all jobs of a command have in common.
struct Choices {
    std::optional<Encoding> from; // of a job it is set
    Encoding to;
    TextPages pages;
    const Transform *transform = nullptr;
    enum { stop, drop, substitute } lost = stop; // what becomes of characters that do not convert
    ByteBuffer substitute_bytes{};
    char32_t substitute_character = 0; // the same, where its bytes depend on those before
    bool strict = false;               // a character that is united with another ends the work
    LineEnds line_ends = LineEnds::keep;
    bool control_z_ends = false;
    bool writes_mark = false;
};

struct Job {
    std::string input;
    std::optional<std::string> output; // nothing: what is written joins that of the other jobs
    Replacing how{};
    bool in_place = false;
};

// Characters by their values, with how many there are of each.
class Tally {
  public:
    void add(std::optional<char32_t> character, std::span<const std::uint8_t> bytes);

    std::uint64_t total() const noexcept { return total_; }
    // "U+20AC (2), 81 (1)": the most frequent first.
    std::string list() const;
    // When all is counted, and before list(): takes no more room than it needs.
    void pack();

  private:
    std::vector<std::uint64_t> counts_;                       // of the values up to U+FFFF while they are counted
    std::unordered_map<std::uint64_t, std::uint64_t> others_; // of all others: higher values, and bytes with a mark
    std::uint64_t total_ = 0;
};

struct JobResult {
    bool done = false;
    std::string form{}; // of the input
    std::uint64_t characters = 0;
    Tally left_out{};
    Tally replaced{};
    Tally united{};
    struct Message {
        std::string what;
        int error;
    };
    std::vector<Message> messages{}; // in the order in which they came up
};

// What a job does to the world outside its own files.
struct Surroundings {
    std::function<bool(std::span<const std::uint8_t> bytes)> write; // what has no output of its own; false ends the job
    std::function<void(std::uint64_t more)> progress;               // in bytes of the input
};

// Null when there is nothing to read; that has been told.
std::unique_ptr<Input> open_input(const Job &job, const Tell &tell);

// The converter is one for these choices and remembers nothing of another job.
JobResult convert(const Job &job, std::unique_ptr<Input> input, const Choices &choices, ChunkConverter &converter,
                  const Surroundings &surroundings);

} // namespace kx
