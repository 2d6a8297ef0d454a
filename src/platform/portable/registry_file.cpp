#include "platform/portable/registry_file.h"

#include <algorithm>
#include <cstdio>
#include <unordered_set>

#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/portable/utf8.h"
#include "platform/roots.h"
#include "platform/system.h"
#include "platform/utf16.h"

namespace kxstr::platform {
namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::uint32_t kBinaryType = 3;
constexpr std::uint32_t kNumberType = 4;
constexpr std::size_t kLineLength = 78; // longer data goes on in the next line
constexpr std::size_t kMaxDepth = 512;  // keys below each other, as the system has it

std::optional<std::string> utf8_from_utf16(std::string_view bytes) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    return to_utf8(units_of({reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()}));
}

// The components of a path, empty ones left out.
std::vector<std::u16string_view> split_path(std::u16string_view path) {
    std::vector<std::u16string_view> parts;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(u'\\'), path.size());
        if (length != 0) parts.push_back(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return parts;
}

bool is_root_name(std::u16string_view part) {
    const std::u16string upper = upper_case(part);
    return std::ranges::any_of(kRoots, [&](const Root &root) { return std::ranges::equal(upper, root.name); });
}

std::u16string joined(std::span<const std::u16string_view> parts) {
    std::u16string path;
    for (const auto part : parts) {
        if (!path.empty()) path += u'\\';
        path += part;
    }
    return path;
}

// Those whose paths go on behind `path`, which is in upper case. They lie together.
auto keys_below(const RegistryFile &file, const std::u16string &path) {
    constexpr char16_t behind_backslash = u'\\' + 1;
    return std::pair(file.keys.lower_bound(path + u'\\'), file.keys.lower_bound(path + behind_backslash));
}

// The key by which a path, in upper case, comes up first: its own or one below it. Null when there is no such key.
const RegistryKey *first_mention(const RegistryFile &file, const std::u16string &path) {
    const RegistryKey *first = nullptr;
    const auto look_at = [&first](const RegistryKey &key) {
        if (first == nullptr || key.line < first->line) first = &key;
    };
    if (const auto found = file.keys.find(path); found != file.keys.end()) look_at(found->second);
    for (auto [key, last] = keys_below(file, path); key != last; ++key)
        look_at(key->second);
    return first;
}

int hex_digit(char ch) noexcept {
    if ('0' <= ch && ch <= '9') return ch - '0';
    if ('a' <= ch && ch <= 'f') return ch - 'a' + 10;
    if ('A' <= ch && ch <= 'F') return ch - 'A' + 10;
    return -1;
}

// Walks over the text once. Every function returns false at a fault, and the whole text is then damaged.
class Parser {
  public:
    explicit Parser(RegistryFile &file) : file_(file), text_(file.text) {}

    bool parse() {
        if (text_.find('\0') != std::string_view::npos) return false;
        if (text_.starts_with(kUtf8Mark)) at_ = kUtf8Mark.size();
        if (!take(kHeader) || !rest_is_blank(false)) return false;
        while (at_ < text_.size()) {
            line_ = at_;
            skip_blanks();
            if (!parse_line()) return false;
        }
        return true;
    }

  private:
    bool parse_line() {
        switch (at_ < text_.size() ? text_[at_] : '\n') {
        case '[': return parse_section();
        case '"':
        case '@': return parse_value();
        default: skip_line(); return true;
        }
    }

