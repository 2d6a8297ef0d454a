#include "platform/portable/mutex.h"
#include "platform/system.h"

namespace kxstr::platform {
namespace {

constinit Mutex first_use;

} // namespace

FirstUse::FirstUse() noexcept {
    first_use.lock();
}

FirstUse::~FirstUse() {
    first_use.unlock();
}

} // namespace kxstr::platform
