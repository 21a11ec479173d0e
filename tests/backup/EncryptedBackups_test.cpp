#include <array>
#include <gmock/gmock.h>

#include "backup/BackupLock.h"
#include "backup/BackupSource.h"
#include "backup/FolderBackupFiles.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr auto kPath = "Library/SMS/sms.db";

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class BackupsWithAnIndex : public testing::Test {
  protected:
    fs::path write(const std::string& name, SampleOptions options) const {
        options.messages = 40;
        options.firstRounds = 50;
        SampleBackup::write(folder / name, options);
        return folder / name;
    }
    static std::shared_ptr<const BackupFiles> unlocked(const fs::path& backup) {
        const auto lock = lockOf(FolderBackupFiles(backup));
        const auto opened = unlock(lock.bag.value(), bytesOf("geheim"));
        return openBackup(backup, opened.keys);
    }

    const TempFolder folder;
};

TEST_F(BackupsWithAnIndex, HoldTheSameFilesWithAPasswordAsWithout) {
    for (const int ios : {5, 9, 10, 26}) {
        SCOPED_TRACE(ios);
        const auto plain = openBackup(write("p" + std::to_string(ios), {.ios = ios}));
        const auto backup =
            write("e" + std::to_string(ios), {.ios = ios, .password = std::string("geheim")});
        const auto before = hashTree(backup);
        fs::path copies;
        {
            const auto files = unlocked(backup);
            const auto& index = *files->index();
            std::size_t compared = 0;
            for (std::size_t i = 0; i < index.size(); ++i) {
                const auto entry = index.entry(i);
                if (entry.kind != EntryKind::File) continue;
                const std::string name(*entry.storedName);
                const auto expected = readWholeFile(plain->open(name).path);
                EXPECT_EQ(files->find(name).size, expected.size());
                const auto file = files->open(std::string(*entry.domain), std::string(*entry.path));
                ASSERT_TRUE(file) << *entry.path;
                EXPECT_EQ(file.path.filename(), name);
                EXPECT_TRUE(readWholeFile(file.path) == expected) << *entry.path;
                copies = file.path.parent_path().parent_path();
                EXPECT_EQ(fs::status(copies).permissions(), fs::perms::owner_all);
                ++compared;
            }
            EXPECT_GT(compared, 10U);
            const auto list = files->list();
            EXPECT_EQ(list->size(), compared);
            std::array<std::uint8_t, 16> head{};
            EXPECT_EQ(list->readHead(0, head).size, 16U);
        }
        EXPECT_EQ(hashTree(backup), before);
        EXPECT_FALSE(fs::exists(copies)) << copies;
    }
}

TEST_F(BackupsWithAnIndex, KeepLockedFilesApart) {
    const auto backup = write("e", {.ios = 14, .password = std::string("geheim")});
    const auto stored = sampleStoredName("HomeDomain", kPath);
    EXPECT_TRUE(unlocked(backup)->open(stored));
    fs::remove(backup / stored.substr(0, 2) / stored);
    EXPECT_EQ(unlocked(backup)->open(stored).state, FileState::Absent);
    writeWholeFile(backup / stored.substr(0, 2) / stored, "");
    EXPECT_EQ(unlocked(backup)->find(stored).size, 0U);
    // Without a single class key not even the index opens.
    const auto locked =
        openBackup(backup, std::make_shared<const BackupKeys>(std::map<std::uint32_t, Secret>()));
    EXPECT_NE(locked->index()->damage(), "");
    EXPECT_EQ(locked->find(stored).state, FileState::Locked);
    EXPECT_EQ(locked->open(stored).state, FileState::Locked);
}

TEST_F(BackupsWithAnIndex, AreReadWithTheLogOfTheIndex) {
    const auto backup = write("p", {.ios = 13});
    const auto copy = folder / "Manifest.db";
    fs::copy(backup / "Manifest.db", copy);
    {
        SqliteFile index(copy);
        index.execute("PRAGMA journal_mode=WAL");
        index.execute("PRAGMA wal_autocheckpoint=0");
        index.execute("INSERT INTO Files VALUES('00ff','HomeDomain','größe/only in the log',1,'')");
        for (const char* part : {"", "-wal"})
            fs::copy(copy.string() + part, backup / (std::string("Manifest.db") + part),
                     fs::copy_options::overwrite_existing);
    }
    const auto before = hashTree(backup);
    const auto files = openBackup(backup);
    // A name that does not follow from the place is found all the same.
    EXPECT_EQ(files->nameFor("HomeDomain", "größe/only in the log"), "00ff");
    EXPECT_EQ(files->nameFor("HomeDomain", kPath), sampleStoredName("HomeDomain", kPath));
    EXPECT_EQ(files->nameFor("HomeDomain", "nowhere"), sampleStoredName("HomeDomain", "nowhere"));
    EXPECT_EQ(files->index()->damage(), "");
    EXPECT_THAT(indexNotice(*files), HasSubstr("1 folders and 1 links; 1 of the files are not in"));
    EXPECT_EQ(hashTree(backup), before);
}

TEST_F(BackupsWithAnIndex, GoOnWithWhatADamagedIndexStillTells) {
    const auto backup = write("p", {.ios = 12});
    const auto whole = readWholeFile(backup / "Manifest.db");
    const auto all = openBackup(backup)->index()->size();
    std::size_t told = 0;
    for (std::size_t size = 0; size < whole.size(); size += 1024) {
        writeWholeFile(backup / "Manifest.db", whole.substr(0, size));
        const auto files = openBackup(backup);
        EXPECT_LE(files->index()->size(), all);
        told += files->index()->damage().empty() ? 0U : 1U;
        EXPECT_TRUE(files->open("HomeDomain", kPath)) << size;
    }
    EXPECT_GT(told, 10U);
    for (std::size_t at = 100; at < whole.size(); at += 37) {
        auto changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0x5a);
        writeWholeFile(backup / "Manifest.db", changed);
        const auto files = openBackup(backup);
        EXPECT_LE(files->index()->size(), whole.size() / 40);
        for (std::size_t i = 0; i < files->index()->size(); ++i) files->index()->details(i);
    }
}

}  // namespace
}  // namespace salvor
