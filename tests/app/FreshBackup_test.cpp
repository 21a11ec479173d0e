#include "app/FreshBackup.h"

#include <gmock/gmock.h>

#include "tests/support/TempFolder.h"
#include "tools/sample/PropertyList.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

HelperResult ended(std::optional<int> status, std::optional<int> signal = {},
                   const char* usefulLine = "") {
    HelperResult result;
    result.exitStatus = status;
    result.signal = signal;
    result.usefulLine = usefulLine;
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
    const TempFolder whole;
    const TempFolder begun;
    PropertyListDictionary info;
    info.text("Device Name", "Phone").text("Product Version", "5.1").writeXml(whole / "Info.plist");
    for (const auto& [folder, state] : {std::pair(&whole, "finished"), {&begun, "uploading"}}) {
        PropertyListDictionary status;
        status.text("SnapshotState", state).writeXml(*folder / "Status.plist");
    }
    const fs::path none = there / "none";
    const struct {
        End end;
        HelperResult task;
        fs::path folder;
        bool cancelled;
        BackupVerdict verdict;
        const char* text;
        const char* unplugged = "";
    } cases[] = {
        {End::Complete, ended(0), there.path(), false, Whole, ""},
        {End::Complete, ended(255, {}, "No space"), there.path(), false, MaybeNotWhole,
         ": the backup may not be whole: its helper ended with status 255 (No space)"},
        {End::Complete, ended({}, 11), there.path(), false, MaybeNotWhole,
         "was ended by signal 11"},
        {End::Complete, ended(0, {}, "no room"), none, false, NothingWritten,
         ": no backup was written there: its helper ended with status 0 (no room)"},
        {End::Complete, ended(0), there.path(), true, Cancelled,
         ": cancelled after the backup was made"},
        {End::Complete, ended(3), there.path(), true, Cancelled,
         ": the backup was cancelled and is not"},
        {End::Refused, ended(1), there.path(), true, Cancelled,
         ": the backup was cancelled and is not"},
        {End::Cancelled, ended({}, 15), there.path(), false, Cancelled,
         "was cancelled and is not whole"},
        {End::Refused, ended(1, {}, "locked"), there.path(), false, Refused, "upto date. (locked)"},
        {End::NotStarted, notStarted(), none, false, NotStarted,
         "helper: No such file (it is in the package"},
        {End::MissingPropertyLists, ended(0), there.path(), false, MissingPropertyLists,
         "Not able to recover data. Do you want to continue anyway?"},
        {End::MissingPropertyLists, ended(0), whole.path(), false, Whole, "", "Phone"},
        {End::MissingPropertyLists, ended(48), none, false, Refused, "upto date."},
        {End::MissingPropertyLists, ended(255), whole.path(), false, MaybeNotWhole,
         ": the backup may not be whole: Phone was unplugged", "Phone"},
        {End::Complete, ended(255, {}, "cut"), none, false, NothingWritten,
         ": no backup was written there: Phone was unplugged (cut)", "Phone"},
        {End::Complete, ended(0), whole.path(), false, Whole, ""},
        {End::Complete, ended(0), begun.path(), false, MaybeNotWhole,
         "its Status.plist says \"uploading\""},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.text);
        const auto judged =
            judge({one.end, one.task, one.folder, one.unplugged}, BackupHelper(), one.cancelled);
        EXPECT_EQ(judged.verdict, one.verdict);
        EXPECT_THAT(judged.text, HasSubstr(one.text));
        EXPECT_EQ(judged.text.empty(), one.verdict == Whole);
        EXPECT_EQ(judged.isWhole(), one.verdict == Whole);
    }
}

}  // namespace
}  // namespace salvor
