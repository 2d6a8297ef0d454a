// The page that `kx chart` writes, before and behind its data. For the kx tool only; the library does not carry it.
#pragma once

#include <string_view>

namespace kxstr::tables {

extern const std::string_view kChartHead;
extern const std::string_view kChartTail;

} // namespace kxstr::tables
