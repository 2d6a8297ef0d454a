#include "forms/stream.h"
