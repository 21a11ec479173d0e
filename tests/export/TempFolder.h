#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/TempFolder.h"

namespace salvor {

inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return "(no file)";
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Appends a default row to a list and gives access to it.
template <class Row>
Row& add(std::vector<std::shared_ptr<Row>>& list) {
    list.push_back(std::make_shared<Row>());
    return *list.back();
}

}  // namespace salvor
