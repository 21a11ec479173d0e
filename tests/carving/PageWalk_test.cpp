#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "carving/TableCarver.h"
#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

using ::testing::IsEmpty;

/// Where the bytes lie that were searched: the pattern fits at every position, so that the records'
/// origins tell. The last byte of a region is never among them.
std::vector<std::uint64_t> searched(const Buffer& file, std::stop_token cancelled = {}) {
    NotingReceiver rows;
    CarvingEngine(rows, PageSearch::Unused, std::move(cancelled)).carve(file, {makePattern("[0]")});
    return rows.offsets;
}

TEST(PageWalkTest, TypesAndContentStarts) {
    const struct {
        std::uint8_t type;
        unsigned cells, contentStart;
        std::size_t found;
    } cases[] = {
        {5, 3, 200, 177}, {10, 3, 200, 177}, {13, 3, 200, 177}, {2, 3, 200, 0},  {12, 3, 200, 0},
        {0, 3, 200, 0},   {13, 3, 22, 0},    {13, 3, 37, 0},    {13, 3, 38, 15}, {13, 3, 512, 489},
        {13, 3, 513, 0},  {13, 3, 0, 0},     {13, 65535, 0, 0},
    };
    for (const auto& [type, cells, contentStart, found] : cases) {
        FileImage image(512, 3);
        image.btree(3, type, cells, contentStart);
        EXPECT_EQ(searched(image.bytes).size(), found) << int{type} << " " << contentStart;
    }
}

TEST(PageWalkTest, FreeblocksThatOverlapAreSearchedFourTimesOver) {
    FileImage image(512, 3);
    image.btree(3, 13, 247, 511);
    constexpr unsigned kPage = 2 * 512;
    put16(image.bytes, kPage + 1, 20);
    for (unsigned at = 20; at < 504; at += 4) {
        put16(image.bytes, kPage + at, at + 4);
        put16(image.bytes, kPage + at + 2, 512 - at);
    }
    NotingReceiver rows;
    CarvingEngine engine(rows, PageSearch::Unused);
    engine.carve(image.bytes, {makePattern("[0]")});
    EXPECT_TRUE(engine.leftOut());
    // Behind each row one byte is passed over; all of them would be fifteen thousand.
    EXPECT_GT(rows.offsets.size(), 3U * 512 / 2);
    EXPECT_LT(rows.offsets.size(), 4U * 512 / 2);
}

TEST(PageWalkTest, FilesThatAreNotOpened) {
    const auto opens = [](const std::filesystem::path& path) {
        return CarvingEngine::open(path).has_value();
    };
    EXPECT_TRUE(opens(TemporaryFile(Buffer(17, 0)).path()));
    EXPECT_FALSE(opens(TemporaryFile(Buffer(16, 0)).path()));
    EXPECT_FALSE(opens(""));
    EXPECT_FALSE(opens("/nowhere/at-all.db"));
    EXPECT_FALSE(opens(std::filesystem::temp_directory_path()));
    const TemporaryFile file(Buffer(100, 0));
    for (const auto& path : {file.path(), std::filesystem::path("/nowhere/at-all.db")})
        carveTable({}, {}, path, {}, [](const CarvedRow&) { ADD_FAILURE() << "no such table"; });
}

TEST(PageWalkTest, CancelledSearchFindsNothing) {
    FileImage image(512, 4);
    image.btree(3, 13, 0, 60);
    EXPECT_FALSE(searched(image.bytes).empty());
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THAT(searched(image.bytes, stop.get_token()), IsEmpty());
}

}  // namespace
}  // namespace salvor::testing
