// The door for libFuzzer. KXSTR_FUZZ_TARGET is the name of the target that a program is for.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kxstr::fuzz::Input input({data, size});
    kxstr::fuzz::KXSTR_FUZZ_TARGET(input);
    return 0;
}
