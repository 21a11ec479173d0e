#include "live/DAOs.h"

#include <utility>

#include "scan/BackupDatabase.h"

namespace salvor {

DAOs::DAOs(ScanState& state, std::stop_token cancelled)
    : BaseDAO(state), state_(state), cancelled_(std::move(cancelled)) {}

DAOs::~DAOs() = default;

std::shared_ptr<FMDBUtils> DAOs::open(const std::string& storedName) const {
    auto database =
        backupDatabase(state_, state_.backupFiles()->open(storedName), nullptr, cancelled_);
    database->openDatabase();  // one that does not open answers every statement with no rows
    return database;
}

std::shared_ptr<FMDBUtils> DAOs::openCategory(const std::string& storedName) {
    auto database = backupDatabase(state_, state_.backupFiles()->open(storedName), cancelled_);
    database->openDatabase();
    state_.installDatabase(database, std::make_shared<DAOs>(state_, cancelled_));
    return database;
}

void DAOs::serveCalendarLookups(ScanState& state) {
    state.calendarLookupsFactory = [](ScanState& scan) -> std::shared_ptr<DatabaseLookups> {
        auto lookups = std::make_shared<DAOs>(scan);
        scan.installDatabase(lookups->open(scan.CALENDAR_DATABASE), lookups);
        return lookups;
    };
}

bool DAOs::hasRow(const std::string& storedName, const std::string& statement,
                  std::initializer_list<ColumnValue> parameters) const {
    return open(storedName)->executeQuery(statement, parameters).next();
}

std::vector<std::int64_t> DAOs::rowIds(const std::string& storedName, const char* statement) const {
    std::vector<std::int64_t> ids;
    auto rows = open(storedName)->executeQuery(statement);
    while (rows.next()) ids.push_back(rows.longLongIntForColumn("ROWID"));
    return ids;
}

std::map<std::int64_t, Text> DAOs::textsByRowId(const std::string& storedName,
                                                const char* statement,
                                                const char* textColumn) const {
    std::map<std::int64_t, Text> texts;
    auto rows = open(storedName)->executeQuery(statement);
    while (rows.next()) {
        texts[rows.longLongIntForColumn("ROWID")] = rows.stringForColumn(textColumn);
    }
    return texts;
}

}  // namespace salvor