    bool parse_section() {
        ++at_;
        const bool removed = take("-");
        // A key's name may hold a bracket: the closing one has nothing but a comment behind it.
        const std::size_t start = at_;
        std::string_view brackets;
        do {
            while (at_ < text_.size() && text_[at_] != ']' && text_[at_] != '\n')
                ++at_;
            brackets = text_.substr(start, at_ - start);
            if (!take("]")) return false;
        } while (!rest_is_blank(true));
        const auto path = from_utf8(brackets);
        if (!path) return false;
        const auto parts = split_path(*path);
        if (parts.empty() || parts.size() > kMaxDepth) return false;
        key_ = nullptr;
        section_ = nullptr;
        in_section_ = true;
        if (!is_root_name(parts[0])) return true;
        if (removed) {
            remove_key(joined(parts));
            file_.removals.push_back({joined(parts), std::nullopt});
        } else {
            key_ = &add_key(joined(parts));
            file_.sections.push_back({upper_case(joined(parts)), line_, at_});
            section_ = &file_.sections.back();
            key_->insert_at = at_;
        }
        return true;
    }

    RegistryKey &add_key(const std::u16string &path) {
        const std::u16string upper = upper_case(path);
        if (const auto found = file_.keys.find(upper); found != file_.keys.end()) return found->second;
        const RegistryKey *const first = first_mention(file_, upper);
        RegistryKey key{.path = path, .line = line_, .values = {}, .insert_at = {}};
        if (first != nullptr) {
            key.path = first->path.substr(0, path.size());
            key.line = first->line;
        }
        return file_.keys.emplace(upper, std::move(key)).first->second;
    }

    // The key above stays, with the spelling that it had, also where nothing else is below it.
    void remove_key(const std::u16string &path) {
        const std::u16string upper = upper_case(path);
        if (file_.find_upper_case_key(upper) == nullptr) return;
        if (const std::size_t length = upper.rfind(u'\\'); length != std::u16string::npos)
            add_key(path.substr(0, length));
        const auto [first, last] = keys_below(file_, upper);
        file_.keys.erase(first, last);
        file_.keys.erase(upper);
    }

    bool parse_value() {
        if (!in_section_) return false;
        RegistryValue value{.name = {}, .type = 0, .data = {}, .line = line_, .begin = 0, .end = 0};
        if (!take("@")) {
            auto name = parse_quoted();
            if (!name) return false;
            value.name = std::move(*name);
        }
        skip_blanks();
        if (!take("=")) return false;
        skip_blanks();
        value.begin = at_;
        const bool removed = take("-");
        if (!removed && !parse_data(value)) return false;
        value.end = at_;
        if (!rest_is_blank(true)) return false;
        if (key_ == nullptr) return true;
        key_->insert_at = at_;
        section_->end = at_;
        std::u16string name = upper_case(value.name);
        if (removed) {
            key_->values.erase(name);
            file_.removals.push_back({key_->path, value.name});
        } else if (const auto [earlier, is_new] = key_->values.try_emplace(std::move(name), std::move(value));
                   !is_new) {
            value.hidden = std::move(earlier->second.hidden);
            value.hidden.emplace_back(earlier->second.line, earlier->second.end);
            earlier->second = std::move(value);
        }
        return true;
    }

    bool parse_data(RegistryValue &value) {
        if (at_ < text_.size() && text_[at_] == '"') {
            const auto text = parse_quoted();
            if (!text) return false;
            value.type = kTextType;
            append_u16le(value.data, *text);
            append_u16le(value.data, {u"\0", 1});
            return true;
        }
        if (take("dword:")) {
            skip_blanks();
            std::uint32_t number = 0;
            if (!parse_hex(number, 8)) return false;
            value.type = kNumberType;
            for (int shift = 0; shift < 32; shift += 8)
                value.data.push_back(static_cast<std::uint8_t>(number >> shift));
            return true;
        }
        if (!take("hex")) return false;
        value.type = kBinaryType;
        if (take("(") && !(parse_hex(value.type, 8) && take(")"))) return false;
        return take(":") && parse_bytes(value.data);
    }

