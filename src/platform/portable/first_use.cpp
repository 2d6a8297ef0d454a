#include <mutex>

#include "platform/system.h"

namespace kxstr::platform {
namespace {

constinit std::mutex first_use;

} // namespace

FirstUse::FirstUse() noexcept {
    first_use.lock();
}

FirstUse::~FirstUse() {
    first_use.unlock();
}

} // namespace kxstr::platform
