#include "registry/link_engine.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/roots.h"
#include "registry/values.h"

namespace kxstr::registry {
namespace {

constexpr const char *kLinkSettingsKey = "Software\\Norvane\\Yarrowind\\21\\LogicalCharacters";
constexpr const char *kSettingsValue = "Yarrowind Logical Syntax Characters";
constexpr const char *kBaseSubkey = "Software";
constexpr std::array<std::uint16_t, 5> kDefaultSyntax{u'"', u'*', u'<', u'>', u'|'};
constexpr char kDefaultSyntaxText[] = "\"*<>|";
constexpr std::size_t kSyntaxRoom = 8;             // units, the terminator included
constexpr std::size_t kBytesLikeAReference = 4096; // so many cost as much time, roughly
constexpr std::uint16_t kDoubleQuote = u'"';

// Text as it lies in the registry: little-endian units at any address. Behind its end there are zeros.
class WideText {
  public:
    explicit WideText(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}
    std::size_t size() const noexcept { return bytes_.size() / 2; }
    std::uint16_t operator[](std::size_t index) const noexcept {
        return index < size() ? load_u16le(bytes_.data() + 2 * index) : std::uint16_t{0};
    }
    WideText part(std::size_t begin, std::size_t end) const noexcept {
        return WideText(bytes_.subspan(2 * begin, 2 * (end - begin)));
    }
    WideText up_to_zero() const noexcept {
        std::size_t length = 0;
        while ((*this)[length] != 0)
            ++length;
        return part(0, length);
    }
    std::span<const std::uint8_t> bytes() const noexcept { return bytes_.first(2 * size()); }
    std::u16string units() const { return units_of(bytes_); }

  private:
    std::span<const std::uint8_t> bytes_;
};

class Syntax {
  public:
    explicit Syntax(const std::uint16_t *characters) noexcept : characters_(characters) {}
    std::uint16_t quote() const noexcept { return characters_[0]; }
    std::uint16_t join() const noexcept { return characters_[1]; }
    std::uint16_t open() const noexcept { return characters_[2]; }
    std::uint16_t close() const noexcept { return characters_[3]; }
    std::uint16_t bar() const noexcept { return characters_[4]; }

  private:
    const std::uint16_t *characters_;
};

enum class TokenKind : std::uint8_t { end, text, join, reference, bar, error };

struct Token {
    TokenKind kind;
    std::size_t begin;
    std::size_t end;
    std::uint32_t error = 0;
};

Token next_token(const WideText &text, std::size_t begin, const Syntax &syntax) noexcept {
    const std::uint16_t first = text[begin];
    if (first == 0) return {TokenKind::end, begin, begin};
    std::size_t at = begin + 1;
    const auto run_to = [&](std::uint16_t closing, TokenKind kind, std::uint32_t error) -> Token {
        while (text[at] != closing) {
            if (text[at] == 0) return {TokenKind::error, begin, at, error};
            ++at;
        }
        return {kind, begin, at + 1};
    };
    if (first == syntax.quote()) return run_to(syntax.quote(), TokenKind::text, kUnterminatedQuote);
    if (first == syntax.join()) return {TokenKind::join, begin, at};
    if (first == syntax.open()) return run_to(syntax.close(), TokenKind::reference, kUnterminatedReference);
    if (first == syntax.bar()) return {TokenKind::bar, begin, at};
    bool stray_close = first == syntax.close();
    for (; text[at] != 0 && text[at] != syntax.quote() && text[at] != syntax.open() && text[at] != syntax.bar(); ++at)
        stray_close |= text[at] == syntax.close();
    if (stray_close) return {TokenKind::error, begin, at, kStrayCloseOrLoop};
    return {TokenKind::text, begin, at};
}

// The alternatives of a text: the parts between bars outside of quotes. An empty text has none.
std::vector<WideText> alternatives_of(const WideText &text, const Syntax &syntax) {
    std::vector<WideText> parts;
    if (text.size() == 0) return parts;
    std::size_t begin = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == syntax.quote()) quoted = !quoted;
        if (quoted || text[i] != syntax.bar()) continue;
        parts.push_back(text.part(begin, i));
        begin = i + 1;
    }
    parts.push_back(text.part(begin, text.size()));
    return parts;
}

class KeyCloser {
  public:
    explicit KeyCloser(platform::KeyHandle key) noexcept : key_(key) {}
    KeyCloser(const KeyCloser &) = delete;
    KeyCloser &operator=(const KeyCloser &) = delete;
    ~KeyCloser() {
        if (key_ != platform::KeyHandle::null) platform::close_key(key_);
    }