    // Bytes with commas between them. A backslash at the end of a line goes on in the next.
    bool parse_bytes(std::vector<std::uint8_t> &data) {
        const std::size_t start = at_;
        if (!skip_to_byte()) return false;
        if (at_ >= text_.size() || hex_digit(text_[at_]) < 0) {
            // No bytes at all; then what ends the data is not a line further on.
            return text_.substr(start, at_ - start).find('\n') == std::string_view::npos;
        }
        for (;;) {
            std::uint32_t byte = 0;
            if (!parse_hex(byte, 2)) return false;
            data.push_back(static_cast<std::uint8_t>(byte));
            const std::size_t end = at_;
            if (!skip_to_byte()) return false;
            if (!take(",")) {
                at_ = end;
                return true;
            }
            if (!skip_to_byte()) return false;
        }
    }

    // Over blanks and continued lines.
    bool skip_to_byte() {
        skip_blanks();
        while (take("\\")) {
            if (!rest_is_blank(false) || at_ >= text_.size()) return false;
            skip_blanks();
        }
        return true;
    }

    bool parse_hex(std::uint32_t &number, int most_digits) {
        number = 0;
        int digits = 0;
        for (; at_ < text_.size() && digits < most_digits && hex_digit(text_[at_]) >= 0; ++digits)
            number = (number << 4) | static_cast<std::uint32_t>(hex_digit(text_[at_++]));
        return digits != 0;
    }

    // Line ends within quotes belong to the text: registry editors write them so.
    std::optional<std::u16string> parse_quoted() {
        ++at_;
        std::string bytes;
        for (; at_ < text_.size(); ++at_) {
            char ch = text_[at_];
            if (ch == '"') {
                ++at_;
                return from_utf8(bytes);
            }
            if (ch == '\\') {
                if (++at_ >= text_.size()) break;
                switch (text_[at_]) {
                case '\\':
                case '"': ch = text_[at_]; break;
                case 'n': ch = '\n'; break;
                case 'r': ch = '\r'; break;
                default: return std::nullopt;
                }
            }
            bytes += ch;
        }
        return std::nullopt;
    }

    bool take(std::string_view what) {
        const bool there = text_.substr(at_).starts_with(what);
        if (there) at_ += what.size();
        return there;
    }

    void skip_blanks() {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t'))
            ++at_;
    }

    void skip_line() { at_ = std::min(text_.find('\n', at_), text_.size() - 1) + 1; }

    // Moves to the next line if nothing but blanks, or a comment, is left of this one; else stays.
    bool rest_is_blank(bool comment_allowed) {
        const std::size_t start = at_;
        skip_blanks();
        if (comment_allowed && at_ < text_.size() && text_[at_] == ';') {
            skip_line();
            return true;
        }
        take("\r");
        if (at_ >= text_.size() || take("\n")) return true;
        at_ = start;
        return false;
    }

    RegistryFile &file_;
    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;       // start of the line at hand
    RegistryKey *key_ = nullptr; // null in a section that means nothing
    RegistrySection *section_ = nullptr;
    bool in_section_ = false;
};

std::string in_quotes(std::u16string_view text) {
    std::string result = "\"";
    for (const char ch : to_utf8(text)) {
        switch (ch) {
        case '\\':
        case '"': result += '\\'; [[fallthrough]];
        default: result += ch; break;
        case '\n': result += "\\n"; break;
        case '\r': result += "\\r"; break;
        }
    }
    return result + '"';
}

// The text of string data that quotes can hold without loss: printable, whole, and ended by its one terminator.
std::optional<std::u16string> plain_text(std::span<const std::uint8_t> data) {
    if (data.size() < 2 || data.size() % 2 != 0) return std::nullopt;
    std::u16string units = units_of(data);
    if (units.back() != 0) return std::nullopt;
    units.pop_back();
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (unit < 0x20 || unit == 0x7F) return std::nullopt;
        if (!is_surrogate(unit)) continue;
        const bool pair = is_first_half(unit) && i + 1 < units.size() && is_second_half(units[i + 1]);
        if (!pair) return std::nullopt;
        ++i;
    }
    return units;
}

template <class... Args> std::string formatted(const char *format, Args... args) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, format, args...);
    return buffer;
}

