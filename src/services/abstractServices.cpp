#include "services/abstractServices.h"

#include <utility>

#include "backup/BackupSource.h"
#include "scan/BackupDatabase.h"

namespace salvor {

abstractServices::abstractServices(ScanState& state, std::string sqliteDbName)
    : state_(state), SqliteDbName_(std::move(sqliteDbName)) {}

abstractServices::~abstractServices() = default;

BackupFile abstractServices::ConnectionFileFullPath(const DeviceInfo& device) const {
    if (!device.fullPath || device.fullPath->empty())
        return state_.backupFiles()->open(SqliteDbName_);
    return {BackupFiles::factsOf(*device.fullPath).state, *device.fullPath, nullptr};
}

BackupFile abstractServices::ConnectionStringfromDevice(const DeviceInfo& device) const {
    return ConnectionFileFullPath(device);
}

std::optional<BackupFile> abstractServices::ConnectionString(const DeviceInfo& device) const {
    auto file = ConnectionFileFullPath(device);
    return file ? std::optional(std::move(file)) : std::nullopt;
}

std::shared_ptr<const BackupFiles> abstractServices::filesOf(const DeviceInfo& device) const {
    const bool isSource =
        !device.BackupLocation || *device.BackupLocation == state_.BACKUP_DIRECTORY;
    return isSource ? state_.backupFiles() : openBackup(*device.BackupLocation);
}

std::shared_ptr<FMDBUtils> abstractServices::connection(BackupFile file) const {
    return backupDatabase(state_, std::move(file), cancelled_);
}

}  // namespace salvor
