#include "recovery/AppointmentsSQLiteRecovery.h"

#include <fmt/format.h>

#include "util/StringUtils.h"
#include "util/dataUtils.h"

namespace salvor {
namespace {

void storeSummary(Appointment& event, const OptionalColumnValue& value) {
    event.Summary = columnText(value);
    event.Subject = event.Summary;
}

void storeStart(Appointment& event, const OptionalColumnValue& value) {
    event.StartTime = columnDate(value);
    event.OriginalStartDate = columnText(value);
}

void storeEnd(Appointment& event, const OptionalColumnValue& value) {
    event.EndTime = columnDate(value);
}

// Kept: all-day-written-twice.
constexpr ColumnAttribute<Appointment> kAttributes[] = {
    {"summary", storeSummary},
    {"location_id", storeInteger<&Appointment::LocationId>},
    {"description", storeText<&Appointment::Description>},
    {"start_date", storeStart},
    {"start_tz", storeText<&Appointment::StartTimeZone>},
    {"end_date", storeEnd},
    {"all_day", storeBool<&Appointment::AllDay>},
    {"calendar_id", storeInteger<&Appointment::CalendarId>},
    {"last_modified", storeBool<&Appointment::AllDay>},
    {"unique_identifier", storeText<&Appointment::UniqueIdentifier>},
};

std::string normalisedIdentifier(std::string_view identifier) {
    std::string result;
    for (const char c : identifier) {
        if (c == '-' || c == ' ') continue;
        result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

std::optional<std::string> summaryAndStart(const Calendar& event) {
    if (!event.Summary || !event.StartDate) return std::nullopt;
    return std::string(*event.Summary).append(1, '\0').append(*event.StartDate);
}

std::string liveEventStatement(const Calendar& event) {
    return fmt::format("SELECT summary, start_date FROM CalendarItem where summary={} and ",
                       *event.Summary) +
           (StringUtils::IsNullOrEmpty(event.StartDate)
                ? "start_date IS NULL"
                : fmt::format("START_DATE={}", event.OrginalDate.value_or("(null)")));
}

}  // namespace

constinit const SignatureUse<Appointment> AppointmentsSQLiteRecovery::kSignature{
    {"HomeDomain", "Calendar.sqlite", "CalendarItem"}, kAttributes};

AppointmentsSQLiteRecovery::AppointmentsSQLiteRecovery(ScanState& state, std::stop_token cancelled)
    : CategoryCarver(state, std::move(cancelled), kSignature) {}

std::int32_t AppointmentsSQLiteRecovery::verifyDataPosition(Bytes text) {
    if (_field == "summary") return !text.empty() && text.front() == 0 ? 1 : 0;
    if (_field != "unique_identifier") return kNoCorrection;
    const auto dash = dataUtils::indexOfCharinData(text, '-');
    return static_cast<std::int32_t>(dash >= 0 ? dash : dataUtils::indexOfCharinData(text, ' '));
}

void AppointmentsSQLiteRecovery::recordCarved(const std::shared_ptr<Appointment>& event) {
    const auto row = event->generateCalendarObject(state_);
    if (alreadyInDB(*row)) return;
    incrementRecoveryCount();
    state_.AllDeletedCalendar.push_back(row);
    state_.DeletedCalendar.push_back(row);
    ++state_.progress.recordsFound;
    state_.updateUIfoundRecoveredData();
}

bool AppointmentsSQLiteRecovery::alreadyInDB(const Calendar& event) {
    indexNewEvents();
    if (event.UniqueIdentifier &&
        liveIdentifiers_.contains(normalisedIdentifier(*event.UniqueIdentifier)))
        return true;
    if (const auto key = summaryAndStart(event); key && liveSummariesAndStarts_.contains(*key))
        return true;
    return event.UniqueIdentifier && deletedIdentifiers_.contains(event.UniqueIdentifier);
}

void AppointmentsSQLiteRecovery::indexNewEvents() {
    for (; liveIndexed_ < state_.AllCalendarContent.size(); ++liveIndexed_) {
        const auto& event = *state_.AllCalendarContent[liveIndexed_];
        if (event.UniqueIdentifier)
            liveIdentifiers_.insert(normalisedIdentifier(*event.UniqueIdentifier));
        if (auto key = summaryAndStart(event)) liveSummariesAndStarts_.insert(std::move(*key));
    }
    for (; deletedIndexed_ < state_.AllDeletedCalendar.size(); ++deletedIndexed_) {
        const auto& event = *state_.AllDeletedCalendar[deletedIndexed_];
        if (event.UniqueIdentifier) deletedIdentifiers_.insert(event.UniqueIdentifier);
    }
}

void AppointmentsSQLiteRecovery::filterMessages() {
    const auto database = openDatabase();
    if (!database) return;
    // The carved rows handed to the scan are the list that is walked.
    for (const auto& event : state_.DeletedCalendar) {
        if (cancelled_.stop_requested()) return;
        if (StringUtils::IsNullOrEmpty(event->Summary)) continue;
        if (!database->executeQuery(liveEventStatement(*event)).next())
            filteredEvents_.push_back(event);
    }
}

std::int32_t AppointmentsSQLiteRecovery::setRecoveryCount(std::int32_t count) {
    state_.DeletedCalendarCount = count;
    return count;
}

std::int32_t AppointmentsSQLiteRecovery::incrementRecoveryCount() {
    return ++state_.DeletedCalendarCount;
}

}  // namespace salvor
