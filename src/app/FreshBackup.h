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
    /// The helper was refused, and said about it what is in `helperSaid`; true tries again.
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
    std::string unplugged = {};  ///< the device's name when it went while it was needed, or ""
};

/// What a person is told of a backup that has ended.
enum class BackupVerdict {
    Whole,
    MaybeNotWhole,         ///< there is a backup; its helper failed, or its status says so
    NothingWritten,        ///< its helper ended and left none
    Cancelled,             ///< or stopped after it was made
    NotStarted,            ///< `FreshBackupEnd::NotStarted`
    Refused,               ///< `FreshBackupEnd::Refused`
    MissingPropertyLists,  ///< `FreshBackupEnd::MissingPropertyLists`
};

struct BackupJudgement {
    BackupVerdict verdict = BackupVerdict::Whole;
    std::string text;  ///< names the folder and the cause; "" for a whole one

    bool isWhole() const { return verdict == BackupVerdict::Whole; }
};

/// Judges a backup made with `helper`; `cancelled` when the person wants to go no further whatever
/// came of it. A whole one whose device could not be described any more describes itself.
BackupJudgement judge(const FreshBackup& backup, const BackupHelper& helper, bool cancelled);

/// `text` with what the helper said in brackets, if it said anything.
std::string withUsefulLine(const std::string& text, const std::string& line);

}  // namespace salvor
