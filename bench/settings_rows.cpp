// The code page that the settings file stores, against reading and searching the file at every question.
#include "row.h"
#include "rows.h"
#include "system.h"
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <kxstr/codepage.h>
#include <string_view>
#include <thread>
#include <unistd.h>

namespace kxbench {
namespace {

constexpr int kStored = 850, kNotStored = 0;
constexpr std::string_view kValue = "\"DOS Code Page\"=hex(80000002):";

struct Settings {
    std::string path;
    std::string key; // as it stands in the file
    std::string buffer;
    std::uint16_t expected_code_page;
    int expected_stored;

    Settings(std::size_t keys, bool has_value)
        : path(settings_path(std::to_string(keys) + (has_value ? ".reg" : "-without.reg"))),
          key("\n[" + std::string(WcvtGetRegistryLoc()) + "]\n"),
          expected_stored(has_value ? kStored : kNotStored) {
        use_settings_file(settings_path("none.reg"));
        expected_code_page = has_value ? kStored : WcvtGetDOSCodepage();
        std::ofstream file(path, std::ios::binary);
        file << "Windows Registry Editor Version 5.00\n";
        for (std::size_t i = 1; i < keys; ++i)
            file << "\n[HKEY_CURRENT_USER\\Software\\Example\\Program" << i << "]\n\"Folder\"=\"C:\\\\Program\\\\" << i
                 << "\"\n\"Count\"=dword:" << 10000000 + i << "\n";
        file << key << "\"Windows Code Page\"=hex(80000002):e4,04\n";
        if (has_value) file << kValue << "52,03\n";
        file.close();
        buffer.resize(1 << 20);
        use_settings_file(path);
        // The library reads a file again while it is so young that another change might not show in its time.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    void clear_output() {}
};

// The file as it is now: opened, read, closed and searched for the key and the value in it.
int read_and_search(Settings &in) {
    const int file = open(in.path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return -1;
    const ssize_t size = read(file, in.buffer.data(), in.buffer.size());
    close(file);
    if (size < 0) return -1;
    const std::string_view text(in.buffer.data(), static_cast<std::size_t>(size));
    const auto *found = static_cast<const char *>(memmem(text.data(), text.size(), in.key.data(), in.key.size()));
    if (found == nullptr) return kNotStored;
    const std::string_view from_key = text.substr(static_cast<std::size_t>(found - text.data()) + in.key.size());
    const std::string_view values = from_key.substr(0, from_key.find("\n["));
    const std::size_t value = values.find(kValue);
    if (value == values.npos) return kNotStored;
    char *end = nullptr;
    const auto low = std::strtol(values.data() + value + kValue.size(), &end, 16);
    const auto high = std::strtol(end + 1, nullptr, 16);
    return static_cast<int>(high << 8 | low);
}

void add_row(const char *text, std::size_t keys, bool has_value) {
    Row<Settings>("WcvtGetDOSCodepage", text, keys, [=] { return Settings(keys, has_value); })
        .entrant(
            "ours", [](Settings &) { return WcvtGetDOSCodepage(); },
            [](const Settings &in, std::uint16_t code_page) { return code_page == in.expected_code_page; })
        .entrant("read-and-search", read_and_search,
                 [](const Settings &in, int stored) { return stored == in.expected_stored; });
}

} // namespace

void add_settings_rows() {
    if (current().name != std::string_view("western")) return;
    add_row("keys", 3, true);
    add_row("keys", 300, true);
    add_row("keys-without", 300, false);
}

} // namespace kxbench
