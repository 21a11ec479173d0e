#pragma once

#include <memory>

#include "app/recovery/ServiceRunner.h"

namespace salvor {

class ScanState;

/// The category services of one scan over `state`, made for its device.
std::unique_ptr<ServiceRunner> makeServicesManagerRunner(ScanState& state);

}  // namespace salvor
