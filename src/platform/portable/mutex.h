// A lock that tells of no errors: those of std::mutex bring the runtime's texts for all errors of the system into the
// library, which then has more to relocate and to set up when it is loaded.
#pragma once

#include <pthread.h>

namespace kxstr::platform {

class Mutex {
  public:
    void lock() noexcept { ::pthread_mutex_lock(&mutex_); }
    void unlock() noexcept { ::pthread_mutex_unlock(&mutex_); }

  private:
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

} // namespace kxstr::platform
