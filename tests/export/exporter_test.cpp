#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "export/ExportCommands.h"
#include "scan/Categories.h"
#include "tests/export/TempFolder.h"
#include "tests/support/CopiedFiles.h"

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

    /// A row whose texts are the names of their fields, whose numbers are 7, and which is not
    /// ticked.
    template <class Row>
    static Row& addFilled(List<Row>& list) {
        Row& row = add(list);
        forEachField(row, [](const std::string& name, auto& value) {
            using Value = std::remove_cvref_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, Text>) value = name;
            if constexpr (std::is_same_v<Value, std::int32_t>) value = name == "isChecked" ? 0 : 7;
        });
        return row;
    }

    /// A row in every list that an export reads, and an empty one in those of deleted rows.
    void fillEverything() {
        for (const CategoryFacts& category : categories()) {
            if (category.category == Category::Photos) continue;
            const RowKind& kind = category.kinds.front();
            withList(state_, kind.live, [](auto& rows) { addFilled(rows); });
            withList(state_, kind.deleted, [](auto& rows) { add(rows); });
        }
        state_.SMSContent[0]->LocalTime = "2013-06-30 13:05:09";
        state_.ContactContent[0]->CreatedDate = "2013-06-30 00:05:09";
        state_.ContactContent[0]->ModifiedDate = " ";
        state_.CallLogContent[0]->LocalTime = "2013-06-30 13:05:09";
        state_.NotesContent[0]->CreatedDate = "2013-06-30 12:05 PM";
        state_.CalendarContent[0]->StartDate = "2013-06-30 00:00:00";
        state_.WhatsAppContent[0]->MessageDate = "2013-06-30 23:05:09";
        state_.WhatsAppContent[0]->PhoneNo.reset();
        state_.InternetContent[0]->LastVisitedDate = "2013-06-30 01:05:09";
        addFilled(state_.MapContent);
        addFilled(state_.AccountContent);
        addFilled(state_.ApplicationContent);
        addFilled(state_.UserDictContent);
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

TEST_F(Exports, EveryCategoryHasItsColumnsAndDeletedRowsBehindTheLiveOnes) {
    fillEverything();
    const auto summary = exportAll(state_, target_.path(), ".csv", now);
    EXPECT_EQ(summary.folder, target_ / "Ann's Phone - 2013-06-30 05.00 PM");
    EXPECT_TRUE(summary.failed.empty());
    const std::pair<const char*, const char*> cases[] = {
        {"SMS.csv", "1,2013/06/30 01:05 PM,Message,Type,Address\n2,,,,\n"},
        {"Addressbook.csv",
         "1,2013/06/30 12:05 AM,FirstName,MiddleName,LastName,NickName,DisplayName,ContactNo1,"
         "ContactNo2,ContactNo3,ContactNo4,ContactNo5,ContactNo6,EmailAddress1,EmailAddress2,"
         "EmailAddress3,JobTitle,Department,Organization,\n2,,,,,,,,,,,,,,,,,,,\n"},
        {"Call history.csv",
         "1,ContactName,2013-06-30 13:05:09,Address,CallType,7(Secs)\n2,,,,,0(Secs)\n"},
        {"Notes.csv", "1,2013/06/30 12:05 PM,Title,Summary\n2,,,\n"},
        {"Calendar.csv",
         "1,Summary,Description,2013/06/30 12:00 AM,Start_TimeZone,EndDate,AllDay,OrginalDate,"
         "Priority\n2,,,,,,,,\n"},
        {"WhatsApp.csv", "1,2013/06/30 11:05 PM,zText,,ContactName\n2,,,,\n"},
        {"Internet history.csv", "7,Url,2013/06/30 01:05 AM,Title,7\n"},
        {"Map.csv", "7,Query,Location,Latitude,Longitude\n"},
        {"Apps.csv", "7,ApplicationName,BundleIdentifer,BundleVersion\n"},
        {"User dictionary.csv", "7,UserKey\n"},
    };
    for (const auto& [name, content] : cases) EXPECT_EQ(contentOf(summary.folder / name), content);
    EXPECT_EQ(summary.written.size(), std::size(cases) + 1);  // the device's file as well
    EXPECT_EQ(namesIn(summary.folder).size(), std::size(cases) + 1);
    EXPECT_EQ(Exporter::defaultExporter("x").ExportFileLocation(), "x");

    // No export writes the accounts.
    const auto accounts = target_ / "accounts";
    Exporter::defaultExporter("x").ExportAccountData(state_, accounts, true);
    EXPECT_EQ(contentOf(accounts), "7,Username,ClassName,Hostname,PortNumber\n");
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

TEST_F(Exports, SomeCategoriesAreLeftOutOfATickedExportOrIgnoreTheTicks) {
    fillEverything();
    state_.WhatsAppContent[0]->isChecked = 1;
    state_.InternetContent[0]->isChecked = 1;
    const auto summary = exportTicked(state_, target_.path(), "", now);
    EXPECT_THAT(namesIn(summary.folder), ElementsAre("Internet history"));
    EXPECT_TRUE(summary.failed.empty());
    EXPECT_THAT(summary.omitted, ElementsAre("WhatsApp"));

    fs::remove_all(summary.folder);
    auto& exporter = Exporter::defaultExporter(target_.path());
    EXPECT_TRUE(exporter.ExportMapHistory(state_, target_ / "m", true));
    EXPECT_TRUE(exporter.ExportApplicationData(state_, target_ / "a", true));
    EXPECT_TRUE(exporter.KeyboardDictionary(state_, target_ / "d", true));
    EXPECT_FALSE(exporter.ExportSMS(state_, target_ / "s", true));
    EXPECT_FALSE(exporter.ExportDeleted(state_, target_ / "x", false));
    EXPECT_THAT(namesIn(target_.path()), UnorderedElementsAre("m", "a", "d"));
}

TEST_F(Exports, FoldersAreNamedByDeviceOrBackupAndNeverReused) {
    const std::tuple<Text, const char*, const char*> cases[] = {
        {"A/B", "", "A_B - 2013-06-30 05.00 PM"},
        {"A/B", "", "A_B - 2013-06-30 05.00 PM (2)"},
        {"A/B", "", "A_B - 2013-06-30 05.00 PM (3)"},
        {std::nullopt, "/backups/0123", "0123 - 2013-06-30 05.00 PM"},
        {std::nullopt, "/backups/4567/", "4567 - 2013-06-30 05.00 PM"},
        {std::nullopt, "", "Device - 2013-06-30 05.00 PM"},
    };
    for (const auto& [name, backup, folder] : cases) {
        state_.deviceInfo.DeviceName = name;
        state_.BACKUP_DIRECTORY = backup;
        const auto summary = exportAll(state_, target_ / "new/folder", ".csv", now);
        EXPECT_EQ(summary.folder.filename(), folder);
        EXPECT_EQ(namesIn(summary.folder).size(), 1U) << "the device's file";
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

TEST_F(Exports, PicturesAndVideosAreCopied) {
    std::ofstream(target_ / "one") << "1";
    std::ofstream(target_ / "two") << "2";
    const timespec times[] = {{1, 0}, {1'234'567'890, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (target_ / "one").c_str(), times, 0), 0);
    const auto list = [&](auto& media, const char* name, const char* source, int checked) {
        auto& item = add(media);
        item.Name = name;
        item.Location = (target_ / source).string();
        item.isChecked = checked;
    };
    list(state_.Photos, "a.jpg", "one", 1);
    list(state_.Photos, "a.jpg", "two", 0);
    list(state_.Photos, "../b.jpg", "one", 1);
    list(state_.Photos, "c.jpg", "missing", 1);
    list(state_.Photos, "folder.jpg", ".", 0);
    list(state_.Photos, "a (2).jpg", "one", 0);
    // One that only its backup can hand out.
    const TempFolder copies;
    state_.setBackupFiles(std::make_shared<CopiedFiles>(copies.path()));
    list(state_.DeletedPhotos, "a.jpg", "", 1);
    state_.DeletedPhotos[0]->Location = "/encrypted/0123";
    // The photo library counts every video as deleted; the live ones come first.
    list(state_.DeletedVideos, "m.mov", "two", 0);
    list(state_.Videos, "m.mov", "one", 0);
    const auto all = exportAll(state_, target_.path(), ".csv", now);
    const std::pair<const char*, const char*> cases[] = {{"Photos/a.jpg", "1"},
                                                         {"Photos/a (2).jpg", "2"},
                                                         {"Photos/.._b.jpg", "1"},
                                                         {"Photos/a (2) (2).jpg", "1"},
                                                         {"Photos/a (3).jpg", "decrypted 0123"},
                                                         {"Videos/m.mov", "1"},
                                                         {"Videos/m (2).mov", "2"}};
    for (const auto& [name, content] : cases) {
        EXPECT_EQ(contentOf(all.folder / name), content) << name;
    }
    EXPECT_EQ(namesIn(all.folder / "Photos").size(), 5U);
    EXPECT_EQ(all.missingMedia, 1U);
    EXPECT_TRUE(all.whole);
    EXPECT_TRUE(all.failed.empty());
    ASSERT_EQ(all.unreadable.size(), 1U);
    EXPECT_EQ(all.unreadable[0].path, all.folder / "Photos/folder.jpg");
    EXPECT_THAT(all.unreadable[0].cause, testing::StartsWith("cannot read "));
    struct stat info {};
    ASSERT_EQ(::stat((all.folder / "Photos/a.jpg").c_str(), &info), 0);
    EXPECT_EQ(info.st_mtim.tv_sec, 1'234'567'890);
    for (const auto& entry : fs::recursive_directory_iterator(all.folder))
        EXPECT_EQ(entry.status().permissions(),
                  entry.is_directory() ? fs::perms::owner_all
                                       : fs::perms::owner_read | fs::perms::owner_write)
            << entry.path();
    EXPECT_EQ(fs::status(all.folder).permissions(), fs::perms::owner_all);
    const auto ticked = exportTicked(state_, target_.path(), ".csv", now);
    EXPECT_THAT(namesIn(ticked.folder / "Photos"),
                UnorderedElementsAre("a.jpg", ".._b.jpg", "a (2).jpg"));
    EXPECT_FALSE(fs::exists(ticked.folder / "Videos"));
    EXPECT_TRUE(ticked.failed.empty());
}

TEST_F(Exports, ACancelLeavesWholeFilesAndAllOfThemAreTold) {
    fillEverything();
    for (const char* name : {"one.jpg", "two.jpg"}) {
        std::ofstream(target_ / name) << name;
        add(state_.Photos).Location = (target_ / name).string();
    }
    for (const auto& command : {exportAll, exportTicked}) {
        const bool all = command == exportAll;
        if (!all) {
            state_.SMSContent[0]->isChecked = state_.DeletedNotes[0]->isChecked = 1;
        }
        std::vector<std::size_t> steps;
        ExportProgress last;
        ExportWatch watch{.cancelled = {}, .progress = [&](const ExportProgress& step) {
                              steps.push_back(step.rowsDone + step.filesDone);
                              last = step;
                          }};
        const auto whole = command(state_, target_.path(), ".csv", now, watch);
        EXPECT_FALSE(whole.cancelled);
        EXPECT_EQ(steps.size(), all ? 18U : 4U);
        for (std::size_t i = 0; i < steps.size(); ++i) EXPECT_EQ(steps[i], i + 1);
        EXPECT_EQ(last.rowsDone, last.rowsTotal);
        EXPECT_EQ(last.filesDone, 2U);
        EXPECT_EQ(last.filesTotal, last.filesDone);
        for (std::size_t moment = 0; moment < steps.size(); ++moment) {
            std::stop_source stop;
            std::size_t left = moment;
            if (left == 0) stop.request_stop();
            watch = {.cancelled = stop.get_token(), .progress = [&](const ExportProgress&) {
                         if (--left == 0) stop.request_stop();
                     }};
            const auto part = command(state_, target_.path(), ".csv", now, watch);
            EXPECT_TRUE(part.cancelled) << moment;
            EXPECT_TRUE(part.failed.empty());
            EXPECT_FALSE(part.whole);
            EXPECT_EQ(part.folder.extension(), ".part") << "of a whole export it has the name";
            std::size_t files = 0;
            for (const auto& entry : fs::recursive_directory_iterator(part.folder)) {
                if (!entry.is_regular_file()) continue;
                ++files;
                const auto name = fs::relative(entry.path(), part.folder);
                EXPECT_EQ(contentOf(entry.path()), contentOf(whole.folder / name)) << name;
            }
            EXPECT_EQ(part.written.size(), files) << moment;
            EXPECT_LT(files, whole.written.size());
        }
    }
}

TEST_F(Exports, WhatCannotBeWrittenIsReported) {
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

    // Pictures that have no room, here since one is a hole of 8 TB, are not begun with.
    std::ofstream(target_ / "huge");
    fs::resize_file(target_ / "huge", std::uintmax_t{1} << 43);
    add(state_.Photos).Location = (target_ / "huge").string();
    const auto partial = exportAll(state_, target_ / "out", ".csv", now);
    EXPECT_FALSE(partial.whole);
    ASSERT_EQ(partial.failed.size(), 1U);
    EXPECT_THAT(partial.failed[0].cause,
                testing::HasSubstr("needs 8.8 TB (8796093022208 bytes), "));
    EXPECT_FALSE(fs::exists(partial.folder / "Photos"));
    EXPECT_TRUE(fs::exists(partial.folder / "SMS.csv"));
    EXPECT_THAT(namesIn(target_ / "out"), ElementsAre("Ann's Phone - 2013-06-30 05.00 PM.part"));

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
