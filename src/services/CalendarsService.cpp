#include "services/CalendarsService.h"

#include "live/DAOs.h"
#include "live/RowReading.h"
#include "recovery/AppointmentsSQLiteRecovery.h"
#include "scan/StoredNames.h"
#include "services/PersonStatement.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

constexpr auto kCalendarItems =
    "SELECT CalendarItem.description, CalendarItem.summary, CalendarItem.start_date as "
    "ORIGINAL_START_DATE, datetime(CalendarItem.start_date + 978307200, 'unixepoch','localtime') "
    "AS START_DATE, datetime(CalendarItem.end_date + 978307200, 'unixepoch','localtime') AS "
    "END_DATE, CalendarItem.start_tz, CalendarItem.all_day, CalendarItem.priority, Location.title "
    "AS LocationTitle FROM CalendarItem LEFT OUTER JOIN Location ON CalendarItem.location_id = "
    "Location.ROWID";
constexpr auto kEvents =
    "SELECT Event.location AS LocationTitle, Event.description, Event.summary, Event.start_date "
    "as ORIGINAL_START_DATE, datetime(Event.start_date + 978307200, 'unixepoch','localtime') AS "
    "START_DATE, datetime(Event.end_date + 978307200, 'unixepoch','localtime') AS END_DATE, "
    "Event.start_tz, Event.all_day FROM Event";

std::optional<Date> dateOf(const Text& text) {
    return text ? DateUtils::StringToDateTime(*text) : std::nullopt;
}

void fillEvent(const ResultSet& row, Appointment& event) {
    event.Subject = event.Summary = row.stringForColumn("summary");
    event.Description = event.Details = row.stringForColumn("description");
    event.StartTimeZone = row.stringForColumn("start_tz");
    event.AllDay = row.boolForColumn("all_day");
    event.OriginalStartDate = row.stringForColumn("ORIGINAL_START_DATE");
    event.StartTime = dateOf(row.stringForColumn("START_DATE"));
    event.EndTime = dateOf(row.stringForColumn("END_DATE"));
    event.LocationTitle = row.stringForColumn("LocationTitle");
    event.LocationLatitude = row.longLongIntForColumn("latitude");
    event.LocationLongitude = row.longLongIntForColumn("longitude");
    // Birthdays without a year are kept in year 1604.
    const auto start = row.stringForColumn("START_DATE");
    event.BirthDayEvent = start && start->starts_with("1604-");
}

}  // namespace

CalendarsService::CalendarsService(ScanState& state)
    : abstractServices(state, CalendarsSqliteDbName) {
    DAOs::serveCalendarLookups(state);
}

void CalendarsService::RecoverFromIOSBackup(const DeviceInfo& device) {
    initaliseForRecovery();
    doRecovery(device);
    processPostRecovery();
}

void CalendarsService::initaliseForRecovery() {
    retrieved_ = 0;
    recovered_ = 0;
}

void CalendarsService::doRecovery(const DeviceInfo& device) {
    AppointmentsSQLiteRecovery carver(state_, cancelled_);
    carver.DoRecoveryPath(ConnectionFileFullPath(device).path);
    recoveredFiltered_ = carver.filteredEvents();
    recovered_ = static_cast<std::int32_t>(recoveredFiltered_.size());
}

const char* CalendarsService::existingEventsStatement(const DeviceInfo& device) {
    return device.iOSMajorVersion > 4 ? kCalendarItems : kEvents;
}

void CalendarsService::checkForExisitngData(const DeviceInfo& device) {
    dbUtils_ = connection(ConnectionStringfromDevice(device));
    if (!dbUtils_->openDatabase()) return;
    for (auto& event : readRows<Appointment>(dbUtils_->executeQuery(kPersonStatement), fillEvent))
        model_.push_back(std::move(event));
    retrieved_ = static_cast<std::int32_t>(model_.size());
}

}  // namespace salvor
