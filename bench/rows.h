// Registers the rows that the current system takes part in, one function for each family of jobs.
#pragma once

namespace kxbench {

void add_conversion_rows();
void add_stream_rows();
void add_byte_string_rows();
void add_kx_string_rows();
void add_case_rows();
void add_collation_rows();
void add_settings_rows();

} // namespace kxbench
