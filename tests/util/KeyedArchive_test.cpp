#include "util/KeyedArchive.h"

#include <gmock/gmock.h>

#include "tools/sample/ManifestWriter.h"

namespace salvor {
namespace {

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(KeyedArchives, GiveWhatTheyHoldInEveryWayToWriteIt) {
    MbdbRecord record;
    record.path = "Library/größe";
    record.size = std::uint64_t{5} << 32;
    record.modified = 1'600'000'000;
    record.linkTarget = "elsewhere";
    record.encryptionKey = std::string(44, '\x04');
    for (const bool inPlace : {false, true}) {
        const auto root = KeyedArchive::parse(bytesOf(fileArchive(record, inPlace)));
        ASSERT_TRUE(root);
        EXPECT_EQ(root.at("RelativePath").text(), record.path);
        EXPECT_EQ(root.at("Size").integer(), std::int64_t{5} << 32);
        EXPECT_EQ(root.at("LastModified").integer(), 1'600'000'000);
        EXPECT_EQ(root.at("Target").text(), "elsewhere");
        EXPECT_EQ(root.at("EncryptionKey").data(), record.encryptionKey);
        EXPECT_FALSE(root.at("Digest"));
        EXPECT_EQ(root.at("Size").text(), std::nullopt);
        EXPECT_EQ(root.at("RelativePath").integer(), std::nullopt);
        EXPECT_FALSE(root.at("Size").at("further").at("on"));
    }
}

TEST(KeyedArchives, ThatAreDamagedGiveNothingWrong) {
    MbdbRecord record;
    record.encryptionKey = std::string(44, '\x04');
    const auto archive = fileArchive(record, false);
    for (std::size_t at = 0; at < archive.size(); ++at) {
        EXPECT_FALSE(KeyedArchive::parse(bytesOf(archive.substr(0, at)))) << at;
        // Whatever a byte says, references of the archive to itself among it, asking ends.
        for (const char byte : {'\0', '\1', '\x80', '\xff'}) {
            auto changed = archive;
            changed[at] = byte;
            const auto root = KeyedArchive::parse(bytesOf(changed));
            EXPECT_LE(root.at("EncryptionKey").data().value_or("").size(), archive.size());
            root.at("LastModified").integer();
        }
    }
}

}  // namespace
}  // namespace salvor
