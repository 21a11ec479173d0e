#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "backup/BackupStore.h"
#include "device/BackupHelper.h"
#include "device/HelperTask.h"

namespace salvor {

/// Where and by which program the fresh backup of a device is written.
struct FreshBackupSettings {
    std::filesystem::path root = BackupStore::standardLocation();
    BackupHelper helper;
};

/// What a person is asked while a fresh backup is made; false is "No" and "Cancel".
class FreshBackupQuestions {
  public:
    virtual ~FreshBackupQuestions() = default;
    /// The helper was refused, and said last what is in `helperSaid`; true tries again.
    virtual bool tryAgain(const std::string& text, const std::string& helperSaid) {
        (void)text;
        (void)helperSaid;
        return false;
    }
    virtual bool continueAnyway(const std::string& text) {
        (void)text;
        return false;
    }
};

inline constexpr auto kPasscodeQuestion =
    "Please Enter your passcode on the device and or check that iTunes is upto date.";

enum class FreshBackupEnd {
    Complete,              ///< the folder may be scanned; the helper's status tells how it went
    MissingPropertyLists,  ///< the device was not described, and the question was answered No
    Refused,               ///< the passcode question was answered with Cancel
    NotStarted,            ///< there is no such helper
    Cancelled,
};

struct FreshBackup {
    FreshBackupEnd end = FreshBackupEnd::Cancelled;
    HelperResult task;
    std::filesystem::path folder;
};

}  // namespace salvor
