#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CarvingFixture.h"
#include "carving/TableCarver.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Offsets = std::vector<std::uint64_t>;

// Fits at every position, so the records' origins tell which bytes were searched. The last byte
// of a region is never among them.
std::shared_ptr<TablePattern> everywhere() {
    return makePattern("[0]");
}

/// The offsets from `first` to `last`, every `step`.
Offsets range(std::uint64_t first, std::uint64_t last, std::uint64_t step = 1) {
    Offsets offsets;
    for (; first <= last; first += step) offsets.push_back(first);
    return offsets;
}

Offsets join(Offsets left, const Offsets& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Offsets searched(const Buffer& file, bool callList = false) {
    const TemporaryFile onDisk(file);
    NotingCarver<> carver({everywhere()});
    carver.setWorkingOnCallList(callList);
    carver.DoRecoveryPath(onDisk.path());
    EXPECT_EQ(carver.state.progress.bytesDone, carver.state.progress.bytesTotal);
    EXPECT_EQ(carver.state.progress.bytesTotal, file.size() > 16 ? file.size() : 0);
    EXPECT_EQ(carver._processOffset, 0);
    return carver.offsets;
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

TEST(PageWalkTest, FreeblocksAreSearchedFromTheirFourthByteAndReadOneLater) {
    FileImage image(512, 3);
    image.btree(3, 13, 247, 511, 100);  // the gap of 1 byte is too small to be searched
    image.freeblock(3, 100, 200, 20);
    image.freeblock(3, 200, 300, 15);
    image.freeblock(3, 300, 0, 16);
    EXPECT_EQ(searched(image.bytes),
              join(range(1024 + 103, 1024 + 118, 2), range(1024 + 303, 1024 + 314, 2)));
    EXPECT_EQ(searched(image.bytes, true),
              join(range(1024 + 103, 1024 + 118), range(1024 + 303, 1024 + 314)));
}

TEST(PageWalkTest, FreeblockChainsEnd) {
    const Offsets first = range(1024 + 103, 1024 + 118, 2);
    const struct {
        const char* what;
        unsigned next, size;
        Offsets found;
    } cases[] = {
        {"next past the page", 600, 20, first}, {"next at the page's end", 512, 20, first},
        {"next to itself", 100, 20, first},     {"next cannot hold a header", 510, 20, first},
        {"runs past the page", 0, 413, {}},     {"without room for its own header", 200, 1, {}},
    };
    for (const auto& [what, next, size, found] : cases) {
        FileImage image(512, 3);
        image.btree(3, 13, 247, 511, 100);
        image.freeblock(3, 200, 0, 20);
        image.freeblock(3, 100, next, size);
        EXPECT_EQ(searched(image.bytes), found) << what;
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
    NotingCarver<> carver({everywhere()});
    carver.DoRecoveryPath("");
    carver.DoRecoveryPath("/nowhere/at-all.db");
    carver.DoRecoveryPath(std::filesystem::temp_directory_path());
    EXPECT_THAT(carver.offsets, IsEmpty());
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

TEST(PageWalkTest, OriginsNameFileOffsetPageAndSpace) {
    FileImage image(512, 4);
    image.btree(3, 13, 247, 511, 100);
    image.btree(4, 13, 0, 40);
    image.freeblock(3, 100, 0, 16);
    image.trunkPage(4);
    const TemporaryFile file(image.bytes);
    NotingCarver<> carver({everywhere()});
    carver.DoRecoveryPath(file.path());
    const auto space = [&](std::uint64_t offset) {
        std::vector<CarvedSpace> spaces;
        for (const RecordOrigin& origin : carver.origins) {
            if (origin.offset != offset) continue;
            EXPECT_EQ(origin.page, offset / 512 + 1);
            EXPECT_EQ(origin.database, file.path().filename().string());
            spaces.push_back(origin.space);
        }
        return spaces;
    };
    EXPECT_THAT(space(1024 + 103), ElementsAre(CarvedSpace::Freeblock));
    EXPECT_THAT(space(1536 + 20), ElementsAre(CarvedSpace::Gap, CarvedSpace::FreeList));
}

TEST(PageWalkTest, CancelledScanEndsAndSettlesItsProgress) {
    FileImage image(512, 4);
    image.btree(3, 13, 0, 60);
    const TemporaryFile file(image.bytes);
    std::stop_source stop;
    stop.request_stop();
    NotingCarver<> carver({everywhere()}, stop.get_token());
    carver.DoRecoveryPath(file.path());
    EXPECT_THAT(carver.offsets, IsEmpty());
    EXPECT_EQ(carver.state.progress.bytesDone, image.bytes.size());
}

TEST(TableCarverTest, HandsOnNamedColumnsOncePerRowId) {
    FileImage image(512, 3);
    image.btree(3, 13, 0, 300);
    const auto plant = [&](std::size_t at, std::uint8_t rowId, const std::string& text) {
        Buffer cell{rowId, 5, 0, 17, 1, 9};
        cell = cell + bytesOf(text) + Buffer{200};
        std::copy(cell.begin(), cell.end(), image.bytes.begin() + 1024 + static_cast<int>(at));
    };
    plant(100, 7, "ab");
    plant(140, 7, "cd");
    plant(180, 8,
          "\xFF"
          "f");
    const TemporaryFile file(image.bytes);
    SqLiteTableSignatures signatures;
    auto signature = std::make_shared<SQLiteSignature>();
    signature->Name = signature->Database = signature->Table = "x";
    signature->TablePatterns = {makePattern("[1];[0];[0];[17];[1];[9]",
                                            {{"t", 3}, {"n", 4}, {"t", 4}, {"n", 5}, {"z", 9}})};
    signatures.tableSignatures = {signature};
    std::vector<CarvedRow> rows;
    TableCarveOptions options;
    options.domain = options.database = options.table = "x";
    const auto run = [&] {
        rows.clear();
        carveTable(signatures, options, file.path(), {},
                   [&](const CarvedRow& row) { rows.push_back(row); });
    };
    run();
    ASSERT_EQ(rows.size(), 2u);
    using Named = std::vector<std::pair<std::string, OptionalColumnValue>>;
    EXPECT_EQ(rows[0].rowId, 7);
    // The later value of a name stands in the place of the earlier one.
    EXPECT_EQ(rows[0].columns, (Named{{"t", "ab"}, {"n", std::int64_t{1}}}));
    EXPECT_EQ(rows[1].columns, (Named{{"t", std::nullopt}, {"n", std::int64_t{1}}}));
    EXPECT_EQ(rows[1].origin.offset, 1204u);
    EXPECT_EQ(rows[1].origin.page, 3u);
    options.version = "iOS6";
    run();
    EXPECT_THAT(rows, IsEmpty());
    options.version.reset();
    options.table = "y";
    run();
    EXPECT_THAT(rows, IsEmpty());
}

}  // namespace
}  // namespace salvor::testing
