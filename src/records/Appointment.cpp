#include "records/Appointment.h"

#include "records/RecordContext.h"
#include "util/DateUtils.h"
#include "util/StringUtils.h"
#include "util/Utf8.h"

namespace salvor {

std::shared_ptr<Calendar> Appointment::generateCalendarObject(RecordContext& context) const {
    auto row = std::make_shared<Calendar>();
    row->Summary = Summary;
    if (const auto lookups = context.openCalendarLookups()) {
        row->Location = lookups->getLocationFromLocationID(LocationId);
    }
    row->Description = Description;
    row->StartDate = StartDateText();
    row->Start_TimeZone = StartTimeZone;
    row->EndDate = EndDateText();
    row->AllDay = AppointmentAllDayLabel();
    row->OrginalDate = OriginalStartDate;
    row->UniqueIdentifier = UniqueIdentifier;
    row->Origin = Origin;
    return row;
}

std::string Appointment::StartTimeZoneText() const {
    return StartTimeZone == "_float" ? "" : StringUtils::NullToEmpty(StartTimeZone);
}

std::string Appointment::StartDateText() const {
    return DateUtils::ConvertToString(StartTime);
}

std::string Appointment::EndDateText() const {
    return DateUtils::ConvertToString(EndTime);
}

std::string Appointment::UrlShort() const {
    constexpr std::size_t longUrl = 16;
    const std::string url = StringUtils::NullToEmpty(Url);
    return utf16Length(url) >= longUrl ? StringUtils::ClearUrl(url) + "..." : url;
}

std::string Appointment::AppointmentAllDayLabel() const {
    return AllDay ? "1" : "0";
}

bool Appointment::IsEqual(const Appointment& other) const {
    return StringUtils::sameText(Summary, other.Summary) &&
           StringUtils::sameText(StartTimeZone, other.StartTimeZone) &&
           StringUtils::sameText(OriginalStartDate, other.OriginalStartDate);
}

}  // namespace salvor
