#include "recovery/AbstractSqLiteRecovery.h"

#include "recovery/CarvingProgress.h"
#include "sql/FMDBUtils.h"

namespace salvor {

AbstractSqLiteRecovery::AbstractSqLiteRecovery(ScanState& state, std::stop_token cancelled,
                                               PageSearch search)
    : state_(state), cancelled_(std::move(cancelled)), engine_(*this, search, cancelled_) {}

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
    CarvingProgress progress(state_.progress, file->bytes().size());
    engine_.carve(
        file->bytes(), tablePatterns,
        {workingOnCallList_, [&progress](std::uint64_t bytes) { progress.advance(bytes); }});
    if (!cancelled_.stop_requested()) tellSearch({});
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
    if (!isAlreadyOnList(*_recObject)) addRecoveredObject();
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
