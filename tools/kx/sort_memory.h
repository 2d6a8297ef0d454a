// Sorting what fits into memory.
#pragma once

#include "sort_input.h"

namespace kx {

// False after a fault, which has been reported. std::bad_alloc when the input does not fit.
bool sort_in_memory(const SortRequest &request);

} // namespace kx
