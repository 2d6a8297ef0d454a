// Work in several threads, as far as there are some.
#pragma once

#include <functional>

namespace kx {

// Does `work` for every number below `jobs`, at the same time as far as there are threads to be had. What one of them
// throws is thrown.
void in_threads(unsigned jobs, const std::function<void(unsigned number)> &work);

} // namespace kx
