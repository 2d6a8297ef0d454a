// Windows keeps the settings itself and has its own editors for them.
#include <cstdio>
#include <cstring>

#include "command.h"
#include "platform/system.h"
#include "platform/windows/windows.h"
#include "registry.h"

namespace kx {

int run_registry(int, char **) {
    std::fputs("kx registry: on Windows, use reg or regedit\n", stderr);
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
