#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// The device that a scan reads, as its backup or the device itself describes it. A fresh object
/// is the reset state: both versions 0, flags false, texts absent.
struct DeviceInfo {
    Text DeviceName;
    Text DisplayName;
    Text SerialNumber;
    Text ProductType;
    Text UniqueDeviceID;  ///< in lower case
    Text ProductVersion;  ///< such as "7.1.2"
    Text FirmwareVersion;
    Text PhoneNumber;
    Text IMSI;
    Text IMEI;
    Text ICICD;
    bool isEncrypted = false;       ///< meaningful only with `knownIfEncrypted`
    bool knownIfEncrypted = false;  ///< the manifest says whether the backup is encrypted
    bool Connected = false;         ///< read from a live device
    std::int32_t iOSMajorVersion = 0;
    std::int32_t iOSMinorVersion = 0;
    Text BackupLocation;
    Text AssignSize;  ///< size of the backup folder as text, "N/A" for a device
    Text BackupDate;
    Text backupSize;
    Text fullPath;  ///< path of a database taken straight from a device
    Text imgLock;

    static constexpr auto fields() {
        using D = DeviceInfo;
        return std::make_tuple(
            field("DeviceName", &D::DeviceName), field("DisplayName", &D::DisplayName),
            field("SerialNumber", &D::SerialNumber), field("ProductType", &D::ProductType),
            field("UniqueDeviceID", &D::UniqueDeviceID),
            field("ProductVersion", &D::ProductVersion),
            field("FirmwareVersion", &D::FirmwareVersion), field("PhoneNumber", &D::PhoneNumber),
            field("IMSI", &D::IMSI), field("IMEI", &D::IMEI), field("ICICD", &D::ICICD),
            field("isEncrypted", &D::isEncrypted), field("knownIfEncrypted", &D::knownIfEncrypted),
            field("Connected", &D::Connected), field("iOSMajorVersion", &D::iOSMajorVersion),
            field("iOSMinorVersion", &D::iOSMinorVersion),
            field("BackupLocation", &D::BackupLocation), field("AssignSize", &D::AssignSize),
            field("BackupDate", &D::BackupDate), field("backupSize", &D::backupSize),
            field("fullPath", &D::fullPath), field("imgLock", &D::imgLock));
    }
};

}  // namespace salvor
