#include "app/FreshBackup.h"

#include <fmt/format.h>

#include "app/SourceChoice.h"

namespace salvor {
namespace {

std::string helperEnd(const HelperResult& task) {
    return task.signal
               ? fmt::format("its helper was ended by signal {}", *task.signal)
               : fmt::format("its helper ended with status {}", task.exitStatus.value_or(-1));
}

BackupJudgement judgeFolder(const FreshBackup& backup) {
    const auto because = [&backup](const char* what) {
        return withLastLine(
            fmt::format("{}: {}: {}", backup.folder.string(), what, helperEnd(backup.task)),
            backup.task.lastError);
    };
    if (!BackupStore::resolve(backup.folder))
        return {BackupVerdict::NothingWritten, because("no backup was written there")};
    if (backup.task.exitStatus != 0 || backup.task.cancelled)
        return {BackupVerdict::MaybeNotWhole, because("the backup may not be whole")};
    return {};
}

BackupJudgement judgeCancelled(const FreshBackup& backup) {
    const bool whole = backup.task.exitStatus == 0 && !backup.task.cancelled;
    return {BackupVerdict::Cancelled,
            backup.folder.string() + (whole ? ": cancelled after the backup was made"
                                            : ": the backup was cancelled and is not whole")};
}

}  // namespace

BackupJudgement judge(const FreshBackup& backup, const BackupHelper& helper, bool cancelled) {
    switch (cancelled ? FreshBackupEnd::Cancelled : backup.end) {
        case FreshBackupEnd::Cancelled:
            return judgeCancelled(backup);
        case FreshBackupEnd::NotStarted: {
            const bool usual = helper.words == BackupHelper().words;
            return {BackupVerdict::NotStarted,
                    "the backup helper could not be started: " + backup.task.startFailure +
                        (usual ? " (it is in the package libimobiledevice-utils)" : "")};
        }
        case FreshBackupEnd::Refused:
            return {BackupVerdict::Refused, withLastLine(kPasscodeQuestion, backup.task.lastError)};
        case FreshBackupEnd::MissingPropertyLists:
            return {
                BackupVerdict::MissingPropertyLists,
                fmt::format("{}: {}", backup.folder.string(), kMissingPropertyListsAfterBackup)};
        case FreshBackupEnd::Complete:
            break;
    }
    return judgeFolder(backup);
}

std::string withLastLine(const std::string& text, const std::string& line) {
    return line.empty() ? text : fmt::format("{} ({})", text, line);
}

}  // namespace salvor
