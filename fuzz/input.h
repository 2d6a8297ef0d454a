// What every fuzz target is made of: the bytes that it gets, buffers that end at pages nobody may touch, and a check.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kxstr::fuzz {

// Ends the process with a word about what does not hold.
[[noreturn]] void fail(const char *what, const char *file, int line);

inline void require(bool holds, const char *what, const char *file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!holds) fail(what, file, line);
}

// The bytes of one run: a text, and behind it what is chosen, so that a longer text leaves the choices what they were.
class Input {
  public:
    explicit Input(std::span<const std::uint8_t> bytes);

    // The next choice; when they are used up they begin anew, changed a little.
    std::uint8_t byte();
    std::uint16_t word() { return static_cast<std::uint16_t>(byte() << 8 | byte()); }
    std::uint32_t number() { return static_cast<std::uint32_t>(word()) << 16 | word(); }
    // One of 0 to limit - 1; limit to 65536.
    std::uint32_t below(std::uint32_t limit) { return (limit > 256 ? word() : byte()) % limit; }
    bool flag() { return (byte() & 1) != 0; }
    template <class Range> const auto &one_of(const Range &range) {
        return range[below(static_cast<std::uint32_t>(std::size(range)))];
    }

    // What is left of the text, or its next bytes.
    std::span<const std::uint8_t> rest() { return part(text_.size()); }
    std::span<const std::uint8_t> part(std::size_t most);

  private:
    std::span<const std::uint8_t> text_;
    std::span<const std::uint8_t> choices_;
    std::size_t chosen_ = 0;
};

// Memory between two pages that cannot be read or written. The bytes of a buffer lie right before the one or right
// behind the other; what is left of the memory beside them is watched for writes.
class Memory {
  public:
    static constexpr std::size_t kSize = 0x40000; // a multiple of every system's page

    Memory(std::size_t size, bool at_end);
    ~Memory();
    Memory(const Memory &) = delete;
    Memory &operator=(const Memory &) = delete;
    Memory(Memory &&other) noexcept;
    Memory &operator=(Memory &&) = delete;

    void *data() const { return data_; }

  private:
    std::uint8_t *memory_;
    std::uint8_t *data_;
    std::size_t size_;
};

template <class Unit> class Buffer {
  public:
    // Filled with a pattern that is no text.
    Buffer(Input &input, std::size_t count) : memory_(count * sizeof(Unit), input.flag()), count_(count) {}
    // A copy.
    Buffer(Input &input, std::span<const Unit> units) : Buffer(input, units.size()) { store(units); }
    Buffer(Input &input, const std::vector<Unit> &units) : Buffer(input, std::span<const Unit>(units)) {}
    // A text in more room than it takes.
    Buffer(Input &input, const std::vector<Unit> &units, std::size_t count) : Buffer(input, count) { store(units); }

    Unit *data() const { return static_cast<Unit *>(memory_.data()); }
    std::size_t size() const { return count_; }
    Unit &operator[](std::size_t i) const { return data()[i]; }
    Unit *begin() const { return data(); }
    Unit *end() const { return data() + count_; }
    bool operator==(const Buffer &other) const { return std::vector<Unit>(*this) == std::vector<Unit>(other); }
    explicit operator std::vector<Unit>() const { return {begin(), end()}; }
    // What stands before the first zero, which must be there.
    std::vector<Unit> text() const {
        for (std::size_t i = 0; i < count_; ++i)
            if (data()[i] == 0) return {data(), data() + i};
        fail("a text ends within its buffer", __FILE__, __LINE__);
    }

    void store(std::span<const Unit> units) const {
        require(units.size() <= count_, "a fuzz target stores more than it has room for");
        for (std::size_t i = 0; i < units.size(); ++i)
            data()[i] = units[i];
    }

  private:
    Memory memory_;
    std::size_t count_;
};

// ---- What the targets have in common ----

// Puts the library on one of the systems that it knows, as if nothing had been asked before, with no settings file.
void choose_system(Input &input, const char *settings_file = "");
// A language of up to 7 bytes, mostly one that there is.
void choose_language(Input &input);
// A code page number, mostly one that there is.
std::uint32_t code_page_of(Input &input);

// Zero-terminated texts, without another zero.
std::vector<char> bytes_of(Input &input, std::size_t most = 4000);
std::vector<std::uint16_t> units_of(Input &input, std::size_t most = 2000); // any units
std::vector<std::uint16_t> kx_of(Input &input, std::size_t most = 2000);    // mostly characters of KX

// The sound codes of a document stream of any bytes, with the terminator: what the functions that trust their streams
// may get.
std::vector<std::uint8_t> sound_stream(std::span<const std::uint8_t> bytes);

// A folder that goes with the process.
const char *own_folder();

} // namespace kxstr::fuzz
