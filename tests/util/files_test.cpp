#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "util/FileUtils.h"
#include "util/MappedFile.h"
#include "util/PathRules.h"
#include "util/ReadableFile.h"
#include "util/dataUtils.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    TempFolder folder_;
};

TEST_F(Files, SizeCountsRegularFilesOnly) {
    fs::create_directories(folder_ / "sub/deep");
    writeWholeFile(folder_ / "a", std::string(700, 'x'));
    writeWholeFile(folder_ / "sub/deep/b", std::string(800, 'x'));
    fs::create_directory_symlink(folder_.path(), folder_ / "sub/loop");
    fs::create_symlink(folder_ / "a", folder_ / "link");
    EXPECT_EQ(FileUtils::directorySize(folder_.path()), 1500U);
    EXPECT_EQ(FileUtils::getDirectorySizeAsStringfromPath(folder_.path()), "1.5 KB");
    EXPECT_EQ(FileUtils::getDirectorySizeAsStringfromPath(folder_ / "missing"), "0 bytes");
}

TEST_F(Files, SizesAreWrittenForPeople) {
    const std::pair<std::uint64_t, const char*> cases[] = {
        {1, "1 byte"},      {999, "999 bytes"},
        {1000, "1.0 KB"},   {1234567, "1.2 MB"},
        {999950, "1.0 MB"}, {std::numeric_limits<std::uint64_t>::max(), "18.4 EB"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(FileUtils::sizeText(bytes), text);
}

TEST_F(Files, AtomicWritesReplaceWholeFilesAndLeaveNothingAside) {
    writeWholeFile(folder_ / "old", "previous");
    fs::create_symlink(folder_ / "old", folder_ / "link");
    EXPECT_EQ(FileUtils::writeAtomically(folder_ / "new", "fresh"), "");
    EXPECT_EQ(FileUtils::writeAtomically(folder_ / "link", "next"), "");
    EXPECT_EQ(readWholeFile(folder_ / "new"), "fresh");
    EXPECT_EQ(readWholeFile(folder_ / "old"), "next");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_NE(FileUtils::writeAtomically(folder_ / "missing/file", "x"), "");
    EXPECT_NE(FileUtils::writeAtomically(folder_.path(), "x"), "");
    EXPECT_EQ(FileUtils::writeAtomically("/dev/null", "x"), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_NE(FileUtils::writeAtomically("/dev/full", "x"), "");
    std::stop_source stop;
    stop.request_stop();
    const auto whole = [](std::ostream& out) { return bool(out << 'x'); };
    EXPECT_EQ(FileUtils::writeAtomically(folder_ / "old", whole, stop.get_token()),
              std::generic_category().message(ECANCELED));
    const auto givenUp = [](std::ostream& out) { return !(out << std::string(100'000, 'x')); };
    EXPECT_NE(FileUtils::writeAtomically(folder_ / "old", givenUp), "");
    const auto thrown = [](std::ostream&) -> bool { throw std::bad_alloc(); };
    EXPECT_THROW(FileUtils::writeAtomically(folder_ / "old", thrown), std::bad_alloc);
    EXPECT_EQ(readWholeFile(folder_ / "old"), "next");
    EXPECT_EQ(FileUtils::entriesOf(folder_.path()).size(), 3U);
}

TEST_F(Files, NamesAreSafe) {
    const std::pair<std::string, const char*> cases[] = {{"", "_"},
                                                         {".", "_"},
                                                         {"..", "__"},
                                                         {"...", "..."},
                                                         {"../../etc", ".._.._etc"},
                                                         {std::string("a\0\n\x7F", 4), "a___"},
                                                         {"a\u0085b", "a_b"},
                                                         {"\u00E9\u00A0", "\u00E9\u00A0"}};
    for (const auto& [name, safe] : cases) EXPECT_EQ(FileUtils::safeFileName(name), safe);
    EXPECT_EQ(FileUtils::safeFileName("ab\u20AC", 4), "ab");
}

TEST(dataUtils, ReadsBigEndianInsideTheBufferOnly) {
    const std::uint8_t bytes[] = {0xFF, 0xFE, 0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18};
    const Bytes data(bytes);
    EXPECT_EQ(dataUtils::convertToint16(data, 0), -2);
    EXPECT_EQ(dataUtils::convertToint16(data, 8), 0x2D18);
    EXPECT_FALSE(dataUtils::convertToint16(data, 9));
    EXPECT_FALSE(dataUtils::convertToint16(data, std::numeric_limits<std::size_t>::max()));
    EXPECT_EQ(dataUtils::getByte(data, 9), 0x18);
    EXPECT_FALSE(dataUtils::getByte(data, 10));
    EXPECT_DOUBLE_EQ(*dataUtils::ConvertNSDataToDouble(data.subspan(2)), 3.141592653589793);
    EXPECT_FALSE(dataUtils::ConvertNSDataToDouble(data.first(7)));
    EXPECT_EQ(dataUtils::indexOfCharinData(data, 0x40), 2);
    EXPECT_EQ(dataUtils::indexOfCharinData(data, 0), -1);
    EXPECT_EQ(dataUtils::indexOfCharinData({}, 0), -1);
}

// The kernel makes these files up as they are read and calls them empty: nothing it copies itself.
TEST_F(Files, AreCopiedThroughMemoryWhereTheKernelCannot) {
    std::ifstream original("/proc/version");
    const std::string text{std::istreambuf_iterator<char>(original), {}};
    ASSERT_FALSE(text.empty());
    const auto file = ReadableFile::open("/proc/version");
    ASSERT_TRUE(file);
    using enum FileCopy::End;
    EXPECT_TRUE(file->copyTo(folder_ / "copy"));
    EXPECT_EQ(readWholeFile(folder_ / "copy"), text);
    EXPECT_EQ(file->copyTo(folder_ / "copy").end, Unwritten) << "it is there already";
    EXPECT_EQ(file->copyTo(folder_ / "other", {{}, [] { return true; }}).end, Cancelled);
    const auto memory = ReadableFile::open("/proc/self/mem");  // nothing lies at its beginning
    EXPECT_EQ(memory->copyTo(folder_ / "other").end, Unreadable);
    EXPECT_FALSE(fs::exists(folder_ / "other"));
}

TEST_F(Files, CopiesKeepTheDateAndAreTheOwnersAlone) {
    writeWholeFile(folder_ / "file", "x");
    const timespec times[] = {{1, 0}, {1'234'567'890, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / "file").c_str(), times, 0), 0);
    const auto file = ReadableFile::open(folder_ / "file");
    ASSERT_TRUE(file);
    const std::pair<std::optional<std::int64_t>, std::int64_t> cases[] = {
        {std::nullopt, 1'234'567'890}, {1'000'000'000, 1'000'000'000}};
    for (const auto& [date, expected] : cases) {
        fs::remove(folder_ / "copy");
        EXPECT_TRUE(file->copyTo(folder_ / "copy", {date, {}}));
        struct stat info {};
        ASSERT_EQ(::stat((folder_ / "copy").c_str(), &info), 0);
        EXPECT_EQ(info.st_mtim.tv_sec, expected);
        EXPECT_EQ(info.st_mode & 0777U, 0600U);
    }
}

TEST_F(Files, RoomIsToldInBothNumbers) {
    EXPECT_EQ(FileUtils::lackOfSpace(folder_.path(), 1), "");
    EXPECT_EQ(FileUtils::lackOfSpace(folder_ / "missing", 1), "");
    const auto lack = FileUtils::lackOfSpace(folder_.path(), 5'000'000'000'000'000'000U);
    EXPECT_TRUE(lack.starts_with("needs 5.0 EB (5000000000000000000 bytes), but there are "))
        << lack;
    EXPECT_EQ(FileUtils::makePrivateFolders(folder_ / "a/b"), 0);
    EXPECT_EQ(fs::status(folder_ / "a").permissions(), fs::perms::owner_all);
    writeWholeFile(folder_ / "file", "");
    EXPECT_EQ(FileUtils::makePrivateFolders(folder_ / "file/b"), ENOTDIR);
    EXPECT_EQ(FileUtils::makePrivateFolders(folder_ / "file"), ENOTDIR);
}

TEST_F(Files, MappedOnesReadAsZerosWhatIsLostMeanwhile) {
    constexpr std::size_t kSize = 64 * 1024;
    writeWholeFile(folder_ / "mapped", std::string(kSize, 'x'));
    const auto mapped = MappedFile::open(folder_ / "mapped");
    ASSERT_TRUE(mapped);
    fs::resize_file(folder_ / "mapped", 1);
    EXPECT_EQ(mapped->bytes().size(), kSize);
    EXPECT_EQ(mapped->bytes()[0], 'x');
    EXPECT_EQ(std::count(mapped->bytes().begin(), mapped->bytes().end(), 'x'), 1);
}

class PathRulesTest : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(folder_ / "backup/inner");
        fs::create_directories(folder_ / "backup2");
        fs::create_directories(folder_ / "out");
        fs::create_directory_symlink(folder_ / "backup", folder_ / "link");
        fs::create_directory_symlink(folder_ / "backup/not-yet", folder_ / "dangling");
        fs::create_directory_symlink("dangling", folder_ / "chain");
        fs::create_directory_symlink("loop", folder_ / "loop");
        fs::create_directory_symlink(folder_ / "backup/inner", folder_ / "out/in");
    }

    TempFolder folder_;
};

TEST_F(PathRulesTest, TellsWhatLiesInsideAFolder) {
    const auto expect = [this](bool inside, std::initializer_list<const char*> paths) {
        for (const char* path : paths) {
            EXPECT_EQ(liesInside(folder_ / path, folder_ / "backup"), inside) << path;
            EXPECT_EQ(liesInside(folder_ / path, folder_ / "link/"), inside) << path << " (link)";
        }
    };
    expect(true, {"backup", "backup/", "backup/inner", "backup/new/deeper", "backup/../backup/new",
                  "out/../backup/new"});
    expect(true, {"link", "link/new", "dangling", "dangling/deeper", "chain", "out/in/new"});
    expect(true, {"out/in/.."});  // the parent of where the link leads
    expect(false, {"backup2", "backup2/new", "backup/..", "backup/../out", "new", "loop", ""});
}

TEST_F(PathRulesTest, TakesRelativePathsFromTheCurrentFolder) {
    const auto before = fs::current_path();
    fs::current_path(folder_ / "backup");
    EXPECT_TRUE(liesInside("new", "."));
    EXPECT_FALSE(liesInside("../new", "."));
    fs::current_path(before);
}

}  // namespace
}  // namespace salvor
