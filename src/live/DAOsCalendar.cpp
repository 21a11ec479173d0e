#include "live/DAOs.h"
#include "live/RowDates.h"
#include "live/RowReading.h"
#include "sql/SqlFormat.h"

namespace salvor {
namespace {

constexpr auto kEvents =
    "select ROWID, summary, location, description, start_date, start_tz,end_date, all_day, "
    "calendar_id, orig_start_date, status, privacy_level from Event";
constexpr auto kCalendarItems =
    "select c.ROWID, summary, title as location, description, unique_identifier, "
    "start_date,start_tz,end_date, all_day, calendar_id, orig_date, status, privacy_level from "
    "CalendarItem c left join Location loc on loc.rowid = c.location_id";
constexpr auto kAllCalendarItems = "select * from CalendarItem";
constexpr auto kCalendarRowIds = "SELECT ROWID FROM CalendarItem";
// Never prepares. Kept: no-event-location.
constexpr auto kLocation = "select location from Location where = location_id =%lld";

Text zoneText(const ResultSet& row) {
    const auto zone = row.stringForColumn("start_tz");
    return zone == "_float" ? "" : zone;
}

void fillEvent(const ResultSet& row, Calendar& event) {
    event.UniqueIdentifier = row.stringForColumn("unique_identifier");
    event.Summary = row.stringForColumn("summary");
    event.Location = row.stringForColumn("location");
    event.Description = row.stringForColumn("description");
    event.StartDate = textOfReferenceColumn(row, "start_date");
    event.Start_TimeZone = zoneText(row);
    event.EndDate = textOfReferenceColumn(row, "end_date");
    event.AllDay = row.stringForColumn("all_day");
    const auto original = row.stringForColumn("orig_date");
    event.OrginalDate = original ? original : row.stringForColumn("orig_start_date");
    event.Priority = row.stringForColumn("priority");
}

}  // namespace

List<Calendar> DAOs::readEvents(const char* statement) {
    const bool older = state_.deviceInfo.iOSMajorVersion < 5;
    const auto database = openCategory(state_.CALENDAR_DATABASE);
    // A backup that tells no version counts as older.
    auto rows =
        older ? database->executeList({kEvents, statement}) : database->executeList({statement});
    auto list = readRows<Calendar>(std::move(rows), fillEvent);
    numberRows(list);
    append(state_.AllCalendarContent, list);
    state_.CalendarCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<Calendar> DAOs::GetCalendar() {
    return readEvents(kCalendarItems);
}

List<Calendar> DAOs::GetCalendarForIOSFive() {
    auto list = readEvents(kAllCalendarItems);
    if (state_.deviceInfo.iOSMajorVersion < 5) return list;
    // The statement gives the number of a location only, and its look-up finds none.
    const auto location = getLocationFromLocationID(0);
    for (const auto& event : list) event->Location = location;
    return list;
}

std::vector<std::int64_t> DAOs::GetAllCalenderRowID() {
    return rowIds(state_.CALENDAR_DATABASE, kCalendarRowIds);
}

Text DAOs::getLocationFromLocationID(std::int64_t locationId) {
    const std::lock_guard lock(lookupMutex_);
    if (!locations_) locations_ = open(state_.CALENDAR_DATABASE);
    auto rows = locations_->executeQuery(formatSql(kLocation, {locationId}));
    return rows.next() ? rows.stringForColumn("location") : "";
}

}  // namespace salvor
