// `kx chart`: the character set as a page for a browser.
#pragma once

namespace kx {

int run_chart(int argc, char **argv);

} // namespace kx
