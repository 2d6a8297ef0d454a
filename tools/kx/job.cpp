#include "job.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "os.h"
#include "paths.h"
#include "text/scalars.h"

namespace kx {
namespace {

std::string name_of(char32_t character) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04lX", static_cast<unsigned long>(character));
    return text;
}

class Work {
  public:
    Work(const Job &job, const Choices &choices, ChunkConverter &converter, const Surroundings &surroundings)
        : job_(job),
          choices_(choices),
          converter_(converter),
          surroundings_(surroundings),
          line_ends_(choices.line_ends, choices.to) {
        constexpr std::uint8_t control_z = 0x1A;
        if (choices.control_z_ends) control_z_ = unit_of_control(control_z, *choices.from);
        if (is_kx_encoding(*choices.from) && choices.from->kind != EncodingKind::kx) return;
        place_.emplace(*choices.from);
        can_be_read_again_ = os::regular_file(job.input.c_str()).has_value();
    }

    JobResult run(std::unique_ptr<Input> input) {
        result_.form = kx::name_of(*choices_.from);
        converter_.begin();
        result_.done = run_to_end(std::move(input));
        for (Tally *tally : {&result_.left_out, &result_.replaced, &result_.united})
            tally->pack();
        return std::move(result_);
    }

  private:
    Tell tell() {
        return [this](const std::string &what, int error) { result_.messages.push_back({what, error}); };
    }

    bool run_to_end(std::unique_ptr<Input> input) {
        std::optional<Output> output;
        if (job_.output) {
            const std::filesystem::path folder = path_of(*job_.output).parent_path();
            if (!folder.empty()) std::filesystem::create_directories(folder, error_); // what fails is told below
            output.emplace(tell(), *job_.output, job_.how);
            if (!output->good()) return false;
        }
        const auto write = [&](std::span<const std::uint8_t> bytes) {
            return output ? output->write(bytes) : surroundings_.write(bytes);
        };
        if (choices_.writes_mark && output && !write(byte_order_mark(choices_.to))) return false;
        if (!convert(*input, write)) return false;
        input.reset(); // Windows replaces no open file
        return !output || output->close();
    }

    template <class Write> bool convert(Input &input, const Write &write) {
        for (;;) {
            Chunk chunk = input.next();
            if (!input.good()) return false;
            if (!control_z_.empty()) end_at_control_z(chunk);
            bytes_.clear();
            const auto done = converter_.convert(
                chunk, bytes_, [&](const Change &change) { return take_change(input, chunk, change); });
            line_ends_.pass(bytes_, chunk.last || done.stopped);
            result_.characters += done.characters;
            if (!write(bytes_) || done.stopped) return false;
            if (surroundings_.progress) surroundings_.progress(done.consumed);
            if (chunk.last) return true;
            if (place_ && !can_be_read_again_) place_->pass(chunk.bytes.first(done.consumed));
            input.consume(done.consumed);
        }
    }

    // DOS programs filled a file up behind it.
    void end_at_control_z(Chunk &chunk) const {
        for (std::size_t at = 0; at + control_z_.size() <= chunk.bytes.size(); at += control_z_.size()) {
            if (!std::ranges::equal(chunk.bytes.subspan(at, control_z_.size()), control_z_)) continue;
            chunk.bytes = chunk.bytes.first(at);
            chunk.last = true;
            return;
        }
    }

    bool take_change(const Input &input, const Chunk &chunk, const Change &change) {
        const std::span<const std::uint8_t> bytes = chunk.bytes.subspan(change.place, change.length);
        const std::optional<char32_t> character = converter_.code_point(chunk, change);
        if (change.kind == Change::united) {
            if (choices_.strict) return tell_fault(input, chunk, change, character, "becomes another character");
            result_.united.add(character, bytes);
        } else if (choices_.lost == Choices::drop) {
            result_.left_out.add(character, bytes);
        } else if (choices_.lost == Choices::substitute) {
            if (!converter_.append(choices_.substitute_character, bytes_))
                bytes_.insert(bytes_.end(), choices_.substitute_bytes.begin(), choices_.substitute_bytes.end());
            result_.replaced.add(character, bytes);
        } else {
            return tell_fault(input, chunk, change, character, "does not convert");
        }
        return true;
    }

    // Counting lines while they pass would cost every text something, for the few that have a fault.
    void pass_again(std::uint64_t size) {
        Input input([](const std::string &, int) {}, job_.input);
        while (input.good() && size != 0) {
            const Chunk chunk = input.next();
            const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(chunk.bytes.size(), size));
            if (count == 0) break;
            place_->pass(chunk.bytes.first(count));
            input.consume(count);
            size -= count;
        }
    }

