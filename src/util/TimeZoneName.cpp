#include "util/TimeZoneName.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace salvor {

std::string timeZoneName() {
    if (const char* set = std::getenv("TZ"); set != nullptr) {
        std::string_view name = set;
        if (name.starts_with(':')) name.remove_prefix(1);
        return name.empty() ? "UTC" : std::string(name);
    }
    constexpr std::string_view kZones = "/zoneinfo/";
    std::error_code failed;
    const std::string zone = std::filesystem::read_symlink("/etc/localtime", failed).string();
    const auto at = zone.find(kZones);
    if (!failed && at != std::string::npos) return zone.substr(at + kZones.size());
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    const bool known = ::localtime_r(&now, &parts) != nullptr && parts.tm_zone != nullptr;
    return known ? parts.tm_zone : "UTC";
}

}  // namespace salvor
