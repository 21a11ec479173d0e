#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr std::int64_t kZero = 0;
constexpr std::int64_t kOne = 1;

/// What a call table of one generation is called and how a call goes into it.
struct CallStore {
    const char* domain;
    const char* path;
    const char* table;
    const char* key;
    SampleColumns columns;
    bool coreData;
};

CallStore olderStore(int ios) {
    std::vector<SampleColumn> columns{{"ROWID", "INTEGER PRIMARY KEY AUTOINCREMENT"},
                                      {"address", "TEXT"},
                                      {"date", "INTEGER"},
                                      {"duration", "INTEGER"},
                                      {"flags", "INTEGER"},
                                      {"id", "INTEGER", std::int64_t{-1}},
                                      {"name", "TEXT", std::string()},
                                      {"country_code", "TEXT", std::string("262")}};
    if (ios >= 5) {
        columns.insert(columns.end(), {{"network_code", "TEXT", std::string("01")},
                                       {"read", "INTEGER", kOne},
                                       {"assisted", "INTEGER", kZero},
                                       {"face_time_data", "BLOB"},
                                       {"originalAddress", "TEXT", std::string()}});
    }
    if (ios >= 7) columns.push_back({"answered", "INTEGER", kOne});
    return {"WirelessDomain", "Library/CallHistory/call_history.db", "call",
            "ROWID",          SampleColumns(std::move(columns)),     false};
}

CallStore newerStore() {
    return {"HomeDomain",
            "Library/CallHistoryDB/CallHistory.storedata",
            "ZCALLRECORD",
            "Z_PK",
            SampleColumns({{"Z_PK", "INTEGER PRIMARY KEY"},
                           {"Z_ENT", "INTEGER", std::int64_t{2}},
                           {"Z_OPT", "INTEGER", kOne},
                           {"ZANSWERED", "INTEGER", kOne},
                           {"ZCALLTYPE", "INTEGER", kOne},
                           {"ZDISCONNECTED_CAUSE", "INTEGER"},
                           {"ZFACE_TIME_DATA", "INTEGER"},
                           {"ZNUMBER_AVAILABILITY", "INTEGER", kZero},
                           {"ZORIGINATED", "INTEGER", kZero},
                           {"ZREAD", "INTEGER", kOne},
                           {"ZDATE", "TIMESTAMP"},
                           {"ZDURATION", "FLOAT"},
                           {"ZDEVICE_ID", "VARCHAR"},
                           {"ZISO_COUNTRY_CODE", "VARCHAR", std::string("de")},
                           {"ZLOCATION", "VARCHAR", std::string("Berlin")},
                           {"ZNAME", "VARCHAR"},
                           {"ZUNIQUE_ID", "VARCHAR"},
                           {"ZADDRESS", "BLOB"}}),
            true};
}

SampleRecord call(SampleFolder& folder, const CallStore& store, std::int64_t number) {
    auto& random = folder.random();
    const std::int64_t unixDate = folder.device().startOfUse + number * 7777;
    const std::int64_t date = store.coreData ? sinceReference(unixDate) : unixDate;
    const std::int64_t duration = random.chance(25) ? 0 : random.between(2, 900);
    const bool outgoing = random.chance(50);
    const std::string address = "+4930" + std::to_string(1000000 + number * 37);
    SampleRecord record;
    if (store.coreData) {
        record.row = store.columns.row(
            {{"ZADDRESS", SqliteBlob{address}},
             {"ZDATE", static_cast<double>(date) + 0.25},
             {"ZDURATION", duration == 0 ? SqliteValue(kZero)
                                         : SqliteValue(static_cast<double>(duration) + 0.5)},
             {"ZORIGINATED", std::int64_t{outgoing}},
             {"ZUNIQUE_ID", random.uuid()}});
    } else {
        record.row = store.columns.row({{"address", address},
                                        {"date", date},
                                        {"duration", duration},
                                        {"flags", std::int64_t{outgoing ? 5 : 4}}});
    }
    record.truth.database = sampleStoredName(store.domain, store.path);
    record.truth.handle = address;
    record.truth.text = address;
    record.truth.date = date;
    record.truth.fromMe = outgoing;
    record.truth.values["duration"] = duration;
    return record;
}

}  // namespace

void writeSampleCalls(SampleFolder& folder) {
    const int ios = folder.device().ios;
    const CallStore store = ios >= 8 ? newerStore() : olderStore(ios);
    SqliteFile database(folder.add(store.domain, store.path), sampleLayout(folder));
    // The second page is never examined; on devices another table's root lies there.
    database.execute("CREATE TABLE _SqliteDatabaseProperties (key TEXT, value TEXT)");
    store.columns.create(database, store.table);
    SampleTable table(folder, database, store.table, store.key);
    const auto make = [&](std::int64_t number) { return call(folder, store, number); };
    table.fill(160, make);
    table.deleteSome();
    table.finish(6, make);
    database.close();
}

}  // namespace salvor