  private:
    platform::KeyHandle key_;
};

void delete_active_links(LinkEngine &engine) noexcept {
    YWSEARCHLIST &links = engine.active_links;
    for (std::int32_t i = 0; i < links.count; ++i) {
        std::uint32_t atom = 0;
        std::memcpy(&atom, links.key_at(static_cast<std::size_t>(i)), sizeof atom);
        platform::delete_atom(static_cast<std::uint16_t>(atom));
    }
    links.count = 0;
}

// One evaluation. The functions return false at a failure, with the engine's last error set, and leave the cleaning up
// to the caller of the outermost.
class Evaluation {
  public:
    Evaluation(LinkEngine &engine, bool target) noexcept : engine_(engine), syntax_(engine.syntax), target_(target) {}

    // Appends the value of an expression to the work area.
    bool evaluate(const WideText &text, unsigned depth) {
        const std::size_t start = engine_.used;
        Token token = next_token(text, 0, syntax_);
        while (token.kind != TokenKind::end) {
            if (token.kind == TokenKind::error) return fail(token.error);
            if (token.kind != TokenKind::reference) {
                if (!append(text.part(token.begin, token.end).bytes())) return false;
                token = next_token(text, token.end, syntax_);
                continue;
            }
            Result result{};
            if (!resolve(text.part(token.begin + 1, token.end - 1), depth, result)) return false;
            if (!is_link(type)) return true; // a plain value is the answer
            token = next_token(text, token.end, syntax_);
            while (token.kind == TokenKind::join) {
                token = next_token(text, token.end, syntax_);
                if (token.kind != TokenKind::reference) {
                    return fail(token.kind == TokenKind::error ? token.error : kUnterminatedReference);
                }
                Result second{};
                if (!resolve(text.part(token.begin + 1, token.end - 1), depth, second)) return false;
                if (!join(result, second)) return false;
                token = next_token(text, token.end, syntax_);
            }
        }
        if (!is_rooted_target()) remove_quote_pairs(start);
        return true;
    }

    std::uint32_t type = kLinkType; // of what was resolved last

  private:
    // A part of the work area, in bytes.
    struct Result {
        std::size_t begin;
        std::size_t end;
    };

    bool fail(std::uint32_t error) noexcept {
        engine_.last_error = error;
        return false;
    }

    // Accounts for work before it is done.
    bool spend(std::size_t references, std::size_t bytes) noexcept {
        work_ += references + bytes / kBytesLikeAReference;
        return work_ <= kMaxLinkWork || fail(platform::kOutOfMemory);
    }

    bool append(std::span<const std::uint8_t> bytes) noexcept {
        const std::size_t needed = engine_.used + bytes.size();
        if (needed > engine_.reserved) return fail(platform::kOutOfMemory);
        if (needed > engine_.committed) {
            const auto more = static_cast<std::uint32_t>((bytes.size() + kWorkAreaStep) & ~(kWorkAreaStep - 1ull));
            if (engine_.committed + more >= engine_.reserved ||
                !platform::commit_memory(engine_.work_area + engine_.committed, more)) {
                return fail(platform::kOutOfMemory);
            }
            engine_.committed += more;
        }
        std::ranges::copy(bytes, engine_.work_area + engine_.used);
        engine_.used = static_cast<std::uint32_t>(needed);
        return true;
    }

    bool append(std::u16string_view units) {
        std::vector<std::uint8_t> bytes;
        append_u16le(bytes, units);
        return append(bytes);
    }

    // What the work area holds becomes void: what comes now is the whole result.
    void empty() noexcept {
        engine_.used = 0;
        ++emptied_;
    }

    // Whether the work area holds a reference with a root, in target mode: its quotes are part of the names that
    // reading looks for.
    bool is_rooted_target() const noexcept {
        return target_ && emptied_ != 0 && WideText({engine_.work_area, engine_.used})[0] == u'\\';
    }

    bool become_reference(const std::u16string &reference) {
        empty();
        return append(std::u16string_view(reference.c_str(), reference.size() + 1));
    }

    bool resolve(const WideText &reference, unsigned depth, Result &result) {
        const std::size_t begin = engine_.used;
        const unsigned emptied_before = emptied_;
        if (!spend(1, reference.bytes().size())) return false;
        if (!resolve_value(reference.units(), depth)) return false;
        result = {emptied_ == emptied_before ? begin : 0, engine_.used};
        return true;
    }

