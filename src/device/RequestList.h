#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace salvor {

/// What a request says: keys with their texts or numbers.
using RequestValues = std::vector<std::pair<const char*, std::variant<std::string, std::uint64_t>>>;

/// The request as an XML property list, behind `head` bytes that are left 0.
std::vector<std::uint8_t> requestBytes(const RequestValues& values, std::size_t head);

}  // namespace salvor
