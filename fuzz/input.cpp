#include "input.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <kxstr/core.h>
#include <kxstr/text.h>
#include <string>

#include "platform/system.h"
#include "support/process_state.h"

namespace kxstr::fuzz {
namespace {

constexpr std::uint8_t kUntouched = 0xA5;
constexpr std::size_t kChoices = 64; // bytes at most
constexpr std::size_t kWatched = 64; // bytes beside a buffer

// Given back to be used again: reserving takes far longer than a run.
std::vector<std::uint8_t *> &free_memories() {
    static std::vector<std::uint8_t *> all;
    return all;
}

std::uint8_t *new_memory() {
    auto *start = static_cast<std::uint8_t *>(platform::reserve_address_space(3 * Memory::kSize));
    require(start != nullptr && platform::commit_memory(start + Memory::kSize, Memory::kSize), "no memory");
    return start + Memory::kSize;
}

} // namespace

void fail(const char *what, const char *file, int line) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, what);
    std::abort();
}

Input::Input(std::span<const std::uint8_t> bytes)
    : text_(bytes.first(bytes.size() - std::min(kChoices, (bytes.size() + 1) / 2))),
      choices_(bytes.subspan(text_.size())) {}

std::uint8_t Input::byte() {
    if (choices_.empty()) return 0;
    const std::size_t pass = chosen_ / choices_.size();
    return static_cast<std::uint8_t>(choices_[chosen_++ % choices_.size()] ^ (37 * pass));
}

std::span<const std::uint8_t> Input::part(std::size_t most) {
    const auto first = text_.first(std::min(most, text_.size()));
    text_ = text_.subspan(first.size());
    return first;
}

Memory::Memory(std::size_t size, bool at_end) : size_(size) {
    require(size <= kSize, "a fuzz target wants a larger buffer than there is");
    if (free_memories().empty()) free_memories().push_back(new_memory());
    memory_ = free_memories().back();
    free_memories().pop_back();
    data_ = at_end ? memory_ + kSize - size : memory_;
    std::uint8_t *const from = std::max(memory_, data_ - std::min<std::ptrdiff_t>(kWatched, data_ - memory_));
    std::fill(from, std::min(data_ + size + kWatched, memory_ + kSize), kUntouched);
}

Memory::Memory(Memory &&other) noexcept : memory_(other.memory_), data_(other.data_), size_(other.size_) {
    other.memory_ = nullptr;
}

Memory::~Memory() {
    if (memory_ == nullptr) return;
    const auto untouched = [](std::uint8_t byte) { return byte == kUntouched; };
    const std::ptrdiff_t before = std::min<std::ptrdiff_t>(kWatched, data_ - memory_);
    const std::ptrdiff_t behind = std::min<std::ptrdiff_t>(kWatched, memory_ + kSize - (data_ + size_));
    require(std::all_of(data_ - before, data_, untouched), "nothing is written before a buffer");
    require(std::all_of(data_ + size_, data_ + size_ + behind, untouched), "nothing is written behind a buffer");
    free_memories().push_back(memory_);
}

void choose_system(Input &input, const char *settings_file) {
    test::System system = input.one_of(test::kSystems);
    if (input.below(8) == 0) system.ansi = code_page_of(input);
    test::run_on(system, settings_file);
    VaskSetLanguage("EN");
}

void choose_language(Input &input) {
    static constexpr const char *kLanguages[] = {"EN", "US", "DE", "ES", "SV", "DA", "CZ", "PL",
                                                 "HU", "GR", "RU", "TR", "HE", "AR", "JA", "KO"};
    if (input.below(8) != 0) {
        VaskSetLanguage(input.one_of(kLanguages));
    } else {
        const Buffer<char> language(input, bytes_of(input, 10));
        VaskSetLanguage(language.data());
    }
}

std::uint32_t code_page_of(Input &input) {
    static constexpr std::uint32_t kPages[] = {437,  737,  775,   850,   852,   855,   857,   860,   861,   862,
                                               863,  864,  865,   866,   869,   874,   932,   934,   936,   938,
                                               949,  950,  1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,
                                               1258, 1361, 10000, 18851, 18852, 18857, 28591, 28605, 65001, 0xFFFFFFFF};
    const std::uint8_t which = input.byte();
    return which < 240 ? kPages[which % std::size(kPages)] : input.word();
}

std::vector<char> bytes_of(Input &input, std::size_t most) {
    std::vector<char> text;
    for (const std::uint8_t byte : input.part(most))
        if (byte != 0) text.push_back(static_cast<char>(byte));
    text.push_back(0);
    return text;
}

std::vector<std::uint16_t> units_of(Input &input, std::size_t most) {
    std::vector<std::uint16_t> text;
    const auto bytes = input.part(2 * most);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        if (const auto unit = static_cast<std::uint16_t>(bytes[i] | bytes[i + 1] << 8); unit != 0) text.push_back(unit);
    text.push_back(0);
    return text;
}

// ASCII as it is. Any other byte chooses the set of the byte behind it: one in three is the set itself, the codes of KX
// strings among them, the others lead to the sets that have rules of their own.
std::vector<std::uint16_t> kx_of(Input &input, std::size_t most) {
    static constexpr std::uint8_t kSets[] = {1, 1, 1, 2, 4, 5, 8, 8, 9, 10, 10, 11, 12, 13, 36, 37, 38, 46, 0x82, 0xA5};
    std::vector<std::uint16_t> text;
    const auto bytes = input.part(most);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::uint16_t unit = bytes[i];
        if (unit >= 0x80 && i + 1 < bytes.size()) {
            const unsigned set = unit % 3 == 0 ? unit : kSets[unit % std::size(kSets)];
            unit = static_cast<std::uint16_t>(set << 8 | bytes[++i]);
        }
        if (unit != 0) text.push_back(unit);
    }
    text.push_back(0);
    return text;
}

std::vector<std::uint8_t> sound_stream(std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> stream;
    KxStreamCode code;
    while (KxStreamNext(bytes.data(), bytes.size(), &code) != 0) {
        if (code.fault == KX_STREAM_SOUND && code.kind != KX_STREAM_END)
            stream.insert(stream.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(code.size));
        bytes = bytes.subspan(code.size);
    }
    stream.push_back(0);
    return stream;
}

const char *own_folder() {
    struct Folder {
        std::string path = (std::filesystem::temp_directory_path() / "kxstr-fuzz-XXXXXX").string();
        Folder() { require(::mkdtemp(path.data()) != nullptr, "no temporary folder"); }
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Folder folder;
    return folder.path.c_str();
}

} // namespace kxstr::fuzz
