#include "support/process_state.h"

#include <cstdio>
#include <kxstr/platform.h>

#include "codepage/country.h"
#include "codepage/selection.h"

namespace kxstr::test {

bool runs_on(const System &system, const char *registry_path) {
    KxPlatformSettings settings{system.ansi,     system.oem,      system.double_byte ? 1u : 0u,
                                system.language, system.keyboard, {}};
    std::snprintf(settings.registry_path, sizeof settings.registry_path, "%s", registry_path);
    KxPlatformSet(&settings);
    codepage::forget_country();
    codepage::forget_code_pages();
    return true;
}

void run_on(const System &system, const char *registry_path) {
    runs_on(system, registry_path);
}

} // namespace kxstr::test
