#include "registry.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <kxstr/platform.h>
#include <vector>

#include "codepage/selection.h"
#include "command.h"
#include "files.h"
#include "option_list.h"
#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/portable/registry_store.h"
#include "platform/portable/settings_file.h"
#include "platform/portable/utf8.h"
#include "platform/roots.h"
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
    option::kType,
    option::kFile,
    option::kOutput,
    hidden('t', nullptr, option::kType),
    hidden('f', nullptr, option::kFile),
};

constexpr Action kActions[] = {
    {"show", "[KEY]",
     "print a key and all below it, or everything, in the format of the\n"
     "file; behind a link that reads one value and writes another, a\n"
     "remark tells which it writes"},
    {"get", "KEY NAME",
     "print one value: a text or a link as it is, a dword or a code page\n"
     "in decimal, other data in hexadecimal"},
    {"set", "[--type=TYPE] KEY NAME VALUE", "write one value; nothing else in the file changes"},
    {"unset", "KEY NAME", "remove one value"},
    {"delete", "KEY", "remove a key and all below it"},
    {"export", "[KEY]", "print as show does, for another registry to import"},
    {"import", "FILE", "take over what FILE sets and removes; - is standard input"},
};

constexpr Example kExamples[] = {
    {"kx registry show 'HKCU\\Software\\Norvane'", "a key and all below it"},
    {"kx registry export | kx registry --file other.reg import -", "into another settings file"},
};

