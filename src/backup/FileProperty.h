#pragma once

#include <cstdint>
#include <string>

namespace salvor {

/// Where a file of a backup belongs on the device, and where the index tells of it.
struct FileProperty {
    std::int64_t StartOffset = 0;  ///< where the record starts in the index file
    std::string Domain;            ///< backup domain, such as "HomeDomain"
    std::string FileName;          ///< path inside the domain
};

}  // namespace salvor
