#pragma once

#include <functional>
#include <map>
#include <memory>

#include "services/abstractServices.h"

namespace salvor {

/// The services of a scan under the numbers by which the recovery driver asks for them.
enum class ServiceIndex : int {
    Messages = 0,
    CameraRoll = 1,
    Contacts = 2,
    CallHistory = 3,
    Calendars = 4,
    Notes = 5,
    InternetHistory = 6,
    WhatsApp = 7,
};

using ServiceMaker =
    std::function<std::unique_ptr<abstractServices>(ScanState& state, const DeviceInfo& device)>;
using ServiceMakers = std::map<ServiceIndex, ServiceMaker>;

/// How each service is made. A category that has no entry yields nothing.
const ServiceMakers& builtServices();

}  // namespace salvor
