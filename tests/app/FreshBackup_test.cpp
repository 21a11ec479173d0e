#include "app/FreshBackup.h"

#include <gmock/gmock.h>

#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

using testing::HasSubstr;

HelperResult ended(std::optional<int> status, std::optional<int> signal = {},
                   const char* lastError = "") {
    HelperResult result;
    result.exitStatus = status;
    result.signal = signal;
    result.lastError = lastError;
    return result;
}

HelperResult notStarted() {
    HelperResult result;
    result.startFailure = "helper: No such file";
    return result;
}

TEST(FreshBackups, AreJudgedByTheirEndTheirHelperAndWhatLiesThere) {
    using End = FreshBackupEnd;
    using enum BackupVerdict;
    const TempFolder there;
    const struct {
        End end;
        HelperResult task;
        bool written, cancelled;
        BackupVerdict verdict;
        const char* text;
    } cases[] = {
        {End::Complete, ended(0), true, false, Whole, ""},
        {End::Complete, ended(255, {}, "No space"), true, false, MaybeNotWhole,
         ": the backup may not be whole: its helper ended with status 255 (No space)"},
        {End::Complete, ended({}, 11), true, false, MaybeNotWhole, "was ended by signal 11"},
        {End::Complete, ended(0, {}, "no room"), false, false, NothingWritten,
         ": no backup was written there: its helper ended with status 0 (no room)"},
        {End::Complete, ended(0), true, true, Cancelled, ": cancelled after the backup was made"},
        {End::Complete, ended(3), true, true, Cancelled, ": the backup was cancelled and is not"},
        {End::Refused, ended(1), true, true, Cancelled, ": the backup was cancelled and is not"},
        {End::Cancelled, ended({}, 15), true, false, Cancelled, "was cancelled and is not whole"},
        {End::Refused, ended(1, {}, "locked"), true, false, Refused, "upto date. (locked)"},
        {End::NotStarted, notStarted(), false, false, NotStarted,
         "helper: No such file (it is in the package"},
        {End::MissingPropertyLists, ended(0), true, false, MissingPropertyLists,
         "Not able to recover data. Do you want to continue anyway?"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.text);
        const auto folder = one.written ? there.path() : there / "none";
        const auto judged = judge({one.end, one.task, folder}, BackupHelper(), one.cancelled);
        EXPECT_EQ(judged.verdict, one.verdict);
        EXPECT_THAT(judged.text, HasSubstr(one.text));
        EXPECT_EQ(judged.text.empty(), one.verdict == Whole);
        EXPECT_EQ(judged.canBeScanned(), one.verdict == Whole || one.verdict == MaybeNotWhole);
    }
}

}  // namespace
}  // namespace salvor
