// `kx registry` and `kx codepages`: the settings file, and the code pages that are in force.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kx {

int run_registry(int argc, char **argv);
int run_codepages(int argc, char **argv);

// The names of the keys directly below a key of the current user, whose path ends with a backslash.
std::vector<std::string> keys_below(const std::string &path);
// Whether the settings can be read, as a status of the registry.
std::uint32_t settings_status();

// The code pages in force for a language, and why: "stored", "default of the country", "the system's".
struct PagesInForce {
    std::string dos, dos_origin, windows, windows_origin;
};
PagesInForce pages_in_force(const char *language);

} // namespace kx
