#include "services/DcimService.h"

#include <algorithm>
#include <exception>
#include <system_error>

#include "backup/cameraroll/AssetFiles.h"
#include "backup/cameraroll/PhotoLibrary.h"
#include "scan/ListLock.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

enum Folder { CameraRoll, PhotoStream, AppPhotos, CameraRollVideos, PhotoStreamVideos, AppVideos };

}  // namespace

DcimService::DcimService(ScanState& state)
    : abstractServices(state, PhotosSqliteDbName),
      folders_{{"Camera Roll", false, false, {}},        {"Photo Stream", false, false, {}},
               {"App Photos", false, false, {}},         {"Camera Roll", true, false, {}},
               {"Photo Stream Videos", true, false, {}}, {"App Videos", true, false, {}}} {}

void DcimService::RecoverFromIOSBackup(const DeviceInfo& device) {
    for (const auto& photo : state_.Photos) photoLocations_.insert(photo->Location.value_or(""));
    processBothLibraries(device, false);
    if (state_.RecoverType != 0) return;
    const std::filesystem::path backup(state_.BACKUP_DIRECTORY);
    processOlderBackups(device, backup);
    processOlderBackups(device, backup.parent_path());
}

void DcimService::processBothLibraries(const DeviceInfo& device, bool DCIMAccess) {
    for (const char* name : {PhotosSqliteDbName, PhotosSqliteDbNameIOS456}) {
        SqliteDbName_ = name;
        ProcessDatabaseForDevice(device, DCIMAccess);
    }
}

void DcimService::processOlderBackups(const DeviceInfo& device, const std::filesystem::path& root) {
    if (!device.UniqueDeviceID || device.UniqueDeviceID->empty()) return;
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator it(root, error), end; !error && it != end;
         it.increment(error)) {
        entries.push_back(it->path());
    }
    std::sort(entries.begin(), entries.end());
    for (const auto& entry : entries) {
        if (cancelled_.stop_requested()) return;
        if (!entry.filename().string().starts_with(*device.UniqueDeviceID)) continue;
        if (std::filesystem::equivalent(
                entry, device.BackupLocation.value_or(state_.BACKUP_DIRECTORY), error))
            continue;
        DeviceInfo older;
        older.BackupLocation = entry.string();
        try {
            processBothLibraries(older, true);
        } catch (const std::exception& failure) {
            // One unreadable backup must not end the walk.
            state_.warn(entry.string() + ": " + failure.what());
        }
    }
}

void DcimService::ProcessDatabaseForDevice(const DeviceInfo& device, bool DCIMAccess) {
    const BackupFiles files(device.BackupLocation.value_or(state_.BACKUP_DIRECTORY));
    FMDBUtils database(files.path(SqliteDbName_).string(), state_.sourcePolicy, cancelled_);
    if (!database.openDatabase()) return;
    auto layout = GetPhotoDBFileType(database);
    if (layout == PhotoLibraryLayout::Unknown) layout = PhotoLibraryLayout::Plain;
    const AssetFiles assets(files, layout);
    readAssets(database, layout, [&](Dcmi row) {
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
    if (isDuplicatePhoto(asset)) return;
    (asset.Recovered ? state_.DeletedPhotos : state_.Photos).push_back(asset.convertToPhoto());
    ++(asset.Recovered ? state_.DeletedPhotosCount : state_.PhotosCount);
}

}  // namespace salvor