constexpr Usage kUsageText{
    "kx registry",
    "[--file=FILE] [-o OUT] COMMAND [OPERAND...]",
    "Reads and writes the registry of the library, a text file. KEY is a full path such as\n"
    "'HKEY_CURRENT_USER\\Software\\Norvane', or 'HKCU\\Software\\Norvane'; letter case does not count.\n"
    "The NAME '' is the key's default value.",
    kOptions,
    "TYPE dword is 32 bits, codepage 16 bits under the type of the code page settings, link an\n"
    "expression such as '<Key\\Value>', hex pairs of digits such as '01 ff'. Without a TYPE the code\n"
    "pages of the library's settings are codepage, everything else is text.\n"
    "Short roots: HKCR, HKCU, HKLM, HKU, HKCC.\n"
    "Changes are made to the value itself, also where it is a link; write-protected ones are left\n"
    "alone. Names and texts are UTF-8.",
    kExamples,
    "done",
    "the value is not there, or a file said no",
    kActions,
};

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
struct NamedValue {
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

enum class Remarks : bool { none, on_links };

// Paths in upper case; the empty one is above all.
bool is_at_or_below(const std::u16string &path, const std::u16string &top) {
    return top.empty() || path == top || path.starts_with(top + u'\\');
}

std::string listing(const RegistryFile &file, const std::u16string &path, Remarks remarks) {
    std::string text = platform::empty_registry().text;
    const std::u16string top = platform::upper_case(path);
    for (const auto &[upper, key] : file.keys) {
        if (!is_at_or_below(upper, top) || !key.insert_at) continue;
        text += "\n[" + platform::to_utf8(key.path) + "]\n";
        std::vector<const RegistryValue *> values;
        for (const auto &entry : key.values)
            values.push_back(&entry.second);
        std::ranges::sort(values, {}, &RegistryValue::line);
        for (const RegistryValue *value : values)
            text += platform::value_line(*value) + "\n" + (remarks == Remarks::on_links ? remark_on(*value) : "");
    }
    return text;
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

// What a value is that nobody gives a type for.
std::string usual_type(const NamedValue &value_path) {
    const std::u16string key = platform::upper_case(value_path.key);
    const std::u16string name = platform::upper_case(value_path.name);
    const auto is = [&name](const char *setting) {
        return name == platform::upper_case(platform::ansi_to_wide(setting));
    };
    const std::u16string code_pages = platform::upper_case(platform::ansi_to_wide(kxstr::codepage::kCodePageSettings));
    const bool is_setting = key.starts_with(code_pages) && key.find(u'\\', code_pages.size()) == key.npos;
    return is_setting && (is(kxstr::codepage::kDosValue) || is(kxstr::codepage::kWindowsValue)) ? "codepage" : "text";
}

bool is_protected(const RegistryFile &file, const NamedValue &value_path) {
    const RegistryValue *value = file.find_value(value_path.key, value_path.name);
    return value != nullptr && (value->type & registry::kWriteProtected) != 0;
}

using Change = platform::RegistryChange;

Change changed(std::optional<std::string> text) {
    return text ? Change{platform::kSuccess, std::move(*text)} : Change{platform::kBadParameter, {}};
}

Change set(const RegistryFile &file, const NamedValue &value_path, const Typed &value) {
    if (is_protected(file, value_path)) return {platform::kAccessDenied, {}};
    return changed(platform::with_value(file, value_path.key, value_path.name, value.type, *value.data));
}

Change unset(const RegistryFile &file, const NamedValue &value_path) {
    if (file.find_value(value_path.key, value_path.name) == nullptr) return {platform::kNotFound, {}};
    if (is_protected(file, value_path)) return {platform::kAccessDenied, {}};
    return {platform::kSuccess, platform::without_value(file, value_path.key, value_path.name)};
}

// Whether the change leaves each write-protected value as it is.
bool keeps_protected(const RegistryFile &file, const RegistryFile &after) {
    for (const auto &[path, key] : file.keys) {
        for (const auto &[name, value] : key.values) {
            if ((value.type & registry::kWriteProtected) == 0) continue;
            const RegistryValue *const now = after.find_value(path, name);
            if (now == nullptr || now->type != value.type || now->data != value.data) return false;
        }
    }
    return true;
}

Change without_touching_protected(const RegistryFile &file, std::optional<std::string> text) {
    const auto after = text ? platform::parse_registry(*text) : std::nullopt;
    if (!after) return {platform::kBadParameter, {}};
    if (!keeps_protected(file, *after)) return {platform::kAccessDenied, {}};
    return {platform::kSuccess, std::move(*text)};
}

Change remove(const RegistryFile &file, const std::u16string &key) {
    if (file.find_key(key) == nullptr) return {platform::kNotFound, {}};
    return without_touching_protected(file, platform::without_key(file, key));
}

// The full path of a key, where HKCU and the like stand for their roots.
std::optional<std::u16string> key_path_of(const std::string &given) {
    static constexpr struct {
        std::string_view name;
        platform::KeyHandle root;
    } kShortRoots[] = {{"HKCR", platform::kClassesRoot},
                       {"HKCU", platform::kCurrentUser},
                       {"HKLM", platform::kLocalMachine},
                       {"HKU", platform::kUsers},
                       {"HKCC", platform::kCurrentConfig}};
    auto path = platform::from_utf8(given);
    if (!path) return std::nullopt;
    const std::size_t length = std::min(path->find(u'\\'), path->size());
    const std::u16string first = platform::upper_case(path->substr(0, length));
    for (const auto &[name, key] : kShortRoots) {
        if (!std::ranges::equal(first, name)) continue;
        const auto root = std::ranges::find(platform::kRoots, key, &platform::Root::key);
        path->replace(0, length, std::u16string(root->name.begin(), root->name.end()));
        break;
    }
    return platform::full_key_path(*path);
}

struct Operands {
    const char *command;
    std::size_t least, most;
};
constexpr Operands kCommands[] = {{"show", 0, 1},   {"get", 2, 2},    {"set", 3, 3},   {"unset", 2, 2},
                                  {"delete", 1, 1}, {"export", 0, 1}, {"import", 1, 1}};

std::uint32_t read_standard_input(std::string &bytes) {
    Input input(kUsageText.command, "-");
    for (bool last = false; input.good() && !last;) {
        const Chunk chunk = input.next();
        bytes.append(chunk.bytes.begin(), chunk.bytes.end());
        input.consume(chunk.bytes.size());
        last = chunk.last;
    }
    return input.good() ? platform::kSuccess : platform::kInputOutputError;
}

int import_file(const std::string &path, const std::string &settings_path) {
    platform::FileContent content;
    std::uint32_t status = path == "-" ? read_standard_input(content.bytes) : platform::read_file(path, content);
    constexpr std::string_view older = "REGEDIT4";
    if (content.bytes.size() >= older.size() && std::equal(older.begin(), older.end(), content.bytes.begin())) {
        report(kUsageText.command,
               path + ": files of the older form, REGEDIT4, are not taken; export it in the newer one");
        return kFailure;
    }
    const auto other = status == platform::kSuccess ? platform::parse_registry(std::move(content.bytes)) : std::nullopt;
    if (!other) return fail(path, status == platform::kSuccess ? std::uint32_t{platform::kDamaged} : status);
    status = platform::change_registry([&](const RegistryFile &file) {
        return without_touching_protected(file, platform::with_all_of(file, *other));
    });
    return status == platform::kSuccess ? kSuccess : fail(settings_path, status);
}

} // namespace

int run_registry(int argc, char **argv) {
    std::string type;
    std::string file;
    std::string output;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) -> std::string {
        (id == kFileId ? file : id == kTypeId ? type : output) = argument.text;
        if (id == kFileId && file.empty()) return "--file needs the name of a file";
        return file.size() < KX_REGISTRY_PATH_SIZE ? "" : "the path is too long";
    });
    if (parsed.stop) return parsed.status;
    std::vector<std::string> operands(argv + parsed.first_operand, argv + argc);
    if (operands.empty()) return usage_error(kUsageText, "say what to do");
    const std::string command = operands[0];
    operands.erase(operands.begin());
    const auto *const known = std::ranges::find(kCommands, command, &Operands::command);
    if (known == std::end(kCommands)) return usage_error(kUsageText, "no '" + command + "' here");
    if (operands.size() < known->least || operands.size() > known->most) {
        return usage_error(kUsageText, command + " takes other operands");
    }

    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    if (!file.empty()) {
        std::snprintf(settings.registry_path, sizeof settings.registry_path, "%s", file.c_str());
        KxPlatformSet(&settings);
    }
    const std::string settings_path = settings.registry_path;
    if (settings_path.empty()) return fail("no settings file (KX_REGISTRY)", platform::kNotFound);
    if (command == "import") return import_file(operands[0], settings_path);

    NamedValue value_path;
    if (!operands.empty()) {
        const auto path = key_path_of(operands[0]);
        if (!path) return usage_error(kUsageText, "'" + operands[0] + "' does not start with a root's name");
        value_path.key = *path;
    }
    if (operands.size() > 1) {
        const auto name = platform::from_utf8(operands[1]);
        if (!name) return usage_error(kUsageText, "the name is not UTF-8");
        value_path.name = *name;
    }

    if (command == "set") {
        if (type.empty()) type = usual_type(value_path);
        const Typed value = typed_value(type, operands[2]);
        if (!value.data) return usage_error(kUsageText, "'" + operands[2] + "' is no " + type);
        const std::uint32_t status =
            platform::change_registry([&](const RegistryFile &now) { return set(now, value_path, value); });
        return status == platform::kSuccess ? kSuccess : fail(settings_path, status);
    }
    // Only what writes something new makes a file.
    platform::FileIdentity identity;
    if (const std::uint32_t status = platform::identify_file(settings_path.c_str(), identity);
        !file.empty() && status != platform::kSuccess) {
        return fail(settings_path, status);
    }
    if (command == "unset" || command == "delete") {
        const std::uint32_t status = platform::change_registry([&](const RegistryFile &now) {
            return command == "unset" ? unset(now, value_path) : remove(now, value_path.key);
        });
        return status == platform::kSuccess ? kSuccess : fail(operands.back(), status);
    }
    std::shared_ptr<const RegistryFile> contents;
    const std::uint32_t status = platform::read_registry(contents);
    if (status != platform::kSuccess) return fail(settings_path, status);
    if (command == "get") {
        const RegistryValue *value = contents->find_value(value_path.key, value_path.name);
        if (value == nullptr) return fail(operands[1], platform::kNotFound);
        return write_text(kUsageText.command, output, readable(*value) + "\n") ? kSuccess : kFailure;
    }
    if (!value_path.key.empty() && contents->find_key(value_path.key) == nullptr) {
        return fail(operands[0], platform::kNotFound);
    }
    const std::string text = listing(*contents, value_path.key, command == "show" ? Remarks::on_links : Remarks::none);
    return write_text(kUsageText.command, output, text) ? kSuccess : kFailure;
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
