#include "registry.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <kxstr/platform.h>
#include <vector>

#include "command.h"
#include "files.h"
#include "options.h"
#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/portable/registry_store.h"
#include "platform/portable/utf8.h"
#include "platform/system.h"
#include "registry/link_engine.h"
#include "registry/values.h"

namespace kx {
namespace {

using kxstr::platform::RegistryFile;
using kxstr::platform::RegistryValue;
namespace platform = kxstr::platform;
namespace registry = kxstr::registry;

constexpr std::uint32_t kBinaryType = 3;
constexpr std::uint32_t kNumberType = 4;

constexpr Option kOptions[] = {
    {'t', "type", "TYPE", "what VALUE is: text (default), dword, codepage, link or hex"},
    {'f', "file", "FILE", "the settings file; default: that of the library"},
};

constexpr Usage kUsageText{
    "kx registry", "[-f FILE] show [KEY] | get KEY NAME | set [-t TYPE] KEY NAME VALUE | unset KEY NAME",
    "Reads and writes the registry of the library, a text file. KEY is a full path such as\n"
    "'HKEY_CURRENT_USER\\Software\\Norvane'; letter case does not count. The NAME '' is the key's\n"
    "default value.\n\n"
    "  show    print a key and all below it, or everything, in the format of the file; behind a link\n"
    "          that reads one value and writes another, a remark tells which it writes\n"
    "  get     print one value: a text or a link as it is, a dword or a code page in decimal, other\n"
    "          data in hexadecimal\n"
    "  set     write one value; nothing else in the file changes\n"
    "  unset   remove one value",
    kOptions,
    "TYPE dword is 32 bits, codepage 16 bits under the type of the code page settings, link an\n"
    "expression such as '<Key\\Value>', hex pairs of digits such as '01 ff'.\n"
    "set and unset change the value itself, also where it is a link, and leave write-protected ones\n"
    "alone. Names and texts are UTF-8.\n"
    "Exit status: 0 done, 1 the value is not there or the file said no, 2 the command line is wrong."};

std::string meaning_of(std::uint32_t status) {
    switch (status) {
    case platform::kNotFound: return "not found";
    case platform::kAccessDenied: return "access denied, or a write-protected value";
    case platform::kBadParameter: return "a name that the file cannot hold";
    case platform::kDiskFull: return "the disk is full";
    case platform::kBusy: return "another process keeps the file locked";
    case platform::kDamaged: return "the file is damaged; it is left as it is";
    case platform::kInputOutputError: return "reading or writing failed";
    case platform::kNoResources: return "not enough resources";
    default: return "failed";
    }
}

int fail(const std::string &what, std::uint32_t status) {
    report(kUsageText.command, what + ": " + meaning_of(status) + " (status " + std::to_string(status) + ")");
    return kFailure;
}

// Where a value is: its key's full path and its own name.
struct ValuePath {
    std::u16string key;
    std::u16string name;
};

// Tells of a link where writing through it goes, if that is not where reading looks: a remark in a line of its own.
std::string remark_on(const RegistryValue &value) {
    if (value.type != registry::kLinkType) return {}; // nor is anything written through a protected link
    registry::LinkEngine engine;
    std::optional<std::u16string> target;
    if (registry::set_up(engine, registry::Missing::left)) target = registry::target_text(engine, value.data);
    registry::release(engine);
    if (!target || target->starts_with(u'\\')) return {};
    // As the library's calls pass it on; whatever it holds, one line.
    std::u16string target_path = platform::ansi_to_wide(platform::wide_to_ansi(*target));
    std::ranges::replace_if(
        target_path, [](char16_t unit) { return unit < u' '; }, u'?');
    return "; writing through it sets HKEY_CURRENT_USER\\" + platform::to_utf8(target_path) + "\n";
}

int show(const RegistryFile &file, const std::u16string &path) {
    std::fputs(platform::empty_registry().text.c_str(), stdout);
    const std::u16string top = platform::upper_case(path);
    for (const auto &[upper, key] : file.keys) {
        const bool inside = path.empty() || upper == top || upper.starts_with(top + u'\\');
        if (!inside || !key.insert_at) continue;
        std::printf("\n[%s]\n", platform::to_utf8(key.path).c_str());
        std::vector<const RegistryValue *> values;
        for (const auto &entry : key.values)
            values.push_back(&entry.second);
        std::ranges::sort(values, {}, &RegistryValue::line);
        for (const RegistryValue *value : values)
            std::printf("%s\n%s", platform::value_line(*value).c_str(), remark_on(*value).c_str());
    }
    return kSuccess;
}

std::string readable(const RegistryValue &value) {
    const auto &data = value.data;
    const std::uint32_t type = registry::base_type(value.type);
    const bool is_text =
        type == platform::kTextType || type == platform::kExpandableTextType || registry::is_link(type);
    std::uint32_t number = 0;
    for (std::size_t i = std::min<std::size_t>(data.size(), 4); i-- > 0;)
        number = number << 8 | data[i];
    if ((type == kNumberType && data.size() == 4) || (type == registry::kCodePageType && data.size() == 2)) {
        return std::to_string(number);
    }
    std::string text;
    if (is_text && data.size() % 2 == 0) {
        std::u16string units = kxstr::units_of(data);
        while (units.ends_with(u'\0'))
            units.pop_back();
        return platform::to_utf8(units);
    }
    for (const std::uint8_t byte : data) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text.append(text.empty() ? "" : " ").append(pair);
    }
    return text;
}

// Nothing for text that is no number of so many bytes.
std::optional<std::vector<std::uint8_t>> number_bytes(const std::string &text, std::size_t size) {
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    std::uint64_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + (hex ? 2 : 0), end, number, hex ? 16 : 10);
    if (error != std::errc{} || stop != end || number >> (8 * size) != 0) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    return bytes;
}

