// Windows keeps the settings itself and has its own editors for them.

#include "command.h"
#include "files.h"
#include "options.h"
#include "platform/system.h"
#include "platform/windows/windows.h"
#include "registry.h"

namespace kx {

namespace {

constexpr Example kExamples[] = {{"reg query HKCU\\Software\\Norvane /s", "what the library has stored"}};
constexpr Usage kUsageText{
    "kx registry",
    "--help",
    "Tells what to use on Windows, which keeps the settings itself: reg or regedit.",
    {},
    "",
    kExamples,
    "help was shown",
    "anything else",
};

} // namespace

int run_registry(int argc, char **argv) {
    const Parsed parsed = parse_options(argc, argv, kUsageText, [](int, const Argument &) { return std::string(); });
    if (parsed.stop) return parsed.status;
    report(kUsageText.command, "on Windows, use reg or regedit");
    return kFailure;
}

std::vector<std::string> keys_below(const std::string &path) {
    const std::string below_root = path.substr(path.find('\\') + 1, path.size() - path.find('\\') - 2);
    kxstr::platform::KeyHandle opened{};
    if (kxstr::platform::open_key(kxstr::platform::kCurrentUser, below_root.c_str(), KEY_READ, opened) != 0) return {};
    std::vector<std::string> names;
    char name[512]; // at most 255 characters
    DWORD size = sizeof name;
    for (DWORD index = 0; RegEnumKeyExA(reinterpret_cast<HKEY>(opened), index, name, &size, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
         ++index, size = sizeof name)
        names.emplace_back(name, size);
    kxstr::platform::close_key(opened);
    return names;
}

std::uint32_t settings_status() {
    return kxstr::platform::kSuccess;
}

} // namespace kx
