#include <gmock/gmock.h>
#include <limits>

#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

using ::testing::ElementsAre;

/// Made before the carver that refers to it.
struct OwnState {
    ScanState state;
};

/// A carver that lists every row that it is given.
template <class Base>
class ListingCarver : public OwnState, public Base {
  public:
    explicit ListingCarver(const char* header, std::stop_token cancelled = {})
        : Base(OwnState::state, std::move(cancelled)) {
        this->tablePatterns = {makePattern(header)};
    }
    using Base::_field;
    using Base::verifyDataPosition;

    std::vector<std::int64_t> rowIds;

  protected:
    void addRecoveredObject() override {
        rowIds.push_back(this->_recObject->RowId);
        this->RecoveredData.push_back(this->_recObject);
    }
};

TEST(CarverBase, FirstCarvingOfARowIdWins) {
    Buffer cell{5, 3, 0, 8};  // row id 5, one column with the constant 0
    Buffer zero = cell;
    zero[0] = 0;
    const Buffer data = cell + zero + cell + zero + Buffer(20, 7);
    ListingCarver<AbstractSqLiteRecovery> carver("[1];[0];[0];[8]");
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(carver.rowIds, ElementsAre(5, 1));  // a row id of 0 counts as 1
    // A list handed over from outside takes the place of the carver's own.
    auto other = std::make_shared<baseRecoveryObject>();
    other->RowId = 1;
    carver.RecoveredData = {other};
    carver.rowIds.clear();
    carver.ParseHeaderAndData(data, 0);
    EXPECT_THAT(carver.rowIds, ElementsAre(5));
}

/// Keeps nothing of the rows that it is given.
template <class Base>
class CountingCarver : public ListingCarver<Base> {
  public:
    using ListingCarver<Base>::ListingCarver;
    std::size_t rows = 0;

  protected:
    void addRecoveredObject() override { ++rows; }
};

TEST(CarverBase, TakesNoMoreRowsThanADeviceWrites) {
    // Where pages are searched whole every byte is a row, and their links are not kept.
    FileImage image(32768, 4);
    image.btree(3, 13, 0, 32767);
    image.trunkPage(4);
    const TemporaryFile file(image.bytes);
    CountingCarver<AbstractSqLiteRecovery> carver("[0]");
    carver.DoRecoveryPath(file.path());
    EXPECT_EQ(carver.rows, 16384 + image.bytes.size() / 64);
    CountingCarver<AbstractSQLiteRecoveryFullSearch> links("[0]");
    links.DoRecoveryPath(file.path());
    EXPECT_GT(links.rows, 60000U);
}

TEST(CarverBase, SettlesItsProgressHoweverTheFileEnds) {
    FileImage image(512, 4);
    image.btree(3, 13, 0, 60);
    image.trunkPage(2);
    std::stop_source stop;
    stop.request_stop();
    for (const std::size_t size : {16u, 17u, 56u, 600u, 2048u}) {
        const TemporaryFile file(Buffer(image.bytes.begin(), image.bytes.begin() + int(size)));
        for (const auto& cancelled : {std::stop_token(), stop.get_token()}) {
            ListingCarver<AbstractSqLiteRecovery> carver("[0]", cancelled);
            carver.DoRecoveryPath(file.path());
            EXPECT_EQ(carver.state.progress.bytesDone, size > 16 ? size : 0) << size;
        }
    }
}

TEST(CarverBase, SearchesWholePagesInItsVariant) {
    FileImage image(512, 3);  // of a type that holds no unused space
    const TemporaryFile file(image.bytes);
    ListingCarver<AbstractSqLiteRecovery> plain("[0]");
    ListingCarver<AbstractSQLiteRecoveryFullSearch> whole("[0]");
    plain.DoRecoveryPath(file.path());
    whole.DoRecoveryPath(file.path());
    EXPECT_THAT(plain.RecoveredData, ::testing::IsEmpty());
    ASSERT_THAT(whole.RecoveredData, ::testing::SizeIs(1));
    const auto& origin = whole.RecoveredData[0]->Origin;
    EXPECT_EQ(origin->database, file.path().filename().string());
    EXPECT_EQ(origin->offset, 1024U);
    EXPECT_EQ(origin->page, 3U);
    EXPECT_EQ(origin->space, CarvedSpace::Page);
    plain._field = whole._field = "ZStandZAid";
    EXPECT_EQ(plain.verifyDataPosition(bytesOf("0123456789ab-")), -100);
    EXPECT_EQ(whole.verifyDataPosition(bytesOf("0123456789ab-")), 2);
}

TEST(CarverOperations, FindUuidsOnlyWithinTheBytes) {
    const std::string uuid = "01234567-89AB-cdef-xyz0-456789abcdef";
    constexpr auto kFar = std::numeric_limits<std::int64_t>::max();
    struct Case {
        std::string text;
        std::int64_t offset, found;
    };
    const std::vector<Case> cases{
        {"", 0, -1},
        {uuid, 0, 0},
        {uuid, 1, -1},
        {uuid, -1, 0},
        {uuid, std::numeric_limits<std::int64_t>::min(), 0},
        {uuid, kFar, -1},
        {uuid.substr(0, 35), 0, -1},
        {uuid.substr(1) + "0", 0, -1},
        {"-" + uuid + uuid, 0, 1},
        {"-" + uuid + uuid, 2, 37},
        {std::string(36, '-'), 0, -1},
        {std::string(36, '0'), 0, -1},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(AbstractSqLiteRecovery::FindIndexOfBytesForGuidDataContent(bytesOf(one.text),
                                                                             one.offset),
                  one.found)
            << one.text << " from " << one.offset;
    }
}

TEST(CarverOperations, SumTheHeaderThatAPatternLetsExpect) {
    const std::vector<std::pair<HeaderPattern, std::int32_t>> cases{
        {{}, 0},        {{{10}}, 1},          {{{11}}, 2},        {{{20, 3}}, 1},
        {{{}, {1}}, 1}, {{{13}, {}, {1}}, 5}, {{{1}, {}, {}}, 3},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(AbstractSqLiteRecovery::headerSize(cases[i].first), cases[i].second) << i;
}

TEST(CarverOperations, LookForAHeaderNoFartherThanAsked) {
    ListingCarver<AbstractSqLiteRecovery> carver("[0]");
    struct Case {
        std::size_t bytes;
        std::int64_t size, offset;
        bool begins;
        std::int64_t found;
    };
    // The pattern fits everywhere but at the last byte.
    for (const auto& [bytes, size, offset, begins, found] :
         {Case{0, 4, 0, false, 4}, Case{10, 4, 0, true, 0}, Case{10, 4, 3, true, 0},
          Case{10, 0, 3, false, 0}, Case{10, 4, 10, false, 4}, Case{10, 4, 1000, false, 4}}) {
        const Buffer data(bytes, 0);
        std::int64_t at = -7;
        EXPECT_EQ(carver.processContent(size, at, offset, data), begins) << bytes << ' ' << offset;
        EXPECT_EQ(at, found) << bytes << ' ' << offset;
    }
}

}  // namespace
}  // namespace salvor::testing
