#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "app/state/ScanState.h"
#include "export/ExportCommands.h"
#include "tests/export/TempFolder.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class Exports : public testing::Test {
  protected:
    Exports() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        state_.deviceInfo.DeviceName = "Ann's Phone";
    }

    /// A row in every list that an export reads, with the field names as values.
    void fillEverything() {
        auto& sms = add(state_.SMSContent);
        sms.LocalTime = "2013-06-30 13:05:09";
        sms.Message = "hello, world";
        sms.Type = "Sent to";
        sms.Address = "+1";
        auto& contact = add(state_.ContactContent);
        contact.CreatedDate = "2013-06-30 00:05:09";
        contact.ModifiedDate = " ";
        contact.FirstName = "First";
        contact.MiddleName = "Middle";
        contact.LastName = "Last";
        contact.NickName = "Nick";
        contact.Nickname = "wrong";
        contact.DisplayName = "Display";
        contact.ContactNo1 = "1";
        contact.ContactNo6 = "6";
        contact.EmailAddress3 = "e3";
        contact.JobTitle = "Job";
        contact.Department = "Dep";
        contact.Organization = "Org";
        auto& call = add(state_.CallLogContent);
        call.ContactName = "Ann";
        call.LocalTime = "2013-06-30 13:05:09";
        call.Address = "+1";
        call.CallType = "FaceTime";
        call.CallDuration = 61;
        auto& note = add(state_.NotesContent);
        note.CreatedDate = "2013-06-30 12:05 PM";
        note.Title = "T";
        note.Summary = "S";
        auto& event = add(state_.CalendarContent);
        event.Summary = "S";
        event.Description = "D";
        event.StartDate = "2013-06-30 00:00:00";
        event.Start_TimeZone = "Z";
        event.EndDate = "some day";
        event.AllDay = "1";
        event.OrginalDate = "O";
        event.Priority = "P";
        auto& whatsApp = add(state_.WhatsAppContent);
        whatsApp.MessageDate = "2013-06-30 23:05:09";
        whatsApp.zText = "#hi";
        whatsApp.ContactName = "Ann";
        state_.InternetContent = {std::make_shared<InternetHistory>(
            InternetHistory{7, "u", "2013-06-30 01:05:09", "t", 3, 0})};
        state_.MapContent = {std::make_shared<MapHistory>(MapHistory{8, "q", "l", "1", "2"})};
        state_.AccountContent = {std::make_shared<Account>(Account{9, "u", "25", "c", "h"})};
        state_.ApplicationContent = {std::make_shared<Application>(Application{10, "a", "b", "v"})};
        state_.UserDictContent = {std::make_shared<UserDict>(UserDict{11, "word"})};
    }

    static std::vector<std::string> namesIn(const fs::path& folder) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    ScanState state_;
    const TempFolder target_;
    static constexpr Date now{394300800 + 3600};  // 2013-06-30 17:00:00 UTC
};

TEST_F(Exports, EveryCategoryHasItsColumns) {
    fillEverything();
    const auto summary = exportAll(state_, target_.path(), ".csv", now);
    EXPECT_EQ(summary.folder, target_ / "Ann's Phone - 2013-06-30 05.00 PM");
    EXPECT_TRUE(summary.failed.empty());
    const std::pair<const char*, const char*> cases[] = {
        {"SMS.csv", "1,2013/06/30 01:05 PM,\"hello, world\",Sent to,+1\n"},
        {"Addressbook.csv",
         "1,2013/06/30 12:05 AM,First,Middle,Last,Nick,Display,1,,,,,6,,,e3,Job,Dep,Org,\n"},
        {"Call history.csv", "1,Ann,2013-06-30 13:05:09,+1,FaceTime,61(Secs)\n"},
        {"Notes.csv", "1,2013/06/30 12:05 PM,T,S\n"},
        {"Calendar.csv", "1,S,D,2013/06/30 12:00 AM,Z,some day,1,O,P\n"},
        {"WhatsApp.csv", "1,2013/06/30 11:05 PM,\"#hi\",,Ann\n"},
        {"Internet history.csv", "7,u,2013/06/30 01:05 AM,t,3\n"},
        {"Map.csv", "8,q,l,1,2\n"},
        {"Apps.csv", "10,a,b,v\n"},
        {"User dictionary.csv", "11,word\n"},
    };
    for (const auto& [name, content] : cases) EXPECT_EQ(contentOf(summary.folder / name), content);
    EXPECT_EQ(summary.written.size(), std::size(cases) + 1);  // the device's file as well
    EXPECT_EQ(namesIn(summary.folder).size(), std::size(cases) + 1);
    EXPECT_EQ(Exporter::defaultExporter("x").ExportFileLocation(), "x");

    // No tag leads to the accounts.
    const auto accounts = target_ / "accounts";
    Exporter::defaultExporter("x").ExportAccountData(state_, accounts, true);
    EXPECT_EQ(contentOf(accounts), "9,u,c,h,25\n");
}

