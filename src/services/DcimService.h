#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "backup/cameraroll/Dcmi.h"
#include "services/abstractServices.h"

namespace salvor {

/// The camera roll: lists the assets of the device's photo library with their stored files,
/// thumbnails and deleted marks, in named folders and in the scan's photo and video lists. After a
/// fresh backup of a device the older backups beside it are walked too.
class DcimService : public abstractServices {
  public:
    explicit DcimService(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    /// Reads the library of the current stored name; `DCIMAccess` marks every asset as deleted.
    void ProcessDatabaseForDevice(const DeviceInfo& device, bool DCIMAccess);

    const std::vector<DcmiFolder>& folders() const { return folders_; }

  private:
    void processBothLibraries(const DeviceInfo& device, bool DCIMAccess);
    void processOlderBackups(const DeviceInfo& device);
    /// Files one asset into its folder, unless its file is there already.
    void AddToFolderIfDoesNotExists(DcmiFolder& folder, const std::shared_ptr<Dcmi>& asset,
                                    bool deleted);
    DcmiFolder& folderOf(const Dcmi& asset, bool video);
    void list(const Dcmi& asset, bool video);
    bool isDuplicatePhoto(const Dcmi& asset);

    std::vector<DcmiFolder> folders_;
    std::unordered_set<std::string> filed_;
    std::unordered_set<std::string> photoLocations_;
};

}  // namespace salvor
