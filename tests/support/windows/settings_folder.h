// The registry of a test: while it lives, the roots that the library sees are empty keys of its own in the registry of
// Windows. Settings go in and come out as the text of an export.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "platform/portable/registry_file.h"
#include "platform/roots.h"
#include "platform/windows/windows.h"

namespace kxstr::test {

class SettingsFolder {
  public:
    SettingsFolder() { make_roots(); }
    SettingsFolder(const SettingsFolder &) = delete;
    SettingsFolder &operator=(const SettingsFolder &) = delete;
    ~SettingsFolder() { remove_roots(); }

    std::string file() const { return {}; }

    std::string read() const {
        platform::RegistryFile file = *platform::parse_registry(std::string(kHeader));
        for (std::size_t root = 0; root < kRoots.size(); ++root)
            append(file, roots_[root], u16_name(root));
        return file.text;
    }

    void write(std::string_view body) {
        remove_roots();
        make_roots();
        const auto file = platform::parse_registry(std::string(kHeader).append(body));
        ASSERT_TRUE(file);
        for (const auto &[upper, key] : file->keys) {
            const std::size_t end_of_root = std::min(key.path.find(u'\\'), key.path.size());
            const HKEY root = root_of(std::u16string_view(key.path).substr(0, end_of_root));
            const std::u16string below = end_of_root == key.path.size() ? u"" : key.path.substr(end_of_root + 1);
            HKEY opened = nullptr;
            ASSERT_EQ(RegCreateKeyExW(root, wide(below), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, nullptr), 0);
            for (const auto &[upper_name, value] : key.values) {
                EXPECT_EQ(RegSetValueExW(opened, wide(value.name), 0, value.type, value.data.data(),
                                         static_cast<DWORD>(value.data.size())),
                          0);
            }
            RegCloseKey(opened);
        }
    }

    static constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\n";

  private:
    // Those that can be replaced, in the order of their names.
    static constexpr std::array<std::uint32_t, 4> kRoots{0x80000000, 0x80000001, 0x80000002, 0x80000003};
    static constexpr const wchar_t *kHome = L"Software\\kxstr tests";

    static HKEY handle(std::uint32_t number) {
        return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(number)));
    }
    static const wchar_t *wide(const std::u16string &text) { return reinterpret_cast<const wchar_t *>(text.c_str()); }

    static std::u16string u16_name(std::size_t root) {
        const std::string_view name = platform::kRoots[root].name;
        return {name.begin(), name.end()};
    }

    HKEY root_of(std::u16string_view name) const {
        for (std::size_t root = 0; root < kRoots.size(); ++root)
            if (u16_name(root) == name) return roots_[root];
        ADD_FAILURE() << "a root that a test cannot have";
        return nullptr;
    }

    void make_roots() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kHome); // left by a test that was killed
        for (std::size_t root = 0; root < kRoots.size(); ++root) {
            const std::wstring path = std::wstring(kHome) + L"\\" + std::to_wstring(root);
            EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                      &roots_[root], nullptr),
                      0);
        }
        for (std::size_t root = 0; root < kRoots.size(); ++root)
            EXPECT_EQ(RegOverridePredefKey(handle(kRoots[root]), roots_[root]), 0);
    }

    void remove_roots() {
        for (const std::uint32_t root : kRoots)
            RegOverridePredefKey(handle(root), nullptr);
        for (HKEY root : roots_)
            RegCloseKey(root);
        RegDeleteTreeW(HKEY_CURRENT_USER, kHome);
    }

    // Keys that only lead to others have no line.
    static void append(platform::RegistryFile &file, HKEY key, const std::u16string &path) {
        DWORD keys = 0;
        DWORD values = 0;
        RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                         nullptr);
        const bool is_root = path.find(u'\\') == std::u16string::npos;
        if (values == 0 && keys == 0 && !is_root) file = *platform::parse_registry(*platform::with_key(file, path));
        wchar_t name[256];
        for (DWORD index = 0; index < values; ++index) {
            BYTE data[4096];
            DWORD name_size = 256;
            DWORD size = sizeof data;
            DWORD type = 0;
            EXPECT_EQ(RegEnumValueW(key, index, name, &name_size, nullptr, &type, data, &size), 0);
            const std::u16string value_name(name, name + name_size);
            file = *platform::parse_registry(*platform::with_value(file, path, value_name, type, {data, size}));
        }
        for (DWORD index = 0; index < keys; ++index) {
            DWORD name_size = 256;
            EXPECT_EQ(RegEnumKeyExW(key, index, name, &name_size, nullptr, nullptr, nullptr, nullptr), 0);
            HKEY below = nullptr;
            EXPECT_EQ(RegOpenKeyExW(key, name, 0, KEY_READ, &below), 0);
            append(file, below, path + u'\\' + std::u16string(name, name + name_size));
            RegCloseKey(below);
        }
    }

    std::array<HKEY, kRoots.size()> roots_{};
};

} // namespace kxstr::test
