#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "scan/ScanState.h"

namespace salvor {

/// A data category as people name it. Codes are those of a scan request; 0 stands for all.
struct Category {
    std::int32_t code;
    const char* word;   ///< in command lines and files, such as "calls"
    const char* title;  ///< in tables, such as "Calls"
};

/// The eight categories, by code.
std::span<const Category> categories();

/// The code of a category's word or of the code itself in digits; "all" is 0.
std::optional<std::int32_t> categoryCode(std::string_view wordOrCode);

struct CategoryCounts {
    Category category;
    std::size_t live = 0;
    std::size_t deleted = 0;
};

/// What stands in the lists of the categories that a scan with this code covers.
std::vector<CategoryCounts> countRecords(const ScanState& state, std::int32_t code);

}  // namespace salvor
