#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/SharedFlag.h"
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
    SharedFlag Connected;           ///< read from a live device; a removal clears it at any time
    std::int32_t iOSMajorVersion = 0;
    std::int32_t iOSMinorVersion = 0;
    Text BackupLocation;
    Text AssignSize;  ///< size of the backup folder as text, "N/A" for a device
    Text BackupDate;
    Text backupSize;
    Text fullPath;  ///< path of a database taken straight from a device
    Text imgLock;

    template <class Self = DeviceInfo>
    static constexpr auto fields() {
        return std::make_tuple(
            field("DeviceName", &Self::DeviceName), field("DisplayName", &Self::DisplayName),
            field("SerialNumber", &Self::SerialNumber), field("ProductType", &Self::ProductType),
            field("UniqueDeviceID", &Self::UniqueDeviceID),
            field("ProductVersion", &Self::ProductVersion),
            field("FirmwareVersion", &Self::FirmwareVersion),
            field("PhoneNumber", &Self::PhoneNumber), field("IMSI", &Self::IMSI),
            field("IMEI", &Self::IMEI), field("ICICD", &Self::ICICD),
            field("isEncrypted", &Self::isEncrypted),
            field("knownIfEncrypted", &Self::knownIfEncrypted),
            field("Connected", &Self::Connected), field("iOSMajorVersion", &Self::iOSMajorVersion),
            field("iOSMinorVersion", &Self::iOSMinorVersion),
            field("BackupLocation", &Self::BackupLocation), field("AssignSize", &Self::AssignSize),
            field("BackupDate", &Self::BackupDate), field("backupSize", &Self::backupSize),
            field("fullPath", &Self::fullPath), field("imgLock", &Self::imgLock));
    }
};

}  // namespace salvor
