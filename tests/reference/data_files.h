// The data files of the character set and the code pages, read plainly: no code and no table of the library or of its
// generator stands behind these.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace kxstr::reference {

using Map = std::map<unsigned, unsigned>;

// Fields of the rows of a file below data/; empty when there is no such file.
std::vector<std::vector<std::string>> read_rows(const std::string &name);

// The same for fields with blanks in them, which stand between bars, with a few of the escapes of C.
std::vector<std::vector<std::string>> read_barred_rows(const std::string &name);

struct Page {
    unsigned kx_number = 0;
    Map low, high; // byte -> KX character
    Map reverse;   // KX character -> byte
};

Map unicode_to_kx();
Map kx_to_unicode();
std::vector<Page> pages(); // in the order of the code page table

} // namespace kxstr::reference