    // Always false.
    bool tell_fault(const Input &input, const Chunk &chunk, const Change &change, std::optional<char32_t> character,
                    const char *what) {
        std::string text = input.name();
        if (place_) {
            if (can_be_read_again_) pass_again(chunk.offset);
            place_->pass(chunk.bytes.first(change.place));
            for (const std::uint64_t number : {place_->line(), place_->column()})
                text.append(":").append(std::to_string(number));
        }
        const std::string bytes = hex(chunk.bytes.subspan(change.place, change.length));
        text += ": byte " + std::to_string(chunk.offset + change.place) + ": ";
        text += character ? name_of(*character) + " (" + bytes + ")" : bytes;
        text.append(" ").append(what);
        text += " from " + kx::name_of(*choices_.from) + " to " + kx::name_of(choices_.to);
        const std::string help = character ? other_page_for(*character) : "";
        if (!help.empty()) text += "; " + help + " may help";
        tell()(text, 0);
        return false;
    }

    // KX text does not say whose an East Asian character is; the option that does, where that is what is missing.
    std::string other_page_for(char32_t character) const {
        const auto has = [&](const CodePage &page) {
            return character <= 0xFFFF &&
                   kxstr::text::kx_of_unicode(page, static_cast<std::uint16_t>(character)) != KX_NONE;
        };
        const bool is_native = choices_.from->kind == EncodingKind::code_page || is_kx_encoding(*choices_.from);
        if (is_native || !is_kx_encoding(choices_.to) || has(choices_.pages.text)) return "";
        std::string list;
        for (const std::uint32_t number : {932u, 936u, 949u, 950u})
            if (has(page_of_windows_number(number)))
                list += (list.empty() ? "--ansi=" : " or ") + std::to_string(number);
        return list;
    }

    const Job &job_;
    const Choices &choices_;
    ChunkConverter &converter_;
    const Surroundings &surroundings_;
    LineEndFilter line_ends_;
    ByteBuffer control_z_; // that ends a text; empty: none does
    std::optional<TextPlace> place_;
    bool can_be_read_again_ = false;
    ByteBuffer bytes_;
    std::error_code error_;
    JobResult result_;
};

} // namespace

// ---- Tally ----

namespace {

// Bytes that are no character: their number, and the first of them.
constexpr std::uint64_t kIsBytes = std::uint64_t{1} << 63;
constexpr unsigned kMostBytes = 6;

} // namespace

void Tally::add(std::optional<char32_t> character, std::span<const std::uint8_t> bytes) {
    constexpr char32_t end = 0x10000;
    ++total_;
    if (character && *character < end) {
        if (counts_.empty()) counts_.resize(end);
        ++counts_[*character];
        return;
    }
    std::uint64_t key = kIsBytes | (std::uint64_t{std::min<std::size_t>(bytes.size(), kMostBytes)} << (8 * kMostBytes));
    for (std::size_t i = 0; i < std::min<std::size_t>(bytes.size(), kMostBytes); ++i)
        key |= std::uint64_t{bytes[i]} << (8 * i);
    ++others_[character ? *character : key];
}

void Tally::pack() {
    for (std::size_t value = 0; value < counts_.size(); ++value)
        if (counts_[value] != 0) others_.emplace(value, counts_[value]);
    counts_ = {};
}

std::string Tally::list() const {
    constexpr std::size_t most = 8;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> all(others_.begin(), others_.end());
    std::ranges::sort(all, [](const auto &a, const auto &b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    std::string text;
    for (std::size_t at = 0; at < std::min(all.size(), most); ++at) {
        const auto [key, count] = all[at];
        ByteBuffer bytes;
        for (unsigned i = 0; (key & kIsBytes) != 0 && i < ((key >> (8 * kMostBytes)) & 0xFF); ++i)
            bytes.push_back(static_cast<std::uint8_t>(key >> (8 * i)));
        text += (at == 0 ? "" : ", ") + (bytes.empty() ? name_of(static_cast<char32_t>(key)) : hex(bytes)) + " (" +
                std::to_string(count) + ")";
    }
    if (all.size() > most) {
        const std::size_t more = all.size() - most;
        text += " and " + std::to_string(more) + (more == 1 ? " other" : " others");
    }
    return text;
}

std::unique_ptr<Input> open_input(const Job &job, const Tell &tell) {
    std::error_code error;
    if (std::filesystem::is_directory(path_of(job.input), error)) {
        tell(job.input + ": Is a directory; -r takes the files in it", 0);
        return nullptr;
    }
    if (job.in_place && os::kind_of(job.input.c_str()) == os::FileKind::special) {
        tell(job.input + ": not a regular file", 0);
        return nullptr;
    }
    auto input = std::make_unique<Input>(tell, job.input);
    return input->good() ? std::move(input) : nullptr;
}

JobResult convert(const Job &job, std::unique_ptr<Input> input, const Choices &choices, ChunkConverter &converter,
                  const Surroundings &surroundings) {
    return Work(job, choices, converter, surroundings).run(std::move(input));
}

} // namespace kx
