#include "services/DcimService.h"

#include <exception>

#include "backup/BackupStore.h"
#include "backup/cameraroll/AssetFiles.h"
#include "backup/cameraroll/PhotoLibrary.h"
#include "scan/BackupDatabase.h"
#include "scan/ListLock.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

/// Tells what is wrong with the photo library of an older backup.
class OlderLibraryWatch : public DatabaseWatch {
  public:
    OlderLibraryWatch(ScanState& state, const DeviceInfo& device)
        : state_(state), folder_(device.BackupLocation.value_or("")) {}

    void readingEnded(const ReadingEnd& end) override {
        if (end.kind != ReadingEnd::Kind::Whole)
            state_.warn(folder_ + ": the photo library: " + end.reason);
    }

  private:
    ScanState& state_;
    const std::string folder_;
};

enum Folder { CameraRoll, PhotoStream, AppPhotos, CameraRollVideos, PhotoStreamVideos, AppVideos };

}  // namespace

DcimService::DcimService(ScanState& state)
    : abstractServices(state, PhotosSqliteDbName),
      folders_{{"Camera Roll", false, false, {}},        {"Photo Stream", false, false, {}},
               {"App Photos", false, false, {}},         {"Camera Roll", true, false, {}},
               {"Photo Stream Videos", true, false, {}}, {"App Videos", true, false, {}}} {}

void DcimService::RecoverFromIOSBackup(const DeviceInfo& device) {
    processBothLibraries(device, false);
    if (state_.RecoverType != 0) return;  // Kept: older-backups-after-device.
    processOlderBackups(device);
}

void DcimService::processBothLibraries(const DeviceInfo& device, bool DCIMAccess) {
    for (const char* name : {PhotosSqliteDbName, PhotosSqliteDbNameIOS456}) {
        SqliteDbName_ = name;
        ProcessDatabaseForDevice(device, DCIMAccess);
    }
}

void DcimService::processOlderBackups(const DeviceInfo& device) {
    if (!device.UniqueDeviceID || device.UniqueDeviceID->empty()) return;
    for (const auto& folder :
         BackupStore::olderBackups(state_.BACKUP_DIRECTORY, device.UniqueDeviceID.value_or(""))) {
        if (cancelled_.stop_requested()) return;
        DeviceInfo older;
        older.BackupLocation = folder.string();
        try {
            state_.addOtherBackup(filesOf(older));
            processBothLibraries(older, true);
        } catch (const std::exception& failure) {
            // One unreadable backup must not end the walk.
            state_.warn(folder.string() + ": " + failure.what());
        }
    }
}

void DcimService::ProcessDatabaseForDevice(const DeviceInfo& device, bool DCIMAccess) {
    const auto files = filesOf(device);
    const auto file = files->open(SqliteDbName_);
    if (file.state == FileState::Absent) return;
    // The files of an older backup are not those whose outcome the scan keeps.
    const auto library =
        files == state_.backupFiles()
            ? connection(file)
            : backupDatabase(state_, file, std::make_shared<OlderLibraryWatch>(state_, device),
                             cancelled_);
    if (!library->openDatabase()) return;
    auto layout = GetPhotoDBFileType(*library);
    if (layout == PhotoLibraryLayout::Unknown) layout = PhotoLibraryLayout::Plain;
    const AssetFiles assets(files, layout);
    readAssets(*library, layout, [&](Dcmi row) {
        auto asset = std::make_shared<Dcmi>(std::move(row));
        const bool video = IsKnownVideoFormat(asset->ZFilename);
        assets.locate(*asset, video);
        AddToFolderIfDoesNotExists(folderOf(*asset, video), asset, DCIMAccess);
        list(*asset, video);
        ++retrieved_;
    });
    state_.updateUIfoundRecoveredData();
}

DcmiFolder& DcimService::folderOf(const Dcmi& asset, bool video) {
    const bool cameraRoll = asset.ZDirecotry.starts_with("DCIM");
    if (video) return folders_[cameraRoll ? CameraRollVideos : PhotoStreamVideos];
    return folders_[cameraRoll ? CameraRoll : PhotoStream];
}

void DcimService::AddToFolderIfDoesNotExists(DcmiFolder& folder, const std::shared_ptr<Dcmi>& asset,
                                             bool deleted) {
    if (deleted) {
        asset->Recovered = true;
        folder.ContainsDeleted = true;
    }
    if (filed_.insert(folder.name + '\0' + asset->DcmiPath).second) folder.assets.push_back(asset);
}

bool DcimService::isDuplicatePhoto(const Dcmi& asset) {
    return !photoLocations_.insert(asset.DcmiPath).second;
}

void DcimService::list(const Dcmi& asset, bool video) {
    const ListLock lock(video ? state_.dcimLocked : state_.photosLocked);
    if (video) {
        (asset.Recovered ? state_.DeletedVideos : state_.Videos).push_back(asset.convertToVideo());
        ++(asset.Recovered ? state_.DeletedVideosCount : state_.VideosCount);
        return;
    }
    // Kept: photos-alone-compared.
    if (isDuplicatePhoto(asset)) return;
    (asset.Recovered ? state_.DeletedPhotos : state_.Photos).push_back(asset.convertToPhoto());
    ++(asset.Recovered ? state_.DeletedPhotosCount : state_.PhotosCount);
}

}  // namespace salvor
