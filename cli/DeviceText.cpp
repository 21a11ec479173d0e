#include "cli/DeviceText.h"

#include <type_traits>

namespace salvor::cli {

Json deviceJson(const DeviceInfo& device) {
    Json object = Json::object();
    forEachField(device, [&object](const char* name, const auto& value) {
        if constexpr (std::is_same_v<decltype(value), const Text&>)
            object[name] = value ? Json(*value) : Json(nullptr);
        else
            object[name] = value;
    });
    return object;
}

std::string encryptionText(const DeviceInfo& device) {
    if (!device.knownIfEncrypted) return "unknown";
    return device.isEncrypted ? "yes" : "no";
}

}  // namespace salvor::cli
