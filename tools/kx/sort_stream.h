// What `kx sort` does line by line, with no more in memory than a line of each input.
#pragma once

#include "sort_input.h"

namespace kx {

// All of these give an exit status, and have reported a fault.

// Writes the lines behind their keys.
int write_keys(const SortRequest &request, const Collation &collation);
// Whether the one input is in order; says where it is not, unless `quiet`.
int check_order(const SortRequest &request, bool quiet);
// Writes the lines of inputs that are in order as one.
int merge_inputs(const SortRequest &request);

} // namespace kx
