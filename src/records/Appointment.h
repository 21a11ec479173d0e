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

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("appointmentID", &Appointment::appointmentID),
                            field("LocationId", &Appointment::LocationId),
                            field("LocationLatitude", &Appointment::LocationLatitude),
                            field("LocationLongitude", &Appointment::LocationLongitude),
                            field("CalendarId", &Appointment::CalendarId),
                            field("AllDay", &Appointment::AllDay),
                            field("BirthDayEvent", &Appointment::BirthDayEvent),
                            field("IsChecked", &Appointment::IsChecked),
                            field("Summary", &Appointment::Summary),
                            field("ShortSummary", &Appointment::ShortSummary),
                            field("Description", &Appointment::Description),
                            field("ShortDescription", &Appointment::ShortDescription),
                            field("StartTimeZone", &Appointment::StartTimeZone),
                            field("LocationTitle", &Appointment::LocationTitle),
                            field("CalendarName", &Appointment::CalendarName),
                            field("Url", &Appointment::Url), field("Color", &Appointment::Color),
                            field("UniqueIdentifier", &Appointment::UniqueIdentifier),
                            field("OriginalStartDate", &Appointment::OriginalStartDate),
                            field("Subject", &Appointment::Subject),
                            field("Details", &Appointment::Details),
                            field("StartTime", &Appointment::StartTime),
                            field("EndTime", &Appointment::EndTime),
                            field("_location", &Appointment::_location),
                            field("_details", &Appointment::_details),
                            field("_lastModifiedTime", &Appointment::_lastModifiedTime),
                            field("_creationDate", &Appointment::_creationDate)));
    }
};

}  // namespace salvor
