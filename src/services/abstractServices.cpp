#include "services/abstractServices.h"

#include <system_error>
#include <utility>

namespace salvor {

abstractServices::abstractServices(ScanState& state, std::string sqliteDbName)
    : state_(state), SqliteDbName_(std::move(sqliteDbName)) {}

abstractServices::~abstractServices() = default;

std::filesystem::path abstractServices::ConnectionFileFullPath(const DeviceInfo& device) const {
    if (device.fullPath && !device.fullPath->empty()) return *device.fullPath;
    return state_.backupFiles().path(SqliteDbName_);
}

std::filesystem::path abstractServices::ConnectionStringfromDevice(const DeviceInfo& device) const {
    return ConnectionFileFullPath(device);
}

std::optional<std::filesystem::path> abstractServices::ConnectionString(
    const DeviceInfo& device) const {
    auto path = ConnectionFileFullPath(device);
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return std::nullopt;
    return path;
}

}  // namespace salvor