std::optional<std::vector<std::uint8_t>> hex_bytes(const std::string &text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == ',') {
            ++i;
            continue;
        }
        std::uint8_t byte = 0;
        const char *const start = text.data() + i;
        if (i + 2 > text.size() || std::from_chars(start, start + 2, byte, 16).ptr != start + 2) return std::nullopt;
        bytes.push_back(byte);
        i += 2;
    }
    return bytes;
}

std::optional<std::vector<std::uint8_t>> text_bytes(const std::string &text) {
    auto units = platform::from_utf8(text);
    if (!units) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    kxstr::append_u16le(bytes, *units += u'\0');
    return bytes;
}

struct Typed {
    std::uint32_t type;
    std::optional<std::vector<std::uint8_t>> data; // nothing: the text is none of this type
};

// Type 0 for a name that is none.
Typed typed_value(const std::string &type, const std::string &text) {
    if (type == "text") return {platform::kTextType, text_bytes(text)};
    if (type == "dword") return {kNumberType, number_bytes(text, 4)};
    if (type == "codepage") return {registry::kCodePageType, number_bytes(text, 2)};
    if (type == "link") return {registry::kLinkType, text_bytes(text)};
    if (type == "hex") return {kBinaryType, hex_bytes(text)};
    return {0, {}};
}

bool is_protected(const RegistryFile &file, const ValuePath &value_path) {
    const RegistryValue *value = file.find_value(value_path.key, value_path.name);
    return value != nullptr && (value->type & registry::kWriteProtected) != 0;
}

std::uint32_t set(const ValuePath &value_path, const Typed &value) {
    return platform::change_registry([&](const RegistryFile &file) -> platform::RegistryChange {
        if (is_protected(file, value_path)) return {platform::kAccessDenied, {}};
        auto text = platform::with_value(file, value_path.key, value_path.name, value.type, *value.data);
        if (!text) return {platform::kBadParameter, {}};
        return {platform::kSuccess, std::move(*text)};
    });
}

std::uint32_t unset(const ValuePath &value_path) {
    return platform::change_registry([&](const RegistryFile &file) -> platform::RegistryChange {
        if (file.find_value(value_path.key, value_path.name) == nullptr) return {platform::kNotFound, {}};
        if (is_protected(file, value_path)) return {platform::kAccessDenied, {}};
        return {platform::kSuccess, platform::without_value(file, value_path.key, value_path.name)};
    });
}

} // namespace

