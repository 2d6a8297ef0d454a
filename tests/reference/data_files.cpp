#include "reference/data_files.h"

#include <fstream>
#include <sstream>

namespace kxstr::reference {
namespace {

unsigned hex(const std::string &field) {
    return static_cast<unsigned>(std::stoul(field, nullptr, 16));
}

Map read_map(const std::string &name) {
    Map map;
    for (const auto &row : read_rows(name))
        map[hex(row.at(0))] = hex(row.at(1));
    return map;
}

// What a byte holds in a code page with a published mapping, by what lies behind it there.
unsigned by_rule(unsigned byte, const Map &mapping, const Map &pairs) {
    const auto found = mapping.find(byte);
    if (found == mapping.end()) return 0x0C00 + byte;
    if (found->second == 0xA6) return '|';
    if (found->second == 0xAD) return '-';
    const auto pair = pairs.find(found->second);
    return pair != pairs.end() ? pair->second : 0x0C00 + byte;
}

} // namespace

std::vector<std::vector<std::string>> read_rows(const std::string &name) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(KXSTR_DATA_DIR "/" + name);
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line.substr(0, line.find('#')));
        std::vector<std::string> row;
        for (std::string field; fields >> field;)
            row.push_back(field);
        if (!row.empty()) rows.push_back(row);
    }
    return rows;
}

std::vector<std::vector<std::string>> read_barred_rows(const std::string &name) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(KXSTR_DATA_DIR "/" + name, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> row(1);
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line.compare(i, 3, " | ") == 0) {
                row.emplace_back();
                i += 2;
            } else if (line[i] != '\\') {
                row.back() += line[i];
            } else if (line[++i] == 'x') {
                row.back() += static_cast<char>(hex(line.substr(i + 1, 2)));
                i += 2;
            } else {
                row.back() += line[i] == 'n' ? '\n' : line[i] == 'r' ? '\r' : line[i] == 't' ? '\t' : line[i];
            }
        }
        rows.push_back(row);
    }
    return rows;
}

Map unicode_to_kx() {
    return read_map("charset/unicode_to_kx.txt");
}

Map kx_to_unicode() {
    return read_map("charset/kxset.txt");
}

std::vector<Page> pages() {
    const Map pairs = unicode_to_kx();
    std::vector<Page> all;
    for (const auto &row : read_rows("codepages/index.txt")) {
        Page page{static_cast<unsigned>(std::stoul(row.at(0))), {}, {}, {}};
        if (row.at(2) != "-") {
            page.low = read_map("codepages/low_common.txt");
            for (const auto &[byte, kx] : read_map("codepages/low_" + row.at(2) + ".txt"))
                page.low[byte] = kx;
        }
        const Map mapping = read_map("mappings/" + row.at(5) + ".txt");
        for (unsigned byte = hex(row.at(3)); byte <= hex(row.at(4)); ++byte)
            page.high[byte] = byte == 0x7F && !page.low.empty() ? 0x050C : by_rule(byte, mapping, pairs);
        for (const auto &[byte, kx] : read_map("codepages/" + row.at(0) + ".txt"))
            page.high[byte] = kx;
        for (const Map *table : {&page.low, &page.high})
            for (const auto &[byte, kx] : *table)
                if (kx >> 8 != 0 && kx >> 8 != 12) page.reverse[kx] = byte; // ascending: the higher byte wins
        all.push_back(page);
    }
    return all;
}

} // namespace kxstr::reference
