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
    NetworkOnly,    ///< it is, but not at a cable
    Unreachable,    ///< it does not answer, or one that does not tell its identifier may be it
    NoSession,      ///< it is locked, or does not trust this computer
    NamesNoFolder,  ///< its identifier cannot be the name of the backup's folder
};

struct DeviceChoice {
    BackupObstacle obstacle = BackupObstacle::None;
    std::string text;                  ///< the obstacle in words, and what to do about it
    std::shared_ptr<AMDevice> device;  ///< null with an obstacle
    /// What is to be known before the backup is made: the device encrypts its backups; or "".
    std::string notice;
};

/// The attached device with this identifier, if it can be backed up. Waits for it as
/// `searchDevices` does, for no other; asks the device.
DeviceChoice chooseForBackup(MobileDeviceAccess& devices, const std::string& udid,
                             const std::stop_token& ended = {});

/// Makes the folder below which backups are written; "" or why nothing can be written there. A
/// helper's own words about that would come late and vary.
std::string prepareBackupRoot(const std::filesystem::path& root);

/// What to tell when there is no list of devices: who does not answer, and what to do about it.
std::string daemonTrouble(AMDStatus status);
/// What keeps devices from being read, a text for each, with what to do about it.
std::vector<std::string> deviceTroubles(const std::vector<DeviceSummary>& described);
/// What to tell of the devices that are on the network alone.
std::vector<std::string> networkNotices(const DeviceSearch& search);

}  // namespace salvor
