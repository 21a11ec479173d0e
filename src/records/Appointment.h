#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "records/Calendar.h"
#include "records/baseRecoveryObject.h"
#include "util/Date.h"

namespace salvor {

class RecordContext;

/// One calendar event.
struct Appointment : baseRecoveryObject {
    std::int32_t appointmentID = 0;
    std::int64_t LocationId = 0;
    std::int64_t LocationLatitude = 0;
    std::int64_t LocationLongitude = 0;
    std::int64_t CalendarId = 0;
    bool AllDay = false;
    bool BirthDayEvent = false;
    bool IsChecked = false;
    salvor::Text Summary;
    salvor::Text ShortSummary;
    salvor::Text Description;
    salvor::Text ShortDescription;
    salvor::Text StartTimeZone;
    salvor::Text LocationTitle;
    salvor::Text CalendarName;
    salvor::Text Url = "";
    salvor::Text Color;
    salvor::Text UniqueIdentifier;
    salvor::Text OriginalStartDate;
    salvor::Text Subject;
    salvor::Text Details;
    std::optional<salvor::Date> StartTime;
    std::optional<salvor::Date> EndTime;
    salvor::Text _location;
    salvor::Text _details;
    std::optional<salvor::Date> _lastModifiedTime;
    std::optional<salvor::Date> _creationDate;

    std::shared_ptr<Calendar> generateCalendarObject(RecordContext& context) const;
    /// "" when the zone is absent or "_float" (a floating event), else the zone.
    std::string StartTimeZoneText() const;
    std::string StartDateText() const;
    std::string EndDateText() const;
    std::string UrlShort() const;
    /// "1" or "0".
    std::string AppointmentAllDayLabel() const;
    /// Equal `Summary`, `StartTimeZone` and `OriginalStartDate`.
    bool IsEqual(const Appointment& other) const;

    template <class Self = Appointment>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(
                field("appointmentID", &Self::appointmentID),
                field("LocationId", &Self::LocationId),
                field("LocationLatitude", &Self::LocationLatitude),
                field("LocationLongitude", &Self::LocationLongitude),
                field("CalendarId", &Self::CalendarId), field("AllDay", &Self::AllDay),
                field("BirthDayEvent", &Self::BirthDayEvent), field("IsChecked", &Self::IsChecked),
                field("Summary", &Self::Summary), field("ShortSummary", &Self::ShortSummary),
                field("Description", &Self::Description),
                field("ShortDescription", &Self::ShortDescription),
                field("StartTimeZone", &Self::StartTimeZone),
                field("LocationTitle", &Self::LocationTitle),
                field("CalendarName", &Self::CalendarName), field("Url", &Self::Url),
                field("Color", &Self::Color), field("UniqueIdentifier", &Self::UniqueIdentifier),
                field("OriginalStartDate", &Self::OriginalStartDate),
                field("Subject", &Self::Subject), field("Details", &Self::Details),
                field("StartTime", &Self::StartTime), field("EndTime", &Self::EndTime),
                field("_location", &Self::_location), field("_details", &Self::_details),
                field("_lastModifiedTime", &Self::_lastModifiedTime),
                field("_creationDate", &Self::_creationDate)));
    }
};

}  // namespace salvor
