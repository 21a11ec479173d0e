#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace salvor::reference {

struct PlainMapping {
    std::string name;
    std::int64_t column = 0;
};

/// A pattern as what it means, not as text: per column the allowed codes.
struct PlainPattern {
    std::vector<std::string> versions;
    bool hasHeader = true;
    std::vector<std::vector<std::int32_t>> columns;
    std::vector<PlainMapping> mappings;

    bool supports(const std::string& version) const {
        return std::find(versions.begin(), versions.end(), version) != versions.end();
    }
};

}  // namespace salvor::reference