    bool resolve_value(const std::u16string &reference, unsigned depth) {
        const ValuePath place = value_path_of(reference);
        platform::KeyHandle key = place.root != nullptr ? place.root->key : engine_.base_key;
        platform::KeyHandle opened = platform::KeyHandle::null;
        if (!place.key_path.empty()) {
            const std::string path = platform::wide_to_ansi(place.key_path);
            const std::uint32_t status = platform::open_key(key, path.c_str(), platform::kReadAndWrite, opened);
            if (status != platform::kSuccess) return resolve_missing(reference, status);
            key = opened;
        }
        const KeyCloser closer(opened);
        const std::string name = platform::wide_to_ansi(place.value_name);
        std::uint32_t size = 0;
        const std::uint32_t status = platform::query_value(key, name.c_str(), &type, nullptr, size);
        if (status != platform::kSuccess) return resolve_missing(reference, status);
        if (is_link(type)) return resolve_link(reference, key, name, depth);
        if (target_) return become_reference(reference);
        return resolve_plain(key, name);
    }

    bool resolve_missing(const std::u16string &reference, std::uint32_t status) {
        if (is_unknown(status)) return fail(platform::kCannotOpen);
        type = kLinkType;
        return !target_ || become_reference(reference);
    }

    bool resolve_plain(platform::KeyHandle key, const std::string &name) {
        empty();
        std::vector<std::uint8_t> data;
        if (read_value(key, name.c_str(), type, data) != platform::kSuccess) return fail(platform::kCannotOpen);
        const std::uint32_t plain_type = base_type(type);
        if (plain_type != platform::kTextType && plain_type != platform::kExpandableTextType) return append(data);
        std::u16string text = platform::ansi_to_wide({reinterpret_cast<const char *>(data.data()), data.size()});
        if (!text.ends_with(u'\0')) text += u'\0';
        return append(text);
    }

    bool resolve_link(const std::u16string &reference, platform::KeyHandle key, const std::string &name,
                      unsigned depth) {
        if (depth == kMaxLinkDepth) return fail(platform::kOutOfMemory);
        YWSEARCHLIST &links = engine_.active_links;
        const std::uint32_t atom = platform::add_atom(platform::wide_to_ansi(reference).c_str());
        if (atom == 0) return fail(platform::kOutOfMemory);
        const YWSEARCHLIST::Place place = links.find(&atom);
        if (place.record != nullptr || !links.insert(place.index, &atom)) {
            platform::delete_atom(static_cast<std::uint16_t>(atom));
            return fail(place.record != nullptr ? kStrayCloseOrLoop : std::uint32_t{platform::kOutOfMemory});
        }
        std::vector<std::uint8_t> data;
        if (read_value(key, name.c_str(), type, data) != platform::kSuccess) return fail(platform::kCannotOpen);
        if (!spend(0, data.size())) return false;
        if (!evaluate(WideText(data), depth + 1)) return false;
        links.remove(links.find(&atom).index);
        platform::delete_atom(static_cast<std::uint16_t>(atom));
        type = kLinkType;
        return true;
    }

    // Makes one result of two that follow each other: the second behind the first, or, when a side has alternatives,
    // every alternative of the first with every one of the second.
    bool join(Result &first, const Result &second) {
        if (second.begin != first.end) return fail(kUnterminatedReference); // a plain value has taken the whole area
        if (!spend(0, second.end - first.begin)) return false;
        const auto text_of = [this](const Result &result) {
            return WideText({engine_.work_area + result.begin, result.end - result.begin}).up_to_zero();
        };
        const auto left = alternatives_of(text_of(first), syntax_);
        const auto right = alternatives_of(text_of(second), syntax_);
        if (left.size() > 1 || right.size() > 1) {
            const std::optional<std::u16string> combined = combine(left, right);
            if (!combined) return fail(platform::kOutOfMemory);
            engine_.used = static_cast<std::uint32_t>(first.begin);
            if (!append(*combined)) return false;
        }
        first.end = engine_.used;
        return true;
    }

