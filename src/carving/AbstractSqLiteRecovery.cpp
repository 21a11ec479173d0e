#include "carving/AbstractSqLiteRecovery.h"

#include "sql/FMDBUtils.h"
#include "util/MappedFile.h"

namespace salvor {

AbstractSqLiteRecovery::AbstractSqLiteRecovery(ScanState& state, std::stop_token cancelled)
    : state_(state), cancelled_(std::move(cancelled)) {}

AbstractSqLiteRecovery::~AbstractSqLiteRecovery() = default;

void AbstractSqLiteRecovery::DoRecoveryPath(const std::filesystem::path& path) {
    constexpr std::size_t kTinyFile = 16;
    if (path.empty()) return;
    const auto file = MappedFile::open(path);
    if (!file || file->bytes().size() <= kTinyFile) return;
    if (fullDBPath.empty()) fullDBPath = path.string();
    if (originDatabase.empty()) originDatabase = path.filename().string();
    file_ = file->bytes();
    progress_.emplace(state_.progress, file_.size());
    if (const auto header = SQLiteHeader::fromBytes(file_)) runPasses(*header);
    progress_.reset();
    file_ = {};
    pageSize_ = 0;
}

void AbstractSqLiteRecovery::runPasses(const SQLiteHeader& header) {
    if (header.PageSize == 0) return;
    pageSize_ = static_cast<std::uint64_t>(header.PageSize);
    if (header.IsAutoVacuum) {
        ProcessAutoVacuumSqliteDatabase(header);
        if (header.HighestNUmberedRootPageNumber > 0) {
            ProcessPagesAfterHighestNumberedRootPage(header);
        }
    } else {
        ProcessNonAutoVacuumSqliteDatabase(header);
    }
    if (header.PageNumberOfFirstListTrunkPage > 0) ProcessFreeListTrunkPage(header);
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
