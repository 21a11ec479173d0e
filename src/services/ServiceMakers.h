#pragma once

#include <functional>
#include <map>
#include <memory>

#include "scan/Category.h"
#include "services/abstractServices.h"

namespace salvor {

using ServiceMaker =
    std::function<std::unique_ptr<abstractServices>(ScanState& state, const DeviceInfo& device)>;
using ServiceMakers = std::map<ServiceIndex, ServiceMaker>;

/// How each service is made. A category that has no entry yields nothing.
const ServiceMakers& builtServices();

}  // namespace salvor
