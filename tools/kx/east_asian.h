// `kx case`, `kx width` and `kx han`: filters that change the letters of a text.
#pragma once

namespace kx {

int run_case(int argc, char **argv);
int run_width(int argc, char **argv);
int run_han(int argc, char **argv);

} // namespace kx
