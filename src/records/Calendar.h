#pragma once

#include <cstdint>

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
    salvor::Text OrginalDate;  // Kept: field-spellings.
    salvor::Text Priority;
    salvor::Text OriginalStartDate;
    salvor::Text OriginalEndDate;
    std::int32_t isChecked = 0;
    OptionalOrigin Origin;

    template <class Self = Calendar>
    static constexpr auto fields() {
        return std::make_tuple(
            field("UniqueIdentifier", &Self::UniqueIdentifier), field("SlNo", &Self::SlNo),
            field("Summary", &Self::Summary), field("Location", &Self::Location),
            field("Description", &Self::Description), field("StartDate", &Self::StartDate),
            field("Start_TimeZone", &Self::Start_TimeZone), field("EndDate", &Self::EndDate),
            field("AllDay", &Self::AllDay), field("OrginalDate", &Self::OrginalDate),
            field("Priority", &Self::Priority),
            field("OriginalStartDate", &Self::OriginalStartDate),
            field("OriginalEndDate", &Self::OriginalEndDate), field("isChecked", &Self::isChecked));
    }
};

}  // namespace salvor
