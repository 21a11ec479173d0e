#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "app/ScanJob.h"

namespace salvor {

/// 1234567 as "1,234,567".
std::string countText(std::uint64_t count);

/// How a scan with this code ended and what it found, in one sentence.
std::string summaryText(const ScanState& state, std::int32_t code, ScanResult result,
                        std::chrono::milliseconds elapsed);

/// Why a scan ran as iOS 0.0 and what its backup says of the version.
std::string versionNotice(const ScanOutcome& outcome);

}  // namespace salvor
