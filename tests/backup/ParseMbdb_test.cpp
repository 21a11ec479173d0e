#include "backup/ParseMbdb.h"

#include <gmock/gmock.h>

#include "backup/FileKind.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/MbdbWriter.h"

namespace salvor {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::vector<MDFileInfo> parse(const std::string& index) {
    std::vector<MDFileInfo> records;
    ParseMbdb::visit(bytesOf(index), [&](MDFileInfo&& info) { records.push_back(info); });
    return records;
}

MbdbRecord record(const std::string& domain, const std::string& path) {
    MbdbRecord written;
    written.domain = domain;
    written.path = path;
    return written;
}

TEST(ParseMbdb, ReadsEveryField) {
    auto written = record("HomeDomain", "Library/SMS/sms.db");
    written.linkTarget = "elsewhere";
    written.digest = "\x01\x02\x00\x03"s;    // cut at its zero byte
    written.encryptionKey = "\xFF\xFEkey"s;  // no UTF-8
    written.inode = 0x1122334455667788;
    written.userId = 0xFFFFFFFE;
    written.groupId = 7;
    written.modified = 0xF0000001;
    written.statusChanged = 2;
    written.born = 3;
    written.size = (std::uint64_t{5} << 32) + 4096;
    written.protectionClass = 0xFB;
    written.properties = {{"name", "value"}, {"", "dropped"}, {"empty", ""}, {"name", "later"}};
    const auto records = parse(mbdbBytes({record("A", "b"), written}));

    ASSERT_EQ(records.size(), 2u);
    EXPECT_FALSE(records[0].dicProperties);
    EXPECT_EQ(records[0].StartOffset, 6);
    const MDFileInfo& read = records[1];
    EXPECT_EQ(read.intStartOffset, 6u + 5 * 2 + 2 + 40);
    EXPECT_THAT((std::vector{read.Domain, read.FileName, read.strlinkTarget, read.strDataHash,
                             read.strUnknown1, read.strHash}),
                ElementsAre("HomeDomain", "Library/SMS/sms.db", "elsewhere", "\x01\x02", "<null>",
                            "3d0d7e5fb2ce288813306e4d4636395e047a3d28"));
    EXPECT_THAT((std::vector{read.intMode, read.intUnknown2, read.intUnknown3, read.intUserID,
                             read.intGroupID, read.intmTime, read.intaTime, read.intcTime,
                             read.intflag, read.intNumberofProps}),
                ElementsAre(0100644u, 0x11223344u, 0x55667788u, 0xFFFFFFFEu, 7u, 0xF0000001u, 2u,
                            3u, 0xFBu, 4u));
    EXPECT_EQ(read.intfileLen, 4096u) << "sizes count modulo 2^32";
    EXPECT_THAT(*read.dicProperties,
                ElementsAre(std::pair("empty"s, ""s), std::pair("name"s, "later"s)));
    EXPECT_EQ(read.RecordType, RecordType::Database);
}

TEST(ParseMbdb, TellsNoIndexFromAnEmptyOne) {
    const TempFolder folder;
    const auto read = [&](const std::string& content) {
        writeWholeFile(folder / "index", content);
        return ParseMbdb::ProcessMbdbFile(folder / "index");
    };
    EXPECT_FALSE(ParseMbdb::ProcessMbdbFile(folder / "missing"));
    EXPECT_FALSE(ParseMbdb::ProcessMbdbFile(folder.path()));
    for (const auto& content : {""s, "mbd"s, "mbdx\5\0"s, "MBDB\5\0"s}) EXPECT_FALSE(read(content));
    for (const auto& content : {"mbdb"s, "mbdb\5"s, "mbdb\5\0"s}) {
        ASSERT_TRUE(read(content));
        EXPECT_TRUE(read(content)->empty());
    }
}

TEST(ParseMbdb, DropsTheRecordThatTheEndCutsShort) {
    auto withProperties = record("D", "some/file.plist");
    withProperties.properties = {{"a", "b"}};
    const std::vector<MbdbRecord> all{record("HomeDomain", "x.db"), withProperties,
                                      record("E", "")};
    std::vector<std::size_t> ends{6};
    for (std::size_t n = 1; n <= all.size(); ++n) {
        ends.push_back(mbdbBytes({all.begin(), all.begin() + static_cast<long>(n)}).size());
    }
    const std::string whole = mbdbBytes(all);
    for (std::size_t length = 6; length <= whole.size(); ++length) {
        std::size_t complete = 0;
        while (complete < all.size() && ends[complete + 1] <= length) ++complete;
        // A copy of its own, so that a read past the end is one past a heap block.
        const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<long>(length));
        EXPECT_EQ(parse(std::string(cut.begin(), cut.end())).size(), complete) << length;
    }
}

TEST(ParseMbdb, HashesAsManyBytesAsTheTextHasCharacters) {
    EXPECT_EQ(ParseMbdb::digest(""), sampleDigest(""));
    EXPECT_EQ(ParseMbdb::digest("AppDomain-a/b"), sampleDigest("AppDomain-a/b"));
    // 5 units in 6 bytes, and 4 units (one pair) in 6 bytes.
    EXPECT_EQ(ParseMbdb::digest("caf\xC3\xA9s"), sampleDigest("caf\xC3\xA9"));
    EXPECT_EQ(ParseMbdb::digest("a\xF0\x9F\x98\x80z"), sampleDigest("a\xF0\x9F\x98"));
}

TEST(ParseMbdb, ClassifiesFilesByTheTailOfTheirPaths) {
    using enum RecordType;
    const struct {
        const char *path, *extension;
        RecordType type;
    } cases[] = {
        {"", "", Other},
        {"sms.db", ".db", Database},
        {"a.Db", ".Db", Other},
        {"a.cd", ".cd", Database},
        // Deeper down ".cd" is not the whole text, and only the whole text counts.
        {"x/a.cd", "/a.cd", Other},
        {"Library/Notes/notes.sqlite", "ry/Notes/notes.sqlite", Database},
        {"Media/DCIM/100APPLE/IMG_0001.JPG", "IM/100APPLE/IMG_0001.JPG", Picture},
        {"clip .m o v", ".mov", AudioVideo},
        {"ring.m4a", ".m4a", AudioVideo},
        {"ring.M4A", ".M4A", Other},
        {"a.Plist", ".Plist", RecordType::PropertyList},
        {"a.tar.gz", ".gz", Other},
        {"b.sqlite.plist", ".plist", RecordType::PropertyList},
        // The database test comes first and sees the folder's name, too.
        {"x.db/y.jpg", ".db/y.jpg", Database},
        {".hidden", "", Other},
        {".db", "", Other},
        {"a/.db", "db", Other},
        {"abcd", "", Other},
        // Characters count in UTF-16 units: two for the smiley.
        {"\xF0\x9F\x98\x80.png", ".png", Picture},
        {"\xC3\xA9.png", ".png", Picture},
    };
    for (const auto& [path, extension, type] : cases) {
        EXPECT_EQ(extensionText(path), extension);
        EXPECT_EQ(classifyFile(0100644, path), type) << path;
        EXPECT_EQ(classifyFile(0x41ED, path), NotRegular) << path;
        EXPECT_EQ(classifyFile(0120777, path), NotRegular) << path;
    }
}

}  // namespace
}  // namespace salvor
