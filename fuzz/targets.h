// The fuzz targets, one for each family of functions.
#pragma once

#include "input.h"

namespace kxstr::fuzz {

void conversions(Input &input);
void text(Input &input);
void streams(Input &input);
void strings(Input &input);
void collation(Input &input);
void settings(Input &input);
void links(Input &input);
void tool(Input &input);
void detect(Input &input);

} // namespace kxstr::fuzz
