// The systems that the benchmarks imitate. A process is one of them for life: the library decides the country and the
// Windows code page once.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace kxbench {

struct System {
    const char *name;
    std::uint32_t code_page;
    std::uint16_t language;
    bool double_byte;
    const char *iconv_name;
    const char *icu_name;
    std::span<const char *const> texts; // languages of the corpus that this system's code page writes

    // Tells where a double-byte character begins; a host has such a rule of its own.
    [[nodiscard]] bool is_lead(unsigned char byte) const {
        return double_byte && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
    }
};

std::span<const System> systems();

// Makes this process the system, with an empty folder of its own for the settings file.
void become(const System &system);
const System &current();

// The settings file in force from now on; it need not exist.
void use_settings_file(const std::string &path);
// A path in the folder, which goes with the process.
std::string settings_path(const std::string &name);

} // namespace kxbench