    // Nothing when the result is too long for the work area. A side without alternatives leaves the other as it is.
    std::optional<std::u16string> combine(std::span<const WideText> left, std::span<const WideText> right) const {
        const WideText nothing({});
        if (left.empty()) left = {&nothing, 1};
        if (right.empty()) right = {&nothing, 1};
        const auto length_of = [](std::span<const WideText> parts) {
            std::uint64_t length = 0;
            for (const WideText &part : parts)
                length += part.size();
            return length;
        };
        // Bars, then the characters of either side as often as the other has alternatives. No side has more than 2^19
        // of either, so 64 bits hold the sum.
        const std::uint64_t length = std::uint64_t{left.size()} * right.size() - 1 + length_of(left) * right.size() +
                                     length_of(right) * left.size();
        if (2 * length > engine_.reserved) return std::nullopt;
        std::u16string result;
        result.reserve(static_cast<std::size_t>(length));
        for (const WideText &a : left) {
            for (const WideText &b : right) {
                if (&a != left.data() || &b != right.data()) result += static_cast<char16_t>(syntax_.bar());
                result += a.units();
                result += b.units();
            }
        }
        return result;
    }

    // Two double quotes in a row vanish, up to the first zero, whatever the configured quote is.
    void remove_quote_pairs(std::size_t start) noexcept {
        if (start >= engine_.used) return; // a plain value inside has emptied the area: nothing is left of our text
        std::uint8_t *const bytes = engine_.work_area + start;
        const WideText text({bytes, engine_.used - start});
        const std::size_t length = text.up_to_zero().size();
        std::size_t kept = 0;
        for (std::size_t i = 0; i < length;) {
            if (i + 1 < length && text[i] == kDoubleQuote && text[i + 1] == kDoubleQuote) {
                i += 2;
            } else {
                store_u16le(bytes + 2 * kept++, text[i++]);
            }
        }
        const std::size_t removed = 2 * (length - kept);
        std::memmove(bytes + 2 * kept, bytes + 2 * length, engine_.used - start - 2 * length);
        engine_.used -= static_cast<std::uint32_t>(removed);
    }

    LinkEngine &engine_;
    Syntax syntax_;
    bool target_;
    unsigned emptied_ = 0; // how often the work area was emptied
    std::size_t work_ = 0; // spent
};

void free_syntax(LinkEngine &engine) noexcept {
    if (engine.syntax != kDefaultSyntax.data()) platform::task_free(const_cast<std::uint16_t *>(engine.syntax));
    engine.syntax = kDefaultSyntax.data();
}

void close(platform::KeyHandle &key) noexcept {
    if (key != platform::KeyHandle::null) platform::close_key(key);
    key = platform::KeyHandle::null;
}

bool read_syntax(platform::KeyHandle key, std::span<std::uint16_t, kSyntaxRoom> characters, std::uint32_t &status) {
    std::vector<std::uint8_t> data;
    std::uint32_t type = 0;
    status = read_value(key, kSettingsValue, type, data);
    if (status != platform::kSuccess || type != platform::kTextType) return false;
    std::u16string text = platform::ansi_to_wide({reinterpret_cast<const char *>(data.data()), data.size()});
    text.resize(std::min(text.find(u'\0'), text.size()));
    if (text.size() >= kSyntaxRoom) return false;
    std::ranges::fill(characters, std::uint16_t{0});
    std::ranges::copy(kDefaultSyntax, characters.begin()); // for what the text leaves out
    std::ranges::copy(text, characters.begin());
    return true;
}

bool open_keys_and_area(LinkEngine &engine, std::uint16_t *characters, Missing missing) {
    using namespace platform;
    const bool create = missing == Missing::created;
    const auto fail = [&engine](std::uint32_t error) {
        engine.last_error = error;
        return false;
    };
    // A key that is left missing stays null, and all that is looked for in it is missing as well.
    const auto open = [create](const char *path, KeyHandle &key) {
        bool created = false;
        if (create) {
            const std::uint32_t status =
                create_key(kCurrentUser, path, kReadAndWrite, key, created, WhenLocked::gives_up);
            return status == kSuccess || status == kBusy;
        }
        open_key(kCurrentUser, path, kReadAndWrite, key);
        return true;
    };
    if (!open(kLinkSettingsKey, engine.settings_key)) return fail(kCannotOpen);
    std::uint32_t status = kSuccess;
    if (!read_syntax(engine.settings_key, std::span<std::uint16_t, kSyntaxRoom>(characters, kSyntaxRoom), status)) {
        // What is stored but cannot be read must not give way to the default.
        const bool is_there = status == kSuccess;
        const bool is_missing = status == kNotFound || status == kKeyDeleted || status == kBadHandle;
        if (!is_there && !is_missing) return fail(kCannotOpen);
        free_syntax(engine);
        // For people to see and change. Where nothing can be written the default serves all the same.
        if (create) {
            set_value(engine.settings_key, kSettingsValue, kTextType, kDefaultSyntaxText, sizeof kDefaultSyntaxText,
                      WhenLocked::gives_up);
        }
    }
    if (!open(kBaseSubkey, engine.base_key)) return fail(kCannotOpen);
    engine.work_area = static_cast<std::uint8_t *>(reserve_address_space(kWorkAreaSize));
    if (engine.work_area == nullptr) return fail(kOutOfMemory);
    engine.reserved = kWorkAreaSize;
    if (!commit_memory(engine.work_area, kWorkAreaStep)) return fail(kOutOfMemory);
    engine.committed = kWorkAreaStep;
    return true;
}

} // namespace

