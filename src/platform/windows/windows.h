// <windows.h> as this folder wants it: lean, and without its min and max.
#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX // the compiler's own headers may have said it
#    define NOMINMAX
#endif
#include <windows.h>
