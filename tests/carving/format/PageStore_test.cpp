// The log and the journal of databases that SQLite wrote, whole and damaged.
#include "carving/format/PageStore.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "tests/support/TempFolder.h"
#include "tools/sample/SqliteFile.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using Buffer = std::vector<std::uint8_t>;

Buffer readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    const std::string text = content.str();
    return {text.begin(), text.end()};
}

/// The files of a database whose table holds a text of a commit's own on page 2 after each of
/// `commits` commits, taken while the connection was open.
struct Files {
    Buffer main;
    Buffer beside;  ///< log or journal

    Files(const char* mode, const char* ending, int commits, int resetAfter = 0) {
        const TempFolder folder;
        const fs::path path = folder / "a.db";
        SqliteFile database(path, {1024, AutoVacuum::None});
        database.execute(std::string("PRAGMA journal_mode=") + mode);
        database.execute("CREATE TABLE t(a TEXT)");
        database.execute("INSERT INTO t VALUES('commit 0')");
        if (resetAfter != 0) database.execute("PRAGMA wal_checkpoint");
        for (int i = 1; i <= commits; ++i) {
            database.execute("UPDATE t SET a='commit " + std::to_string(i) + "'");
            if (i == resetAfter) database.execute("PRAGMA wal_checkpoint");
        }
        main = readFile(path);
        beside = readFile(path.string() + ending);
    }
};

std::string commitOn(Bytes page) {
    const std::string text(page.begin(), page.end());
    const auto at = text.rfind("commit ");
    return at == std::string::npos ? "" : text.substr(at, 8);
}

TEST(PageStore, ReadsTheNewestCommittedStateAndEveryOlderOne) {
    Files files("WAL", "-wal", 5);
    const auto store = PageStore::open({files.main, files.beside, {}});
    ASSERT_TRUE(store);
    EXPECT_EQ(store->wal().committed, store->wal().frames.size());
    EXPECT_EQ(commitOn(store->currentBytes(2)), "commit 5");
    std::string states;
    for (const PageImage& image : store->images())
        if (image.page == 2 && !image.current) states += commitOn(store->bytes(image)) + ' ';
    EXPECT_THAT(states, testing::EndsWith("commit 1 commit 2 commit 3 commit 4 "));
    const auto last = static_cast<std::uint32_t>(store->wal().frames.size());
    EXPECT_EQ(commitOn(store->bytes(store->asOfFrame(2, last - 2))), "commit 3");

    // A wrong byte in the third commit from the end: a reader stops before it, all stay readable.
    files.beside[store->wal().frames[last - 3].offset + 1000] ^= 1;
    const auto damaged = PageStore::open({files.main, files.beside, {}});
    EXPECT_EQ(damaged->wal().committed, last - 3u);
    EXPECT_EQ(commitOn(damaged->currentBytes(2)), "commit 2");
    EXPECT_EQ(damaged->wal().frames.size(), last);
}

TEST(PageStore, KeepsFramesOfAnEarlierGeneration) {
    const Files files("WAL", "-wal", 6, 4);
    const auto store = PageStore::open({files.main, files.beside, {}});
    ASSERT_TRUE(store);
    EXPECT_EQ(store->wal().generations, 2u);
    EXPECT_EQ(store->wal().committed, 2u);
    EXPECT_EQ(commitOn(store->currentBytes(2)), "commit 6");
    EXPECT_GT(store->wal().frames.size(), store->wal().committed);
}

TEST(PageStore, ReadsAJournalWhoseHeaderWasWiped) {
    Files files("PERSIST", "-journal", 3);
    const auto store = PageStore::open({files.main, {}, files.beside});
    ASSERT_TRUE(store);
    EXPECT_TRUE(store->journal().headerWiped);
    EXPECT_EQ(commitOn(store->bytes(store->beforeJournal(2))), "commit 2");
    EXPECT_EQ(commitOn(store->currentBytes(2)), "commit 3");
}

TEST(PageStore, EndsWithTheFilesAtEveryLength) {
    const Files files("WAL", "-wal", 2);
    std::size_t frames = SIZE_MAX;
    for (std::size_t size = files.beside.size() + 1; size-- > 0;) {
        const Bytes log = Bytes(files.beside).first(size);
        const auto store = PageStore::open({files.main, log, {}});
        ASSERT_TRUE(store);
        EXPECT_LE(store->wal().frames.size(), frames);
        frames = store->wal().frames.size();
    }
    EXPECT_EQ(frames, 0u);
    const Files plain("DELETE", "-none", 1);
    EXPECT_FALSE(PageStore::open({Bytes(plain.main).first(99), {}, {}}));
    const auto cut = PageStore::open({Bytes(plain.main).first(1500), {}, {}});
    EXPECT_EQ(cut->currentBytes(2).size(), 476u);
    EXPECT_TRUE(cut->currentBytes(3).empty());
}

}  // namespace
}  // namespace salvor
