#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CarvingFixture.h"
#include "carving/AbstractSQLiteRecoveryFullSearch.h"
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

template <class Engine = AbstractSqLiteRecovery>
Offsets searched(const Buffer& file, std::shared_ptr<TablePattern> pattern = everywhere(),
                 bool callList = false) {
    const TemporaryFile onDisk(file);
    NotingCarver<Engine> carver({std::move(pattern)});
    carver.setWorkingOnCallList(callList);
    carver.DoRecoveryPath(onDisk.path());
    EXPECT_EQ(carver.state.progress.bytesDone, carver.state.progress.bytesTotal);
    EXPECT_EQ(carver.state.progress.bytesTotal, file.size() > 16 ? file.size() : 0);
    EXPECT_EQ(carver._processOffset, 0);
    return carver.offsets;
}

TEST(PageWalkTest, GapOfALeafPage) {
    FileImage image(512, 3);
    image.btree(3, 13, 3, 200);
    EXPECT_EQ(searched(image.bytes), range(1024 + 22, 1024 + 198));
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

TEST(PageWalkTest, ContentStartOfZeroMeansBehindTheLargestPage) {
    FileImage image(65535, 3);
    image.btree(3, 13, 0, 0);
    EXPECT_THAT(searched(image.bytes), IsEmpty());
    image.btree(3, 13, 0, 65535);
    EXPECT_EQ(searched(image.bytes), range(131070 + 16, 131070 + 65533));
}

TEST(PageWalkTest, FreeblocksAreSearchedFromTheirFourthByteAndReadOneLater) {
    FileImage image(512, 3);
    image.btree(3, 13, 247, 511, 100);  // the gap of 1 byte is too small to be searched
    image.freeblock(3, 100, 200, 20);
    image.freeblock(3, 200, 300, 15);
    image.freeblock(3, 300, 0, 16);
    EXPECT_EQ(searched(image.bytes),
              join(range(1024 + 103, 1024 + 118, 2), range(1024 + 303, 1024 + 314, 2)));
    EXPECT_EQ(searched(image.bytes, everywhere(), true),
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

TEST(PageWalkTest, ReadThatFailsInTheGapLeavesTheFreeblocksOut) {
    // Two columns: the nine bytes of the second one's varint run past the gap's end.
    const auto pattern = makePattern("[0];[77]");
    FileImage image(512, 4);
    for (const unsigned page : {3u, 4u}) {
        image.btree(page, 13, 0, 100, 200);
        image.freeblock(page, 200, 0, 100);
        image.bytes[image.pageStart(page) + 210] = 77;
    }
    EXPECT_THAT(searched(image.bytes, pattern), IsEmpty());
    // Without a gap the freeblocks are out of reach as well, with a tiny one they are searched.
    image.btree(4, 13, 0, 16, 200);
    EXPECT_THAT(searched(image.bytes, pattern), IsEmpty());
    image.btree(4, 13, 0, 17, 200);
    EXPECT_EQ(searched(image.bytes, pattern), Offsets{1536 + 209});
}

TEST(PageWalkTest, PagesOfADatabaseWithoutPointerMaps) {
    FileImage image(512, 6);
    for (unsigned page = 1; page <= 6; ++page) image.btree(page, 13, 0, 60);
    put16(image.bytes, 16, 512);
    put32(image.bytes, 28, 4);
    EXPECT_EQ(searched(image.bytes),
              join(range(1024 + 16, 1024 + 58), range(1536 + 16, 1536 + 58)));
    for (const std::uint32_t none : {0u, 2u, 0x80000000u}) {
        put32(image.bytes, 28, none);
        EXPECT_THAT(searched(image.bytes), IsEmpty()) << none;
    }
    // A page that the file does not hold whole is not looked at.
    put32(image.bytes, 28, 0x7FFFFFFF);
    image.bytes.resize(512 * 3 + 511);
    EXPECT_EQ(searched(image.bytes).size(), 43u);
}

TEST(PageWalkTest, AutoVacuumReadsPagesUpToTheLastRootAndTheRestRaw) {
    FileImage image(512, 5);
    for (unsigned page = 2; page <= 5; ++page) image.btree(page, 13, 0, 60);
    image.largestRootPage(3);
    image.bytes.resize(512 * 5 + 100);
    const Offsets raw = join(range(1536, 2046), range(2048, 2558));
    EXPECT_EQ(searched(image.bytes), join(range(1024 + 16, 1024 + 58), raw));
    // Nothing is left behind the last root: the page passes alone.
    image.largestRootPage(0x7FFFFFFF);
    EXPECT_EQ(searched(image.bytes).size(), 3u * 43);
}

TEST(PageWalkTest, PointerMapPagesAreLeftOut) {
    // 100 entries fill a page of 500 bytes: the next map is page 100 + 2 + 1, the one after that
    // directly behind it.
    FileImage image(500, 106);
    const auto fill = [&](unsigned page) {
        for (unsigned entry = 0; entry < 99; ++entry) {
            image.bytes[image.pageStart(page) + entry * 5] = 5;
        }
    };
    fill(2);
    image.largestRootPage(106);
    for (unsigned page = 103; page <= 106; ++page) image.btree(page, 5, 0, 60);
    EXPECT_EQ(searched(image.bytes).size(), 3u * 43);
    fill(103);
    EXPECT_EQ(searched(image.bytes).size(), 2u * 43);
    // With one entry missing no further map follows.
    image.bytes[image.pageStart(2) + 490] = 0;
    EXPECT_EQ(searched(image.bytes).size(), 3u * 43);
}

TEST(PageWalkTest, FreeListPassCountsBlocksFromTheStartOfTheFile) {
    FileImage image(512, 4);
    put32(image.bytes, 28, 0);
    image.trunkPage(4);
    image.bytes.resize(512 * 4 + 20);
    EXPECT_EQ(searched(image.bytes), join(range(1536, 2046), range(2048, 2066)));
    image.trunkPage(1);  // four whole blocks: the short one is not reached
    EXPECT_EQ(searched(image.bytes).size(), 4u * 511);
    image.trunkPage(5);
    EXPECT_EQ(searched(image.bytes), range(2048, 2066));
    for (const std::uint32_t page : {6u, 0x7FFFFFFFu, 0x80000000u, 0u}) {
        image.trunkPage(page);
        EXPECT_THAT(searched(image.bytes), IsEmpty()) << page;
    }
}

TEST(PageWalkTest, FirstFailingReadEndsARawPass) {
    const auto pattern = makePattern("[0];[77]");
    FileImage image(512, 4);
    put32(image.bytes, 28, 0);
    for (const std::size_t at : {600u, 1100u}) image.bytes[at] = 77;
    image.trunkPage(2);
    EXPECT_EQ(searched(image.bytes, pattern), Offsets{599});
    image.trunkPage(0);
    image.largestRootPage(1);
    EXPECT_EQ(searched(image.bytes, pattern), Offsets{599});
    // The full search goes on with the next page.
    image.largestRootPage(4);
    EXPECT_EQ(searched<AbstractSQLiteRecoveryFullSearch>(image.bytes, pattern), Offsets{1099});
}

TEST(PageWalkTest, FullSearchTakesPagesOfAnyTypeWhole) {
    FileImage image(512, 4);
    image.btree(3, 2, 3, 200);
    EXPECT_EQ(searched<AbstractSQLiteRecoveryFullSearch>(image.bytes),
              join(range(1024, 1534), range(1536, 2046)));
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
