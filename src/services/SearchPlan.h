#pragma once

#include <cstdint>

namespace salvor {

class ScanState;

/// The bytes that the carvers of a scan with this data-type code will search: the size of each
/// database as often as a carver goes through it. Needs the source and the device's version alone.
std::uint64_t bytesToSearch(const ScanState& state, std::int32_t dataType);

}  // namespace salvor
