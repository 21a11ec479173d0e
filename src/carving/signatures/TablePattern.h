#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace salvor {

/// Says which record property the value of a pattern column fills.
struct AttributesMapping {
    std::string Name;
    std::int64_t Column = 0;
    long line = 0;  ///< in the signatures file, from 1
};

/// A decoded header pattern: per column the allowed codes. A code of 0 or more is an exact serial
/// type, -1 any blob or text, -2 any non-empty one (or an empty text), -K a serial type above K.
using HeaderPattern = std::vector<std::vector<std::int32_t>>;

/// One header pattern of a table: for each column the serial types that it may have, for some
/// iOS versions.
class TablePattern {
  public:
    std::vector<std::string> SupportedVersions;
    std::string columns;
    std::string headerPattern;
    bool hasHeader = false;  ///< a pattern without a header element is skipped by the matcher
    std::vector<salvor::AttributesMapping> AttributesMapping;
    std::string value;

    /// Exact comparison with each supported version.
    bool CheckIfVersionSupported(const std::string& version) const;
    /// The header decoded anew from its text, so that threads may share a pattern; a carver
    /// decodes each of its patterns once.
    HeaderPattern Header() const;
    /// The first mapping of this column, or null.
    const salvor::AttributesMapping* mappingForColumn(std::int64_t column) const;
};

}  // namespace salvor
