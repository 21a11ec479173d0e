#include "recovery/AbstractSqLiteRecovery.h"

#include "recovery/CarvingProgress.h"
#include "sql/FMDBUtils.h"

namespace salvor {
namespace {

/// How many records one pass may make of a file. A row of a device takes a hundred bytes and more,
/// the shortest one that fits a pattern a dozen, and its record five hundred.
std::uint64_t mostRows(std::size_t fileSize) {
    constexpr std::uint64_t kBase = 16384;
    constexpr std::uint64_t kBytesPerRow = 64;
    return kBase + fileSize / kBytesPerRow;
}

}  // namespace

AbstractSqLiteRecovery::AbstractSqLiteRecovery(ScanState& state, std::stop_token cancelled,
                                               PageSearch search)
    : state_(state),
      cancelled_(std::move(cancelled)),
      engine_(*this, search, cancelled_),
      keepsRows_(search == PageSearch::Unused) {}

AbstractSqLiteRecovery::~AbstractSqLiteRecovery() = default;

void AbstractSqLiteRecovery::DoRecoveryPath(const std::filesystem::path& path) {
    if (fullDBPath.empty()) fullDBPath = path.string();
    const auto file = CarvingEngine::open(path);
    // Whatever it is, its bytes are searched.
    if (!file || !SQLiteHeader::beginsLikeDatabase(file->bytes()))
        tellSearch({ReadingEnd::Kind::Broken, file ? "it does not begin like a SQLite database"
                                                   : "it cannot be mapped or is too small"});
    if (!file) return;
    if (!originDatabase) originDatabase = path.filename().string();
    _field = {};  // of the patterns of an earlier run, which may be gone
    // What searches pages whole keeps links alone, each once.
    if (keepsRows_) rowsLeft_ = mostRows(file->bytes().size());
    CarvingProgress progress(state_.progress, file->bytes().size());
    engine_.carve(
        file->bytes(), tablePatterns,
        {workingOnCallList_, [&progress](std::uint64_t bytes) { progress.advance(bytes); }});
    if (!cancelled_.stop_requested()) tellSearch(searchEnd());
}

ReadingEnd AbstractSqLiteRecovery::searchEnd() const {
    using Kind = ReadingEnd::Kind;
    if (rowsLeftOut_) return {Kind::Budget, "more deleted rows than a file of its size explains"};
    if (engine_.leftOut()) return {Kind::Budget, "its pages have free blocks that overlap"};
    return {};
}

void AbstractSqLiteRecovery::tellSearch(const ReadingEnd& end) {
    state_.readingEnded(std::filesystem::path(fullDBPath).filename().string(), end);
}

void AbstractSqLiteRecovery::rowBegins(std::int64_t rowId, const RecordOrigin& origin) {
    _recObject = GetNewRecoveryObject();
    _recObject->RowId = rowId;
    RecordOrigin from = origin;
    from.database = originDatabase;
    _recObject->Origin = std::move(from);
}

void AbstractSqLiteRecovery::columnRead(std::int64_t number, const OptionalColumnValue& value,
                                        const TablePattern& pattern) {
    FillModel(number, value, pattern);
}

std::int32_t AbstractSqLiteRecovery::correctionFor(Bytes text) {
    return verifyDataPosition(text);
}

void AbstractSqLiteRecovery::rowDropped() {
    _recObject = nullptr;
}

void AbstractSqLiteRecovery::rowEnds() {
    if (isAlreadyOnList(*_recObject)) return;
    if (takeRows(1)) addRecoveredObject();
}

bool AbstractSqLiteRecovery::takeRows(std::uint64_t count) {
    if (count > rowsLeft_) rowsLeftOut_ = true;
    if (rowsLeftOut_) return false;
    rowsLeft_ -= count;
    return true;
}

void AbstractSqLiteRecovery::FillModel(std::int64_t, const OptionalColumnValue&,
                                       const TablePattern&) {}

std::shared_ptr<baseRecoveryObject> AbstractSqLiteRecovery::GetNewRecoveryObject() {
    return std::make_shared<baseRecoveryObject>();
}

void AbstractSqLiteRecovery::addRecoveredObject() {}

std::int32_t AbstractSqLiteRecovery::verifyDataPosition(Bytes) {
    return kNoCorrection;
}

std::int32_t AbstractSqLiteRecovery::setRecoveryCount(std::int32_t) {
    return -1;
}

std::int32_t AbstractSqLiteRecovery::incrementRecoveryCount() {
    return -1;
}

bool AbstractSqLiteRecovery::isAlreadyOnList(const baseRecoveryObject& record) const {
    return rowIds_.contains(RecoveredData, record.RowId);
}

std::int32_t AbstractSqLiteRecovery::getMaxRowIdforTable(const std::string& table) {
    FMDBUtils database(fullDBPath, state_.sourcePolicy, cancelled_);
    if (!database.openDatabase()) return -1;
    ResultSet rows =
        database.executeQuery("SELECT seq FROM sqlite_sequence where name = '" + table + "'");
    std::int32_t largest = -1;
    while (rows.next()) largest = rows.intForColumn("seq");
    return largest;
}

}  // namespace salvor
