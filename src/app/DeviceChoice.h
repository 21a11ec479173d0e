#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "app/DeviceSearch.h"

namespace salvor {

/// Why a device cannot be backed up.
enum class BackupObstacle {
    None,
    Cancelled,
    NoDaemon,       ///< no multiplexer daemon answers
    NotConnected,   ///< no device with this identifier is attached
    Unreachable,    ///< nor may be: one that is attached does not tell its identifier
    NoSession,      ///< it is locked, or does not trust this computer
    NamesNoFolder,  ///< its identifier cannot be the name of the backup's folder
};

struct DeviceChoice {
    BackupObstacle obstacle = BackupObstacle::None;
    std::string text;                  ///< the obstacle in words, and what to do about it
    std::shared_ptr<AMDevice> device;  ///< null with an obstacle
};

/// The attached device with this identifier, if it can be backed up. Waits for `devices` as
/// `searchDevices` does; asks the device.
DeviceChoice chooseForBackup(MobileDeviceAccess& devices, const std::string& udid,
                             const std::stop_token& ended = {});

/// Makes the folder below which backups are written; "" or why nothing can be written there. A
/// helper's own words about that would come late and vary.
std::string prepareBackupRoot(const std::filesystem::path& root);

/// What to tell when no daemon answers.
std::string noDaemonText();
/// What keeps devices from being read, a text for each, with what to do about it.
std::vector<std::string> deviceTroubles(
    const std::vector<DeviceSummary>& described,
    const std::vector<MobileDeviceAccess::Unreachable>& unreachable);

}  // namespace salvor