TEST_F(Exports, DeletedRowsFollowTheLiveOnesWhereACategoryIsCarved) {
    fillEverything();
    add(state_.DeletedSMS);
    add(state_.DeletedContact);
    add(state_.DeletedCallLog);
    add(state_.DeletedNotes);
    add(state_.DeletedCalendar);
    add(state_.DeletedWhatsApp);
    add(state_.DeletedInternet);
    const auto summary = exportAll(state_, target_.path(), "", now);
    for (const char* name :
         {"SMS", "Addressbook", "Call history", "Notes", "Calendar", "WhatsApp"}) {
        const std::string content = contentOf(summary.folder / name);
        EXPECT_THAT(content, testing::StartsWith("1,")) << name;
        EXPECT_THAT(content, testing::HasSubstr("\n2,,")) << name;
    }
    const std::string visits = contentOf(summary.folder / "Internet history");
    EXPECT_EQ(std::count(visits.begin(), visits.end(), '\n'), 1);
}

TEST_F(Exports, TickedRowsAreNumberedWithoutGaps) {
    for (int i = 0; i < 4; ++i) add(state_.SMSContent).Message = std::to_string(i);
    add(state_.DeletedSMS).Message = "deleted";
    state_.SMSContent[1]->isChecked = 1;
    state_.SMSContent[3]->isChecked = 1;
    state_.SMSContent[2]->isChecked = 2;
    state_.DeletedSMS[0]->isChecked = 1;
    add(state_.NotesContent);
    const auto summary = exportTicked(state_, target_.path(), ".txt", now);
    EXPECT_EQ(contentOf(summary.folder / "SMS.txt"), "1,,1,,\n2,,3,,\n3,,deleted,,\n");
    ASSERT_EQ(summary.written.size(), 1U);
    EXPECT_EQ(summary.written[0].rows, 3U);
    EXPECT_THAT(namesIn(summary.folder), ElementsAre("SMS.txt"));
}

TEST_F(Exports, TickedExportLeavesOutWhatItLeavesOut) {
    fillEverything();
    state_.WhatsAppContent[0]->isChecked = 1;
    state_.InternetContent[0]->isChecked = 1;
    const auto summary = exportTicked(state_, target_.path(), "", now);
    EXPECT_THAT(namesIn(summary.folder), ElementsAre("Internet history"));
    EXPECT_TRUE(summary.failed.empty());
    EXPECT_THAT(summary.omitted, ElementsAre("WhatsApp"));
}

TEST_F(Exports, UntickableCategoriesIgnoreTheFlag) {
    fillEverything();
    auto& exporter = Exporter::defaultExporter(target_.path());
    EXPECT_TRUE(exporter.ExportMapHistory(state_, target_ / "m", true));
    EXPECT_TRUE(exporter.ExportApplicationData(state_, target_ / "a", true));
    EXPECT_TRUE(exporter.KeyboardDictionary(state_, target_ / "d", true));
    EXPECT_FALSE(exporter.ExportSMS(state_, target_ / "s", true));
    EXPECT_FALSE(exporter.ExportDeleted(state_, target_ / "x", false));
    EXPECT_THAT(namesIn(target_.path()), UnorderedElementsAre("m", "a", "d"));
}

TEST_F(Exports, FoldersAreNeverReused) {
    for (const char* expected : {"A_B - 2013-06-30 05.00 PM", "A_B - 2013-06-30 05.00 PM (2)",
                                 "A_B - 2013-06-30 05.00 PM (3)"}) {
        state_.deviceInfo.DeviceName = "A/B";
        const auto summary = exportAll(state_, target_ / "new/folder", ".csv", now);
        EXPECT_EQ(summary.folder.filename(), expected);
        EXPECT_THAT(namesIn(summary.folder), ElementsAre("A_B_info.csv"));
    }
}

TEST_F(Exports, NamelessDevicesAreCalledLikeTheirBackup) {
    state_.deviceInfo.DeviceName.reset();
    const std::pair<const char*, const char*> cases[] = {
        {"/backups/0123", "0123 - "}, {"/backups/4567/", "4567 - "}, {"", "Device - "}};
    for (const auto& [backup, start] : cases) {
        state_.BACKUP_DIRECTORY = backup;
        const auto summary = exportAll(state_, target_.path(), ".csv", now);
        EXPECT_TRUE(summary.folder.filename().string().starts_with(start)) << summary.folder;
    }
}

TEST_F(Exports, DeviceFileHasALinePerField) {
    state_.deviceInfo.SerialNumber = "a,b";
    state_.deviceInfo.iOSMajorVersion = 7;
    state_.deviceInfo.knownIfEncrypted = true;
    const auto summary = exportAll(state_, target_.path(), ".tsv", now);
    const std::string content = contentOf(summary.folder / "Ann's Phone_info.csv");
    EXPECT_TRUE(
        content.starts_with("DeviceName,Ann's Phone\nDisplayName,\n"
                            "SerialNumber,\"a,b\"\n"))
        << content;
    EXPECT_THAT(content, testing::HasSubstr("\nisEncrypted,false\nknownIfEncrypted,true\n"));
    EXPECT_THAT(content, testing::HasSubstr("\niOSMajorVersion,7\n"));
}

