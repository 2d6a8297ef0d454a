#include "registry/values.h"

namespace kxstr::registry {

std::uint32_t read_value(platform::KeyHandle key, const char *name, std::uint32_t &type,
                         std::vector<std::uint8_t> &data) {
    std::uint32_t size = 0;
    std::uint32_t status = platform::query_value(key, name, &type, nullptr, size);
    // Another process may make the value longer between two queries.
    for (int attempt = 0; attempt < 8 && (attempt == 0 ? status == platform::kSuccess : status == platform::kMoreData);
         ++attempt) {
        data.resize(size);
        std::uint8_t none = 0; // an empty vector has no address, and a query without one reads nothing
        status = platform::query_value(key, name, &type, data.empty() ? &none : data.data(), size);
    }
    data.resize(status == platform::kSuccess ? size : 0);
    return status;
}

} // namespace kxstr::registry
