// A folder of its own for a test's settings file, removed at the end.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace kxstr::test {

inline std::string bytes_of(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void write_bytes(const std::filesystem::path &path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

class SettingsFolder {
  public:
    SettingsFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kxstr-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
        folder_ = name;
    }
    SettingsFolder(const SettingsFolder &) = delete;
    SettingsFolder &operator=(const SettingsFolder &) = delete;
    ~SettingsFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::filesystem::path &path() const { return folder_; }
    std::string file() const { return (folder_ / "registry.reg").string(); }
    std::string read() const { return bytes_of(file()); }
    // The body of a settings file, without its first line.
    void write(std::string_view body) const { write_bytes(file(), std::string(kHeader).append(body)); }

    static constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\n";

  private:
    std::filesystem::path folder_;
};

} // namespace kxstr::test
