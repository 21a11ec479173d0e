#include "app/FreshBackup.h"

#include <fmt/format.h>

#include "app/SourceChoice.h"
#include "app/Sources.h"
#include "util/PropertyList.h"

namespace salvor {
namespace {

std::string causeOf(const FreshBackup& backup) {
    if (!backup.unplugged.empty()) return backup.unplugged + " was unplugged";
    return backup.task.signal
               ? fmt::format("its helper was ended by signal {}", *backup.task.signal)
               : fmt::format("its helper ended with status {}",
                             backup.task.exitStatus.value_or(-1));
}

/// What the device wrote beside the backup about how far it is, unless that is "finished"; or "".
std::string unfinishedState(const std::filesystem::path& folder) {
    const Text state = PropertyList::read(folder / "Status.plist").text("SnapshotState");
    return !state || *state == "finished" ? "" : std::string(*state);
}

BackupJudgement judgeFolder(const FreshBackup& backup) {
    const auto because = [&backup](const char* what, const std::string& cause) {
        return withUsefulLine(fmt::format("{}: {}: {}", backup.folder.string(), what, cause),
                              backup.task.usefulLine);
    };
    constexpr auto kNotWhole = "the backup may not be whole";
    if (!BackupStore::resolve(backup.folder))
        return {BackupVerdict::NothingWritten,
                because("no backup was written there", causeOf(backup))};
    if (backup.task.exitStatus != 0 || backup.task.cancelled)
        return {BackupVerdict::MaybeNotWhole, because(kNotWhole, causeOf(backup))};
    if (const auto state = unfinishedState(backup.folder); !state.empty())
        return {BackupVerdict::MaybeNotWhole,
                because(kNotWhole, fmt::format("its Status.plist says \"{}\"", state))};
    return {};
}

BackupJudgement refusal(const FreshBackup& backup) {
    return {BackupVerdict::Refused, withUsefulLine(kPasscodeQuestion, backup.task.usefulLine)};
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
            return refusal(backup);
        case FreshBackupEnd::MissingPropertyLists:
            if (wasRefused(backup.task)) return refusal(backup);
            if (backup.task.exitStatus != 0 || describeBackup(backup.folder).info.complete)
                return judgeFolder(backup);
            return {
                BackupVerdict::MissingPropertyLists,
                fmt::format("{}: {}", backup.folder.string(), kMissingPropertyListsAfterBackup)};
        case FreshBackupEnd::Complete:
            break;
    }
    return judgeFolder(backup);
}

std::string withUsefulLine(const std::string& text, const std::string& line) {
    return line.empty() ? text : fmt::format("{} ({})", text, line);
}

}  // namespace salvor
