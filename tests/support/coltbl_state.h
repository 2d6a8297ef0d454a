// Puts the exported collation table, which the language rewrites, back as it is at load.
#pragma once

#include <algorithm>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <vector>

#include "collate/language_setup.h"

namespace kxstr::test {

// The blocks of coltbl, one after another.
inline std::vector<std::uint8_t> coltbl_values() {
    std::vector<std::uint8_t> values;
    for (const auto *entry = coltbl; entry->set != 0xFF; ++entry)
        values.insert(values.end(), entry->block, entry->block + 2 + entry->block[1]);
    return values;
}

// Taken before the first test runs.
inline const std::vector<std::uint8_t> kColtblAtLoad = coltbl_values();

// As at load for the length of a test: table, language for which it is set up, current language.
class ColtblAtLoad {
  public:
    ColtblAtLoad() { reset(); }
    ~ColtblAtLoad() { reset(); }
    ColtblAtLoad(const ColtblAtLoad &) = delete;
    ColtblAtLoad &operator=(const ColtblAtLoad &) = delete;

  private:
    static void reset() {
        auto from = kColtblAtLoad.begin();
        for (auto *entry = coltbl; entry->set != 0xFF; ++entry) {
            const auto size = 2 + kColtblAtLoad[static_cast<std::size_t>(from - kColtblAtLoad.begin()) + 1];
            std::copy_n(from, size, entry->block);
            from += size;
        }
        collate::keep_language_set_up({'E', 'N'});
        VaskSetLanguage("EN");
    }
};

} // namespace kxstr::test
