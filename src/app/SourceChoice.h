#pragma once

#include <cstdint>
#include <string>

namespace salvor {

/// What a person asked to scan.
struct dataTypeHolder {
    std::int32_t dataType = 0;  ///< 0 everything, 1 messages, ... 8 calendar
    std::string BackupLocation;
};

/// How the choice of a source ended.
enum class SourceChoice {
    Ready,                 ///< the device is described, the scan may start
    MissingPropertyLists,  ///< the question has to be asked before the scan starts
    Unusable,              ///< no such folder, or not readable; nothing was changed
};

/// The question after a choice of source, and the one after a fresh backup. Kept: two-questions.
inline constexpr auto kMissingPropertyLists =
    "\"Info.plist\" or \"Manifest.plist\" is missing. Please check the backup file. Not able to "
    "recover data.Do you want to continue anyway?";
inline constexpr auto kMissingPropertyListsAfterBackup =
    "\"Info.plist\" or \"Manifest.plist\" is missing. Please check the backup file. Not able to "
    "recover data. Do you want to continue anyway?";

}  // namespace salvor
