#pragma once

#include <string>
#include <string_view>

namespace salvor {

/// The stored name of a logical location ("domain-path"): SHA-1 over as many of its UTF-8 bytes as
/// it has UTF-16 units, in lower-case hexadecimal. Kept: name-hash-prefix.
std::string storedName(std::string_view location);
std::string storedName(std::string_view domain, std::string_view path);

}  // namespace salvor
