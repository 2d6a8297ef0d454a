#include "platform/system.h"
#include "platform/windows/windows.h"

namespace kxstr::platform {
namespace {

constinit SRWLOCK first_use = SRWLOCK_INIT;

} // namespace

FirstUse::FirstUse() noexcept {
    AcquireSRWLockExclusive(&first_use);
}

FirstUse::~FirstUse() {
    ReleaseSRWLockExclusive(&first_use);
}

} // namespace kxstr::platform
