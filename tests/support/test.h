// What most test files use.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "reference/data_files.h"
#include "support/countries.h"
#include "support/hex.h"
#include "support/process_state.h"
#include "support/rows.h"
#include "support/written_by.h"
