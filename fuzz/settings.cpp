// The settings file: any bytes parse or do not; a change is read back, changes nothing else, and keeps what people
// wrote around it.
#include <algorithm>
#include <string>

#include "platform/ansi_text.h"
#include "platform/portable/registry_file.h"
#include "platform/system.h"
#include "targets.h"

namespace kxstr::fuzz {
namespace {

using platform::RegistryFile;
using platform::RegistryValue;
using Data = std::vector<std::uint8_t>;

std::u16string name_of(Input &input, const RegistryFile &file) {
    std::vector<std::u16string> names{u"", u"v", u"Name"};
    for (const auto &[path, key] : file.keys)
        for (const auto &[name, value] : key.values)
            names.push_back(value.name);
    if (input.below(4) != 0) return input.one_of(names);
    const auto units = units_of(input, 1 + input.below(20));
    return {units.begin(), units.end() - 1};
}

std::u16string path_of(Input &input, const RegistryFile &file) {
    std::vector<std::u16string> paths{u"HKEY_CURRENT_USER\\Software\\K"};
    for (const auto &[upper, key] : file.keys)
        paths.push_back(key.path);
    std::u16string path = input.one_of(paths);
    if (input.below(4) == 0) path.append(u"\\").append(name_of(input, file));
    return platform::full_key_path(path).value_or(u"HKEY_USERS\\K");
}

bool is_below(const std::u16string &path, const std::u16string &key) {
    return path == key || path.starts_with(key + u'\\');
}

// All values but one, or those of a key, as the text has them.
std::vector<std::pair<std::u16string, Data>> values_but(const RegistryFile &file, const std::u16string &key,
                                                        const std::optional<std::u16string> &name) {
    std::vector<std::pair<std::u16string, Data>> values;
    for (const auto &[path, one] : file.keys) {
        for (const auto &[upper, value] : one.values) {
            if (name ? path == key && upper == *name : is_below(path, key)) continue;
            Data data = value.data;
            for (const unsigned shift : {0u, 8u, 16u, 24u})
                data.push_back(static_cast<std::uint8_t>(value.type >> shift));
            values.emplace_back(path, std::move(data)).first.append(1, u'\n').append(upper);
        }
    }
    return values;
}

RegistryFile parsed(const std::string &text) {
    auto file = platform::parse_registry(text);
    require(file.has_value(), "what was written parses");
    return std::move(*file);
}

// What is gone of the old text lies between two places.
void check_only_between(const std::string &before, const std::string &after, std::size_t begin, std::size_t end) {
    const auto same_start = std::ranges::mismatch(before, after).in1 - before.begin();
    const auto same_end =
        std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend()).first - before.rbegin();
    require(same_start >= static_cast<std::ptrdiff_t>(begin) &&
                same_end >= static_cast<std::ptrdiff_t>(before.size() - end),
            "nothing else of the text changes");
}

void set_a_value(Input &input, const RegistryFile &file) {
    const std::u16string path = path_of(input, file), name = name_of(input, file);
    static constexpr std::uint32_t kTypes[] = {0, 1, 2, 3, 4, 7, 11, 0x80000002, 0x80000008, 0xC0000008};
    const std::uint32_t type = input.below(4) == 0 ? input.number() : input.one_of(kTypes);
    const auto bytes = input.part(input.below(200));
    const Data data(bytes.begin(), bytes.end());
    const auto text = platform::with_value(file, path, name, type, data);
    if (!text) return; // the format cannot hold that
    const RegistryFile changed = parsed(*text);
    const RegistryValue *value = changed.find_value(path, name);
    require(value != nullptr && value->type == type && value->data == data, "what was written is read back");
    const std::u16string key = platform::upper_case(path), upper = platform::upper_case(name);
    require(values_but(file, key, upper) == values_but(changed, key, upper), "no other value changes");
    if (const RegistryValue *old = file.find_value(path, name)) {
        check_only_between(file.text, *text, old->begin, old->end);
        require(platform::with_value(changed, path, name, type, data) == text, "once more changes nothing");
    } else {
        // Remarks and all: it is only put in somewhere.
        const auto at = std::ranges::mismatch(file.text, *text).in1 - file.text.begin();
        check_only_between(file.text, *text, static_cast<std::size_t>(at), static_cast<std::size_t>(at));
    }
    const RegistryFile without = parsed(platform::without_value(changed, path, name));
    require(without.find_value(path, name) == nullptr, "the value is gone");
    require(values_but(without, key, upper) == values_but(changed, key, upper), "no other value goes");
}

void change_keys(Input &input, const RegistryFile &file) {
    const std::u16string path = path_of(input, file);
    const std::u16string key = platform::upper_case(path);
    if (const auto text = platform::with_key(file, path)) {
        require(text->starts_with(file.text), "a key comes at the end");
        const RegistryFile changed = parsed(*text);
        require(changed.find_key(path) != nullptr && values_but(changed, u"\n", {}) == values_but(file, u"\n", {}),
                "a key and no more");
    }
    const RegistryFile without = parsed(platform::without_key(file, path));
    require(without.find_key(path) == nullptr, "the key is gone");
    require(values_but(without, key, {}) == values_but(file, key, {}), "no other key goes");
}

void take_over(Input &input, const RegistryFile &file, const RegistryFile &other) {
    const bool itself = input.below(4) == 0;
    const RegistryFile &from = itself ? file : other;
    const auto text = platform::with_all_of(file, from);
    if (!text) return;
    const RegistryFile changed = parsed(*text);
    for (const auto &[path, key] : from.keys) {
        for (const auto &[name, value] : key.values) {
            const RegistryValue *taken = changed.find_value(key.path, value.name);
            require(taken != nullptr && taken->type == value.type && taken->data == value.data, "all is taken over");
        }
    }
    require(platform::with_all_of(changed, from).has_value(), "and once more");
}

} // namespace

void settings(Input &input) {
    choose_system(input);
    const auto how = input.below(4);
    const auto texts = input.below(3000);
    // Mostly with the first line, without which everything is damaged.
    const auto text_of = [&](std::span<const std::uint8_t> bytes) {
        std::string text = how != 0 ? "Windows Registry Editor Version 5.00\n" : "";
        return text.append(bytes.begin(), bytes.end());
    };
    Input choices = input; // names and data come from what the texts are made of, too
    const auto file = platform::parse_registry(text_of(input.part(texts)));
    const auto other = platform::parse_registry(text_of(input.rest()));
    if (!file) return;
    require(!file->text.empty(), "there is a text");
    switch (how) {
    case 1: change_keys(choices, *file); break;
    case 2: take_over(choices, *file, other ? *other : platform::empty_registry()); break;
    default: set_a_value(choices, *file); break;
    }
}

} // namespace kxstr::fuzz
