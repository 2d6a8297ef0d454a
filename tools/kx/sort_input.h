// What a command line of `kx sort` asks for, and its inputs line by line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "files.h"
#include "lines.h"
#include "sort_order.h"

namespace kx {

inline constexpr const char *kSortCommand = "kx sort"; // in messages

struct SortRequest {
    LineForm form{{EncodingKind::utf8, {}}, {}};
    SortOrder order;
    bool unique = false;
    bool strict = false; // what KX lacks ends the work
    unsigned jobs = 1;
    std::string output;
    std::vector<std::string> inputs;
};

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

// Characters that KX lacks, told once: the first of them at once when they end the work, else all of them at the end.
class LackingReport {
  public:
    explicit LackingReport(const SortRequest &request) : request_(request) {}

    struct Place {
        std::string input;
        std::size_t line; // both count from 1
        std::size_t column;
    };
    // False when they end the work.
    bool add(std::size_t count, const LackingCharacter &first, ByteSpan bytes, const Place &place);
    void tell() const;

  private:
    const SortRequest &request_;
    std::size_t count_ = 0;
    std::string first_;
};

// Of an input that ends with half a unit, behind which no line end could be told.
void tell_half_character(const std::string &input);

// The lines of one input, one after another.
class LineInput {
  public:
    LineInput(const SortRequest &request, const std::string &path);

    bool good() const noexcept { return good_ && input_.good(); }
    const std::string &name() const noexcept { return input_.name(); }

    // False at the end, and after a fault, which has been reported.
    bool next(LackingReport &report);
    ByteSpan bytes() const noexcept { return line_; }
    // The line end that the last line lacks; mostly nothing.
    ByteSpan missing_end() const noexcept { return missing_end_; }
    const LineText &text() const noexcept { return text_; }
    std::size_t number() const noexcept { return number_; } // counts from 1

  private:
    const SortRequest &request_;
    Input input_;
    Progress progress_;
    LineReader reader_;
    Chunk chunk_{{}, 0, false};
    std::size_t done_ = 0; // bytes of the chunk
    ByteSpan line_;
    ByteSpan missing_end_;
    LineText text_;
    std::size_t number_ = 0;
    bool good_ = true;
};

// A line that stays when the input goes on, with its key.
class KeptLine {
  public:
    void keep(LineOrder &order, const LineInput &input);

    // With a line end.
    ByteSpan bytes() const noexcept { return bytes_; }
    // As the lines are sorted in memory.
    static int compare(LineOrder &order, KeptLine &a, KeptLine &b);

  private:
    Bytes bytes_;
    Bytes key_;
    bool has_key_ = false;
    std::vector<KxChar> chars_;
    std::vector<std::uint32_t> lacking_;

    LineText text() { return {std::span(chars_).first(chars_.size() - 1), lacking_.data()}; }
};

} // namespace kx