int run_registry(int argc, char **argv) {
    std::string type = "text";
    std::string file;
    const Parsed parsed =
        parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) -> std::string {
            if (id == 'f') file = argument;
            if (id == 't') type = argument;
            if (id == 'f' && file.empty()) return "-f needs the name of a file";
            if (typed_value(type, "").type == 0) return "no type '" + type + "'";
            return file.size() < KX_REGISTRY_PATH_SIZE ? "" : "the path is too long";
        });
    if (parsed.stop) return parsed.status;
    const std::vector<std::string> operands(argv + parsed.first_operand, argv + argc);
    const std::string command = operands.empty() ? "" : operands[0];
    const std::size_t least = command == "show" ? 1 : command == "set" ? 4 : 3;
    const std::size_t most = command == "show" ? 2 : least;
    if (command != "show" && command != "get" && command != "set" && command != "unset") {
        return usage_error(kUsageText, command.empty() ? "say what to do" : "no '" + command + "' here");
    }
    if (operands.size() < least || operands.size() > most) {
        return usage_error(kUsageText, command + " takes other operands");
    }

    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    if (!file.empty()) {
        std::snprintf(settings.registry_path, sizeof settings.registry_path, "%s", file.c_str());
        KxPlatformSet(&settings);
    }
    if (*settings.registry_path == 0) return fail("no settings file (KX_REGISTRY)", platform::kNotFound);

    ValuePath value_path;
    if (operands.size() > 1) {
        const auto given = platform::from_utf8(operands[1]);
        const auto path = given ? platform::full_key_path(*given) : std::nullopt;
        if (!path) return usage_error(kUsageText, "'" + operands[1] + "' does not start with a root's name");
        value_path.key = *path;
    }
    if (operands.size() > 2) {
        const auto name = platform::from_utf8(operands[2]);
        if (!name) return usage_error(kUsageText, "the name is not UTF-8");
        value_path.name = *name;
    }

    if (command == "set") {
        const Typed value = typed_value(type, operands[3]);
        if (!value.data) return usage_error(kUsageText, "'" + operands[3] + "' is no " + type);
        const std::uint32_t status = set(value_path, value);
        return status == platform::kSuccess ? kSuccess : fail(settings.registry_path, status);
    }
    if (command == "unset") {
        const std::uint32_t status = unset(value_path);
        return status == platform::kSuccess ? kSuccess : fail(operands[2], status);
    }
    std::shared_ptr<const RegistryFile> contents;
    const std::uint32_t status = platform::read_registry(contents);
    if (status != platform::kSuccess) return fail(settings.registry_path, status);
    if (command == "show") {
        if (!value_path.key.empty() && contents->find_key(value_path.key) == nullptr) {
            return fail(operands[1], platform::kNotFound);
        }
        return show(*contents, value_path.key);
    }
    const RegistryValue *value = contents->find_value(value_path.key, value_path.name);
    if (value == nullptr) return fail(operands[2], platform::kNotFound);
    std::printf("%s\n", readable(*value).c_str());
    return kSuccess;
}

std::vector<std::string> keys_below(const std::string &path) {
    const std::u16string above = platform::upper_case(platform::ansi_to_wide(path));
    std::shared_ptr<const platform::RegistryFile> registry;
    if (platform::read_registry(registry) != platform::kSuccess) return {};
    std::vector<std::string> names;
    for (const auto &[upper, key] : registry->keys) {
        if (!upper.starts_with(above)) continue;
        const std::u16string_view below = std::u16string_view(key.path).substr(above.size());
        names.push_back(platform::wide_to_ansi(below.substr(0, below.find(u'\\'))));
    }
    return names;
}

std::uint32_t settings_status() {
    std::shared_ptr<const platform::RegistryFile> registry;
    return platform::read_registry(registry);
}

} // namespace kx
