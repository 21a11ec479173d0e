#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr const char* kDomain = "HomeDomain";
constexpr const char* kPath = "Library/Calendar/Calendar.sqlitedb";
constexpr std::int64_t kZero = 0;

/// What both tables hold behind the status, `seconds` being the type of their dates.
std::vector<SampleColumn> commonColumns(const char* seconds) {
    return {{"availability", "INTEGER", kZero},
            {"privacy_level", "INTEGER", kZero},
            {"url", "TEXT"},
            {"last_modified", seconds},
            {"sequence_num", "INTEGER", kZero},
            {"birthday_id", "INTEGER", std::int64_t{-1}},
            {"modified_properties", "INTEGER", std::int64_t{3}},
            {"external_tracking_status", "INTEGER", kZero},
            {"external_id", "TEXT"},
            {"external_mod_tag", "TEXT"},
            {"unique_identifier", "TEXT"},
            {"external_schedule_id", "TEXT"},
            {"external_rep", "BLOB"},
            {"response_comment", "TEXT"},
            {"hidden", "INTEGER", kZero}};
}

SampleColumns itemColumns(int ios) {
    SampleColumns columns({{"ROWID", "INTEGER PRIMARY KEY AUTOINCREMENT"},
                           {"summary", "TEXT"},
                           {"location_id", "INTEGER", kZero},
                           {"description", "TEXT"},
                           {"start_date", "REAL"},
                           {"start_tz", "TEXT", std::string("Europe/Berlin")},
                           {"end_date", "REAL"},
                           {"all_day", "INTEGER", kZero},
                           {"calendar_id", "INTEGER", std::int64_t{2}},
                           {"orig_item_id", "INTEGER", kZero},
                           {"orig_date", "REAL"},
                           {"organizer_id", "INTEGER", kZero},
                           {"self_attendee_id", "INTEGER", kZero},
                           {"status", "INTEGER", kZero},
                           {"invitation_status", "INTEGER", kZero},
                           {"has_recurrences", "INTEGER", kZero},
                           {"has_attendees", "INTEGER", kZero},
                           {"UUID", "TEXT"},
                           {"entity_type", "INTEGER", std::int64_t{2}},
                           {"priority", "INTEGER", kZero},
                           {"due_date", "REAL"},
                           {"due_tz", "TEXT"},
                           {"due_all_day", "INTEGER", kZero},
                           {"completion_date", "REAL"},
                           {"creation_date", "REAL"},
                           {"conference", "TEXT"},
                           {"display_order", "INTEGER", std::int64_t{70000000}},
                           {"created_by_id", "INTEGER", std::int64_t{3}},
                           {"modified_by_id", "INTEGER", std::int64_t{3}},
                           {"shared_item_created_date", "REAL"},
                           {"shared_item_created_tz", "TEXT"},
                           {"shared_item_modified_date", "REAL"},
                           {"shared_item_modified_tz", "TEXT"},
                           {"invitation_changed_properties", "INTEGER", kZero},
                           {"default_alarm_removed", "INTEGER", kZero},
                           {"phantom_master", "INTEGER", kZero}});
    columns.insert(15, commonColumns("REAL"));
    if (ios >= 7) columns.insert(51, {{"participation_status_modified_date", "REAL"}});
    if (ios < 9) return columns;
    // From the end, so that the earlier places stay.
    columns.insert(52, {{"calendar_scale", "TEXT"},
                        {"travel_time", "INTEGER"},
                        {"travel_advisory_behavior", "INTEGER", kZero},
                        {"start_location_id", "INTEGER", kZero},
                        {"suggested_event_info_id", "INTEGER", kZero},
                        {"first_alert_date", "REAL"}});
    columns.insert(41, {{"app_link", "BLOB"}});
    columns.insert(29, {{"last_synced_response_comment", "TEXT"}});
    columns.insert(7, {{"end_tz", "TEXT"}});
    columns.insert(3, {{"client_location_id", "INTEGER", kZero}});
    return columns;
}

SampleColumns eventColumns() {
    SampleColumns columns({{"ROWID", "INTEGER PRIMARY KEY AUTOINCREMENT"},
                           {"summary", "TEXT"},
                           {"location", "TEXT", std::string("Town Hall")},
                           {"description", "TEXT"},
                           {"start_date", "INTEGER"},
                           {"start_tz", "TEXT", std::string("Europe/Berlin")},
                           {"end_date", "INTEGER"},
                           {"all_day", "INTEGER", kZero},
                           {"calendar_id", "INTEGER", std::int64_t{2}},
                           {"orig_event_id", "INTEGER", kZero},
                           {"orig_start_date", "INTEGER"},
                           {"organizer_id", "INTEGER", kZero},
                           {"organizer_is_self", "INTEGER", kZero},
                           {"organizer_external_id", "TEXT"},
                           {"self_attendee_id", "INTEGER", kZero},
                           {"status", "INTEGER", kZero}});
    columns.insert(16, commonColumns("INTEGER"));
    return columns;
}

TruthRow truthOf(const std::string& summary, std::int64_t date) {
    TruthRow truth;
    truth.database = sampleStoredName(kDomain, kPath);
    truth.text = summary;
    truth.date = date;
    return truth;
}

SampleRecord event(SampleFolder& folder, const SampleColumns& columns, std::int64_t number) {
    const std::int64_t date = sinceReference(folder.device().startOfUse) + number * 43200;
    const std::string summary = sampleWords(number, 3);
    auto& random = folder.random();
    return {columns.row({{"summary", summary},
                         {"start_date", date},
                         {"end_date", date + 3600},
                         {"all_day", std::int64_t{random.chance(10)}},
                         {"last_modified", date - 5000},
                         {"unique_identifier", random.uuid()}}),
            truthOf(summary, date)};
}

SampleRecord item(SampleFolder& folder, const SampleColumns& columns, std::int64_t number) {
    const std::int64_t date = sinceReference(folder.device().startOfUse) + number * 43200;
    const std::string summary = sampleWords(number, 3);
    auto& random = folder.random();
    SampleRecord record;
    record.row = columns.row({{"summary", summary},
                              {"start_date", static_cast<double>(date)},
                              {"end_date", static_cast<double>(date + 3600)},
                              {"all_day", std::int64_t{random.chance(10)}},
                              {"last_modified", static_cast<double>(date) - 5000.5},
                              {"unique_identifier", random.uuid()},
                              {"UUID", random.uuid()},
                              {"creation_date", static_cast<double>(date) - 9000.5}});
    record.truth = truthOf(summary, date);
    return record;
}

}  // namespace

// iOS 4 kept its events in another table.
void writeSampleCalendar(SampleFolder& folder) {
    const int ios = folder.device().ios;
    SqliteFile database(folder.add(kDomain, kPath), sampleLayout(folder));
    database.execute("CREATE TABLE _SqliteDatabaseProperties (key TEXT, value TEXT)");
    database.execute("CREATE TABLE Calendar (ROWID INTEGER PRIMARY KEY, title TEXT)");
    if (ios >= 5) database.execute("CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, title TEXT)");
    const auto columns = ios >= 5 ? itemColumns(ios) : eventColumns();
    const char* const name = ios >= 5 ? "CalendarItem" : "Event";
    columns.create(database, name);
    SampleTable table(folder, database, name, "ROWID");
    const auto make = [&](std::int64_t number) {
        return ios >= 5 ? item(folder, columns, number) : event(folder, columns, number);
    };
    table.fill(110, make);
    table.deleteSome();
    table.finish(4, make);
    database.close();
}

}  // namespace salvor