// What follows the equals sign; `column` is where it starts.
std::string data_text(std::uint32_t type, std::span<const std::uint8_t> data, std::size_t column,
                      std::string_view end_of_line) {
    if (type == kTextType) {
        if (const auto text = plain_text(data)) return in_quotes(*text);
    }
    if (type == kNumberType && data.size() == 4) {
        return formatted("dword:%02x%02x%02x%02x", data[3], data[2], data[1], data[0]);
    }
    std::string text = type == kBinaryType ? "hex:" : formatted("hex(%x):", type);
    column += text.size();
    for (std::size_t i = 0; i < data.size(); ++i) {
        text += formatted("%02x", data[i]);
        if (i + 1 == data.size()) break;
        text += ',';
        column += 3;
        if (column >= kLineLength) {
            text.append("\\").append(end_of_line).append("  ");
            column = 2;
        }
    }
    return text;
}

std::string name_text(std::u16string_view name) {
    return name.empty() ? "@" : in_quotes(name);
}

std::string_view end_of_line_in(std::string_view text) {
    const std::size_t first = text.find('\n');
    return first != std::string_view::npos && first != 0 && text[first - 1] == '\r' ? "\r\n" : "\n";
}

// The path with the keys that exist already spelled as they are in the file.
std::u16string known_spelling(const RegistryFile &file, std::u16string_view path) {
    std::u16string full = joined(split_path(path));
    const std::u16string upper = upper_case(full);
    for (std::size_t length = upper.size(); length != std::u16string::npos && length != 0;
         length = upper.rfind(u'\\', length - 1)) {
        if (const RegistryKey *first = first_mention(file, upper.substr(0, length)))
            return first->path.substr(0, length) + full.substr(length);
    }
    return full;
}

bool is_too_long(std::u16string_view path) {
    return std::ranges::any_of(split_path(path), [](std::u16string_view part) { return part.size() > kMaxKeyName; });
}

// The text with lines for a new key at its end; `insert_at` is behind them. Nothing for a name that keys cannot have.
std::optional<std::string> with_section(const RegistryFile &file, std::u16string_view path, std::size_t &insert_at) {
    if (is_too_long(path)) return std::nullopt;
    const std::string_view end_of_line = end_of_line_in(file.text);
    std::string text = file.text;
    if (!text.ends_with('\n')) text += end_of_line;
    text.append(end_of_line).append("[").append(to_utf8(known_spelling(file, path))).append("]").append(end_of_line);
    insert_at = text.size();
    return text;
}

// In the order of their lines.
template <class Entry> std::vector<const Entry *> by_line(const std::map<std::u16string, Entry> &entries) {
    std::vector<const Entry *> sorted;
    sorted.reserve(entries.size());
    for (const auto &entry : entries)
        sorted.push_back(&entry.second);
    std::ranges::sort(sorted, {}, &Entry::line);
    return sorted;
}

} // namespace

const RegistryKey *RegistryFile::find_key(std::u16string_view path) const {
    return find_upper_case_key(upper_case(path));
}

const RegistryKey *RegistryFile::find_upper_case_key(const std::u16string &path) const {
    if (const auto found = keys.find(path); found != keys.end()) return &found->second;
    static const RegistryKey leads_to_others{};
    const auto [first, last] = keys_below(*this, path);
    return first != last ? &leads_to_others : nullptr;
}

const RegistryValue *RegistryFile::find_value(std::u16string_view path, std::u16string_view name) const {
    const RegistryKey *key = find_key(path);
    return key != nullptr ? key->find_value(name) : nullptr;
}

const RegistryValue *RegistryKey::find_value(std::u16string_view name) const {
    const auto found = values.find(upper_case(name));
    return found != values.end() ? &found->second : nullptr;
}

std::optional<std::u16string> full_key_path(std::u16string_view path) {
    const auto parts = split_path(path);
    if (parts.empty() || !is_root_name(parts[0])) return std::nullopt;
    std::u16string full = upper_case(parts[0]);
    for (const auto part : std::span(parts).subspan(1))
        full.append(1, u'\\').append(part);
    return full;
}