ValuePath value_path_of(std::u16string_view reference) noexcept {
    ValuePath place{nullptr, {}, {}};
    if (reference.starts_with(u'\\')) {
        reference.remove_prefix(1);
        place.root = &platform::kCurrentUserRoot; // unless a root is named
        const std::size_t length = reference.find(u'\\');
        if (length != std::u16string_view::npos) {
            const auto root = std::ranges::find_if(platform::kRoots, [&](const platform::Root &one) {
                return length == one.name.size() && platform::starts_with_root(reference, one);
            });
            if (root != platform::kRoots.end()) {
                place.root = &*root;
                reference.remove_prefix(length + 1);
            }
        }
    }
    const std::size_t last = reference.rfind(u'\\');
    if (last == std::u16string_view::npos) {
        place.value_name = reference;
        return place;
    }
    place.value_name = reference.substr(last + 1);
    place.key_path = reference.substr(0, last);
    if (place.key_path.starts_with(u'\\')) place.key_path.remove_prefix(1);
    return place;
}

ValuePath target_of(std::u16string_view text) noexcept {
    ValuePath place = value_path_of(text);
    if (place.root == nullptr) place.root = &platform::kCurrentUserRoot;
    return place;
}

bool set_up(LinkEngine &engine, Missing missing) noexcept try {
    engine.syntax = kDefaultSyntax.data();
    const bool has_list = engine.active_links.set_up(sizeof(std::uint32_t), 0, 16);
    auto *characters = static_cast<std::uint16_t *>(has_list ? platform::task_allocate(2 * kSyntaxRoom) : nullptr);
    if (characters == nullptr) {
        engine.last_error = platform::kOutOfMemory;
        return false;
    }
    engine.syntax = characters;
    if (open_keys_and_area(engine, characters, missing)) return true;
    const std::uint32_t error = engine.last_error;
    release(engine);
    engine.last_error = error;
    return false;
} catch (const std::bad_alloc &) {
    release(engine);
    engine.last_error = platform::kOutOfMemory;
    return false;
}

std::uint8_t *expand(LinkEngine &engine, std::span<const std::uint8_t> link, std::uint32_t &type, bool in_place,
                     bool target, std::uint32_t &size) noexcept {
    Evaluation evaluation(engine, target);
    evaluation.type = type;
    bool done = false;
    try {
        done = evaluation.evaluate(WideText(link), 0);
    } catch (const std::bad_alloc &) {
        engine.last_error = platform::kOutOfMemory;
    }
    std::uint8_t *result = nullptr;
    if (done) {
        type = evaluation.type;
        size = engine.used;
        if (in_place) return engine.work_area;
        constexpr std::uint32_t kTerminator = 2;
        result = static_cast<std::uint8_t *>(platform::task_allocate(engine.used + kTerminator));
        if (result != nullptr) {
            std::memcpy(result, engine.work_area, engine.used);
            store_u16le(result + engine.used, 0);
            if (type == kLinkType) size += kTerminator;
        } else {
            engine.last_error = platform::kOutOfMemory;
        }
    }
    engine.used = 0;
    delete_active_links(engine);
    return result;
}

std::optional<std::u16string> target_text(LinkEngine &engine, std::span<const std::uint8_t> link) {
    std::uint32_t type = kLinkType;
    std::uint32_t size = 0;
    const std::unique_ptr<std::uint8_t, void (*)(void *)> text(expand(engine, link, type, false, true, size),
                                                               [](void *block) { platform::task_free(block); });
    if (text == nullptr) return std::nullopt;
    return WideText({text.get(), size}).up_to_zero().units();
}

void release(LinkEngine &engine) noexcept {
    free_syntax(engine);
    close(engine.settings_key);
    close(engine.base_key);
    engine.active_links.clear();
    platform::release_address_space(engine.work_area, engine.reserved);
    engine.work_area = nullptr;
    engine.reserved = 0;
    engine.used = 0;
    engine.committed = 0;
}

} // namespace kxstr::registry