TEST_F(Exports, PicturesAreCopied) {
    std::ofstream(target_ / "one") << "1";
    std::ofstream(target_ / "two") << "2";
    const auto photo = [&](List<Photo>& list, const char* name, const char* source, int checked) {
        list.push_back(std::make_shared<Photo>(Photo{name, (target_ / source).string(), checked}));
    };
    photo(state_.Photos, "a.jpg", "one", 1);
    photo(state_.Photos, "a.jpg", "two", 0);
    photo(state_.Photos, "../b.jpg", "one", 1);
    photo(state_.Photos, "c.jpg", "missing", 1);
    photo(state_.Photos, "folder.jpg", ".", 0);
    photo(state_.Photos, "a (2).jpg", "one", 0);
    photo(state_.DeletedPhotos, "a.jpg", "two", 1);
    const auto all = exportAll(state_, target_.path(), ".csv", now);
    const std::pair<const char*, const char*> cases[] = {{"a.jpg", "1"},
                                                         {"a (2).jpg", "2"},
                                                         {".._b.jpg", "1"},
                                                         {"a (2) (2).jpg", "1"},
                                                         {"a (3).jpg", "2"}};
    for (const auto& [name, content] : cases) {
        EXPECT_EQ(contentOf(all.folder / "Photos" / name), content) << name;
    }
    EXPECT_EQ(namesIn(all.folder / "Photos").size(), std::size(cases));
    EXPECT_EQ(all.missingMedia, 1U);
    ASSERT_EQ(all.failed.size(), 1U);
    EXPECT_EQ(all.failed[0].path, all.folder / "Photos/folder.jpg");
    EXPECT_NE(all.failed[0].cause, "");
    EXPECT_FALSE(fs::exists(all.folder / "Videos"));
    const auto ticked = exportTicked(state_, target_.path(), ".csv", now);
    EXPECT_THAT(namesIn(ticked.folder / "Photos"),
                UnorderedElementsAre("a.jpg", ".._b.jpg", "a (2).jpg"));
    EXPECT_TRUE(ticked.failed.empty());
}

// The photo library counts every video as deleted.
TEST_F(Exports, DeletedVideosAreCopiedBehindTheLiveOnes) {
    std::ofstream(target_ / "one") << "1";
    std::ofstream(target_ / "two") << "2";
    add(state_.DeletedVideos).Name = "m.mov";
    add(state_.Videos).Name = "m.mov";
    state_.DeletedVideos[0]->Location = (target_ / "two").string();
    state_.Videos[0]->Location = (target_ / "one").string();
    const auto all = exportAll(state_, target_.path(), ".csv", now);
    EXPECT_EQ(contentOf(all.folder / "Videos/m.mov"), "1");
    EXPECT_EQ(contentOf(all.folder / "Videos/m (2).mov"), "2");
}

TEST_F(Exports, AFileThatCannotBeWrittenIsReported) {
    fillEverything();
    const auto& exporter = Exporter::defaultExporter(target_.path());
    for (const fs::path& path : {target_ / "missing/file", target_.path(), fs::path("/dev/full")}) {
        const auto file = exporter.ExportSMS(state_, path, false);
        ASSERT_TRUE(file) << path;
        EXPECT_FALSE(file->written()) << path;
        EXPECT_EQ(file->path, path);
    }
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_TRUE(namesIn(target_.path()).empty());
}

TEST_F(Exports, HalfAFileIsRemoved) {
    add(state_.SMSContent).Message = std::string(1 << 20, 'x');
    ::rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    const ::rlimit small{1 << 16, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto summary = exportAll(state_, target_.path(), ".csv", now);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);
    ASSERT_EQ(summary.failed.size(), 1U);
    EXPECT_EQ(summary.failed[0].path, summary.folder / "SMS.csv");
    EXPECT_THAT(namesIn(summary.folder), ElementsAre("Ann's Phone_info.csv"));
}

TEST_F(Exports, ATargetThatIsNoFolderIsReported) {
    std::ofstream(target_ / "file") << "kept";
    const auto summary = exportAll(state_, target_ / "file", ".csv", now);
    EXPECT_TRUE(summary.folder.empty());
    ASSERT_EQ(summary.failed.size(), 1U);
    EXPECT_NE(summary.failed[0].cause, "");
    EXPECT_EQ(contentOf(target_ / "file"), "kept");
}

TEST(Exporter, FindsTheEndOfAZeroEndedText) {
    const std::uint8_t bytes[] = {'a', 0, 0, 'b'};
    const std::pair<std::size_t, std::size_t> cases[] = {{0, 2}, {1, 2}, {2, 3}, {3, 4}, {9, 4}};
    for (const auto& [start, end] : cases) {
        EXPECT_EQ(Exporter::GetTheLengthOfTheStringBytes(bytes, start), end) << start;
    }
}

}  // namespace
}  // namespace salvor