RegistryFile empty_registry() {
    RegistryFile file;
    file.text = std::string(kHeader) + '\n';
    return file;
}

std::optional<RegistryFile> parse_registry(std::string bytes) {
    RegistryFile file;
    if (std::string_view(bytes).starts_with(kUtf16Mark)) {
        auto text = utf8_from_utf16(std::string_view(bytes).substr(kUtf16Mark.size()));
        if (!text) return std::nullopt;
        file.text = std::move(*text);
    } else {
        file.text = std::move(bytes);
    }
    if (!Parser(file).parse()) return std::nullopt;
    return file;
}

std::optional<std::string> with_key(const RegistryFile &file, std::u16string_view path) {
    std::size_t insert_at = 0;
    auto text = with_section(file, path, insert_at);
    if (!text) return std::nullopt;
    // A name such as "a] ;b" looks like something else once it stands in brackets.
    const auto changed = parse_registry(*text);
    if (!changed || changed->find_key(path) == nullptr) return std::nullopt;
    return text;
}

std::optional<std::string> with_value(const RegistryFile &file, std::u16string_view path, std::u16string_view name,
                                      std::uint32_t type, std::span<const std::uint8_t> data) {
    const std::string_view end_of_line = end_of_line_in(file.text);
    std::string text;
    if (const RegistryValue *value = file.find_value(path, name)) {
        text = file.text;
        const std::string written = data_text(type, data, value->begin - value->line, end_of_line);
        text.replace(value->begin, value->end - value->begin, written);
    } else {
        const RegistryKey *key = file.find_key(path);
        std::size_t insert_at = 0;
        if (key != nullptr && key->insert_at) {
            text = file.text;
            insert_at = *key->insert_at;
        } else {
            auto longer = with_section(file, path, insert_at);
            if (!longer) return std::nullopt;
            text = std::move(*longer);
        }
        const RegistryValue added{std::u16string(name), type, {data.begin(), data.end()}, 0, 0, 0};
        std::string line = value_line(added, end_of_line).append(end_of_line);
        if (text[insert_at - 1] != '\n') line.insert(0, end_of_line);
        text.insert(insert_at, line);
    }
    const auto changed = parse_registry(text);
    const RegistryValue *read_back = changed ? changed->find_value(path, name) : nullptr;
    if (read_back == nullptr || read_back->type != type || !std::ranges::equal(read_back->data, data)) {
        return std::nullopt;
    }
    return text;
}

namespace {

// Parts of the text, each from its first byte to behind its last.
using Parts = std::vector<std::pair<std::size_t, std::size_t>>;

void add_lines_of_value(const RegistryFile &file, std::u16string_view path, std::u16string_view name, Parts &parts) {
    const RegistryValue *value = file.find_value(path, name);
    if (value == nullptr) return;
    // Earlier lines, too: they would come to light when the last one goes.
    auto lines = value->hidden;
    lines.emplace_back(value->line, value->end);
    for (const auto &[line, data_end] : lines)
        parts.emplace_back(line, std::min(file.text.find('\n', data_end), file.text.size() - 1) + 1);
}

// Of the keys with these paths, in capitals, and of those below them.
void add_sections_of_keys(const RegistryFile &file, const std::unordered_set<std::u16string> &paths, Parts &parts) {
    const auto goes = [&](const std::u16string &path) {
        for (std::size_t end = path.size(); end != std::u16string::npos; end = path.rfind(u'\\', end - 1)) {
            if (paths.contains(path.substr(0, end))) return true;
            if (end == 0) break;
        }
        return false;
    };
    for (const RegistrySection &section : file.sections)
        if (goes(section.path)) parts.emplace_back(section.begin, section.end);
}

// They may overlap.
std::string without(const std::string &text, Parts parts) {
    std::ranges::sort(parts);
    std::string left;
    std::size_t at = 0;
    for (const auto &[begin, end] : parts) {
        if (begin > at) left.append(text, at, begin - at);
        at = std::max(at, end);
    }
    return left.append(text, at);
}

} // namespace

