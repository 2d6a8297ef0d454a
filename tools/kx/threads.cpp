#include "threads.h"

#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace kx {

void in_threads(unsigned jobs, const std::function<void(unsigned number)> &work) {
    std::exception_ptr fault;
    std::mutex lock;
    const auto guarded = [&](unsigned number) {
        try {
            work(number);
        } catch (...) {
            const std::lock_guard guard(lock);
            fault = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    unsigned here = 0; // from this number on the work is done here
    try {
        threads.reserve(jobs);
        for (; here + 1 < jobs; ++here)
            threads.emplace_back(guarded, here);
    } catch (const std::system_error &) { // no more threads
    } catch (const std::bad_alloc &) {
    }
    for (; here < jobs; ++here)
        guarded(here);
    for (std::thread &thread : threads)
        thread.join();
    if (fault) std::rethrow_exception(fault);
}

} // namespace kx
