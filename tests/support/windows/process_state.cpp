#include "support/process_state.h"

#include <gtest/gtest.h>

#include "codepage/country.h"
#include "codepage/selection.h"
#include "platform/system.h"

namespace kxstr::test {

bool runs_on(const System &system, const char *) {
    codepage::forget_country();
    codepage::forget_code_pages();
    const bool here =
        system == System{platform::ansi_code_page(), platform::oem_code_page(), platform::is_double_byte_system(),
                         platform::system_language(), platform::keyboard_language()};
    // What the runs on all systems are counted by.
    testing::Test::RecordProperty(here ? "here" : "elsewhere", 1);
    return here;
}

void run_on(const System &system, const char *) {
    if (runs_on(system)) return;
    [] { GTEST_SKIP() << "not on this system"; }();
    // Ends the test from any depth; GoogleTest takes it for told already.
    throw testing::AssertionException(
        testing::TestPartResult(testing::TestPartResult::kSkip, __FILE__, __LINE__, "not on this system"));
}

} // namespace kxstr::test