std::string without_value(const RegistryFile &file, std::u16string_view path, std::u16string_view name) {
    Parts parts;
    add_lines_of_value(file, path, name, parts);
    return without(file.text, std::move(parts));
}

std::string without_key(const RegistryFile &file, std::u16string_view path) {
    Parts parts;
    add_sections_of_keys(file, {upper_case(path)}, parts);
    return without(file.text, std::move(parts));
}

std::optional<std::string> with_all_of(const RegistryFile &file, const RegistryFile &other) {
    Parts removed;
    std::unordered_set<std::u16string> removed_keys;
    for (const RegistryRemoval &removal : other.removals) {
        if (removal.name) {
            add_lines_of_value(file, removal.path, *removal.name, removed);
        } else {
            removed_keys.insert(upper_case(removal.path));
        }
    }
    add_sections_of_keys(file, removed_keys, removed);
    const auto left = parse_registry(without(file.text, std::move(removed)));
    if (!left) return std::nullopt;
    const RegistryFile &base = *left;
    // All changes are places of one text: it is parsed once, however many there are.
    struct Change {
        std::size_t at, size;
        std::string text;
    };
    std::vector<Change> changes;
    const std::string_view end_of_line = end_of_line_in(base.text);
    std::string at_end = base.text.ends_with('\n') ? "" : std::string(end_of_line);
    for (const RegistryKey *key : by_line<RegistryKey>(other.keys)) {
        if (!key->insert_at) continue;
        const RegistryKey *const own = base.find_key(key->path);
        const bool has_lines = own != nullptr && own->insert_at.has_value();
        std::string lines;
        if (!has_lines) {
            const std::u16string path = known_spelling(base, key->path);
            if (is_too_long(path)) return std::nullopt;
            lines.append(end_of_line).append("[").append(to_utf8(path)).append("]").append(end_of_line);
        }
        for (const RegistryValue *value : by_line<RegistryValue>(key->values)) {
            if (const RegistryValue *old = own != nullptr ? own->find_value(value->name) : nullptr) {
                changes.push_back({old->begin, old->end - old->begin,
                                   data_text(value->type, value->data, old->begin - old->line, end_of_line)});
            } else {
                lines.append(value_line(*value, end_of_line)).append(end_of_line);
            }
        }
        if (!has_lines) {
            at_end += lines;
        } else if (!lines.empty()) {
            const std::size_t insert_at = own->insert_at.value_or(0);
            const bool whole_line = base.text[insert_at - 1] == '\n';
            changes.push_back({insert_at, 0, whole_line ? lines : std::string(end_of_line).append(lines)});
        }
    }
    std::ranges::sort(changes, {}, &Change::at);
    std::string text;
    std::size_t at = 0;
    for (const Change &change : changes) {
        text.append(base.text, at, change.at - at).append(change.text);
        at = change.at + change.size;
    }
    text.append(base.text, at).append(at_end);
    const auto parsed = parse_registry(text);
    if (!parsed) return std::nullopt;
    for (const auto &[upper, key] : other.keys) {
        const RegistryKey *const own = parsed->find_upper_case_key(upper);
        if (key.insert_at && own == nullptr) return std::nullopt;
        for (const auto &[name, value] : key.values) {
            const RegistryValue *const read_back = own->find_value(name);
            if (read_back == nullptr || read_back->type != value.type || read_back->data != value.data)
                return std::nullopt;
        }
    }
    return text;
}

std::string value_line(const RegistryValue &value, std::string_view end_of_line) {
    const std::string start = name_text(value.name) + '=';
    return start + data_text(value.type, value.data, start.size(), end_of_line);
}

} // namespace kxstr::platform
