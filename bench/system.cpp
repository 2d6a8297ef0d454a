#include "system.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <kxstr/platform.h>
#include <stdexcept>

namespace kxbench {
namespace {

constexpr const char *kWesternTexts[] = {"en", "fr"};
constexpr const char *kRussianTexts[] = {"ru"};
constexpr const char *kGreekTexts[] = {"el"};
constexpr const char *kJapaneseTexts[] = {"ja"};

constexpr System kSystems[] = {
    {"western", 1252, 0x0409, false, "CP1252", "windows-1252", kWesternTexts},
    {"russian", 1251, 0x0419, false, "CP1251", "windows-1251", kRussianTexts},
    {"greek", 1253, 0x0408, false, "CP1253", "windows-1253", kGreekTexts},
    {"japanese", 932, 0x0411, true, "CP932", "windows-932", kJapaneseTexts},
};

const System *chosen = nullptr;

struct Folder {
    std::filesystem::path path;

    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "kxstr-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path = name;
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

const Folder &folder() {
    static const Folder the_folder;
    return the_folder;
}

} // namespace

std::span<const System> systems() {
    return kSystems;
}

void become(const System &system) {
    chosen = &system;
    KxPlatformSettings settings{};
    settings.ansi_code_page = system.code_page;
    settings.oem_code_page = system.double_byte ? system.code_page : 437;
    settings.double_byte = system.double_byte ? 1 : 0;
    settings.system_language = system.language;
    settings.keyboard_language = system.language;
    KxPlatformSet(&settings);
    use_settings_file(settings_path("none.reg"));
}

const System &current() {
    return *chosen;
}

void use_settings_file(const std::string &path) {
    KxPlatformSettings settings{};
    KxPlatformGet(&settings);
    if (path.size() >= sizeof settings.registry_path) throw std::runtime_error("the temporary folder's path is long");
    std::memcpy(settings.registry_path, path.c_str(), path.size() + 1);
    KxPlatformSet(&settings);
}

std::string settings_path(const std::string &name) {
    return (folder().path / name).string();
}

} // namespace kxbench
