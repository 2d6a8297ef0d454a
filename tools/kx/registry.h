// `kx registry` and `kx codepages`: the settings file, and the code pages that are in force.
#pragma once

namespace kx {

int run_registry(int argc, char **argv);
int run_codepages(int argc, char **argv);

} // namespace kx
