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

TEST(PageWalkTest, FreeblockChainsEnd) {
    const struct {
        const char* what;
        unsigned next, size;
        std::size_t found;
    } cases[] = {
        {"next past the page", 600, 20, 8}, {"next at the page's end", 512, 20, 8},
        {"next to itself", 100, 20, 8},     {"next cannot hold a header", 510, 20, 8},
        {"runs past the page", 0, 413, 0},  {"without room for its own header", 200, 1, 0},
    };
    for (const auto& [what, next, size, found] : cases) {
        FileImage image(512, 3);
        image.btree(3, 13, 247, 511, 100);  // the gap of 1 byte is too small to be searched
        image.freeblock(3, 200, 0, 20);
        image.freeblock(3, 100, next, size);
        EXPECT_EQ(searched(image.bytes).size(), found) << what;
    }
}

TEST(PageWalkTest, OddFilesYieldNothing) {
    FileImage image(512, 4);
    image.trunkPage(1);
    for (const std::size_t size : {0u, 1u, 16u, 17u, 55u, 56u, 511u}) {
        const Buffer cut(image.bytes.begin(), image.bytes.begin() + static_cast<int>(size));
        EXPECT_THAT(searched(cut), IsEmpty()) << size;
    }
    for (const unsigned pageSize : {0u, 1u, 15u}) {
        put16(image.bytes, 16, pageSize);
        image.largestRootPage(pageSize == 15 ? 5 : 0);
        EXPECT_THAT(searched(image.bytes), IsEmpty()) << pageSize;
    }
    put16(image.bytes, 16, 16);
    EXPECT_FALSE(searched(image.bytes).empty());
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

TEST(PageWalkTest, EveryTruncationIsReadWithoutHarm) {
    FileImage image(512, 5);
    image.largestRootPage(3);
    image.trunkPage(4);
    image.btree(3, 13, 1, 100, 200);
    image.freeblock(3, 200, 0, 120);
    std::size_t before = SIZE_MAX;
    for (std::size_t size = image.bytes.size(); size > 7; size -= 7) {
        image.bytes.resize(size);
        const std::size_t found = searched(image.bytes).size();
        EXPECT_LE(found, before) << size;
        before = found;
    }
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
