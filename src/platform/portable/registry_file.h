// The registry as a text: the export format of registry editors, version 5.00. Reading finds keys and values and where
// their data stands; every change is a change of the text at that place, so all the rest stays as people wrote it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kxstr::platform {

inline constexpr std::size_t kMaxKeyName = 255; // units, of one component of a path

struct RegistryValue {
    std::u16string name; // empty: the key's default value
    std::uint32_t type;
    std::vector<std::uint8_t> data;                            // of the string types: UTF-16, little-endian
    std::size_t line;                                          // where in the text its line starts,
    std::size_t begin, end;                                    // and where what follows its equals sign stands
    std::vector<std::pair<std::size_t, std::size_t>> hidden{}; // `line` and `end` of earlier lines that give it, too
};

struct RegistryKey {
    std::u16string path;                            // from the root's name on
    std::size_t line = 0;                           // where in the text it comes up first
    std::map<std::u16string, RegistryValue> values; // by name in upper case
    std::optional<std::size_t> insert_at;           // where a further value goes; none: the key has no line of its own

    const RegistryValue *find_value(std::u16string_view name) const;
};

// The lines of a key and its values, in one place of a file.
struct RegistrySection {
    std::u16string path; // in upper case
    std::size_t begin, end;
};

// `[-key]` or, with a name, `"name"=-`.
struct RegistryRemoval {
    std::u16string path;
    std::optional<std::u16string> name;
};

struct RegistryFile {
    std::string text;                           // UTF-8
    std::map<std::u16string, RegistryKey> keys; // by path in upper case; without keys that only lead to others
    std::vector<RegistrySection> sections;
    std::vector<RegistryRemoval> removals;

    // Null for no such key. One that only leads to others is an empty key.
    const RegistryKey *find_key(std::u16string_view path) const;
    const RegistryKey *find_upper_case_key(const std::u16string &path) const;
    const RegistryValue *find_value(std::u16string_view path, std::u16string_view name) const;
};

// What stands in a settings file that does not exist yet.
RegistryFile empty_registry();

// Takes UTF-8, or UTF-16LE with a byte order mark. Nothing when the text is damaged: no header line, a key or value
// line that makes no sense, a zero byte, bytes that are no UTF-8 in a name or a string. Lines that are neither a key
// nor a value nor a comment are kept and mean nothing, and so do the values of roots that we do not know. Where a value
// or a key is given twice, the later one holds; `[-key]` and `"name"=-` take away what stands above them.
std::optional<RegistryFile> parse_registry(std::string bytes);

// A path as files spell it: one backslash between components, none at the end. Nothing without a root's name in front.
std::optional<std::u16string> full_key_path(std::u16string_view path);

// Texts with one change. Paths are full ones. Nothing when the format cannot hold a name, or a new key's is too long.
std::optional<std::string> with_key(const RegistryFile &file, std::u16string_view path);
std::optional<std::string> with_value(const RegistryFile &file, std::u16string_view path, std::u16string_view name,
                                      std::uint32_t type, std::span<const std::uint8_t> data);
// The value's line goes; a file without the value comes back as it is.
std::string without_value(const RegistryFile &file, std::u16string_view path, std::u16string_view name);

// The lines of a key and of all below it go, with the remarks between them; remarks behind the last value stay.
std::string without_key(const RegistryFile &file, std::u16string_view path);
// With the removals, keys and values of another file. Nothing when the text cannot hold them.
std::optional<std::string> with_all_of(const RegistryFile &file, const RegistryFile &other);

// A value as it stands in a line: `"name"=dword:00000001`. Long data goes on over several lines.
std::string value_line(const RegistryValue &value, std::string_view end_of_line = "\n");

} // namespace kxstr::platform
