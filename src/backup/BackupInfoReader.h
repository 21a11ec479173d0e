#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "records/DeviceInfo.h"
#include "scan/ScanState.h"
#include "util/Text.h"

namespace salvor {

/// What the property lists of a backup folder say of its device.
struct BackupInfo {
    DeviceInfo device;
    /// Whether a scan goes on without asking; false calls for the missing-property-list question.
    bool complete = false;
    std::uint64_t folderBytes = 0;
    /// Unix seconds; the latest date that the backup's own property lists give.
    std::optional<std::int64_t> madeAt;
};

/// Describes the device from Info.plist and Manifest.plist of `folder` (names found without regard
/// to case). A property list that cannot be read yields no values. Finds the folder's size, which
/// visits every file of it.
BackupInfo readBackupInfo(const std::filesystem::path& folder);

/// Fills `deviceInfo` (and `_deviceInfoBackup`) of `state` from its `backupFiles`; returns
/// `BackupInfo::complete`.
bool getInfoFromBackup(ScanState& state);

// The steps in which a description is made, for a source that is no folder.

/// A description that says nothing yet.
DeviceInfo resetDescription(const std::string& assignSize);
/// Takes from the manifest of a connected device's backup whether it is encrypted; a manifest with
/// a top-level version is not asked.
void readEncryptionOfDevice(DeviceInfo& device, const BackupFiles& files);
/// What follows once the values are read: letter case, version numbers, location, and
/// `_deviceInfoBackup`. Returns `BackupInfo::complete`.
bool finishDescription(ScanState& state);

/// Sets both version numbers from `ProductVersion`: "10.3.1" gives 10 and 3. A missing or
/// non-numeric part gives 0; a major of 0 leaves `iOSMajorVersion` as it was.
void splitProductVersion(DeviceInfo& device);

/// The versions that the property lists name, each absent or as written, and what the manifest
/// says of encryption whichever way the description was read.
struct VersionFacts {
    Text infoPlist;    ///< Info.plist, "Product Version"
    Text manifestTop;  ///< Manifest.plist, "ProductVersion"
    Text lockdown;     ///< Manifest.plist, "Lockdown", "ProductVersion"
    bool manifestSaysEncrypted = false;

    struct Told {
        Text version;             ///< absent when no list names one but 0.0
        const char* source = "";  ///< which list names it
    };
    /// The version that is told anywhere, the one of the manifest's top first.
    Told told() const;
    /// The version that `--ios auto` falls back on: Info.plist's, else Lockdown's, whichever is
    /// not 0.0 first; absent when there is none.
    Text best() const;
};

VersionFacts readVersionFacts(const std::filesystem::path& folder);

}  // namespace salvor
