#pragma once

#include <cstdint>
#include <optional>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// List row of a calendar event.
struct Calendar {
    salvor::Text UniqueIdentifier;
    std::int32_t SlNo = 0;
    salvor::Text Summary;
    salvor::Text Location;
    salvor::Text Description;
    salvor::Text StartDate;
    salvor::Text Start_TimeZone;
    salvor::Text EndDate;
    salvor::Text AllDay;
    salvor::Text OrginalDate;
    salvor::Text Priority;
    salvor::Text OriginalStartDate;
    salvor::Text OriginalEndDate;
    std::int32_t isChecked = 0;
    std::optional<RecordOrigin> Origin;

    static constexpr auto fields() {
        return std::make_tuple(
            field("UniqueIdentifier", &Calendar::UniqueIdentifier), field("SlNo", &Calendar::SlNo),
            field("Summary", &Calendar::Summary), field("Location", &Calendar::Location),
            field("Description", &Calendar::Description), field("StartDate", &Calendar::StartDate),
            field("Start_TimeZone", &Calendar::Start_TimeZone),
            field("EndDate", &Calendar::EndDate), field("AllDay", &Calendar::AllDay),
            field("OrginalDate", &Calendar::OrginalDate), field("Priority", &Calendar::Priority),
            field("OriginalStartDate", &Calendar::OriginalStartDate),
            field("OriginalEndDate", &Calendar::OriginalEndDate),
            field("isChecked", &Calendar::isChecked));
    }
};

}  // namespace salvor
