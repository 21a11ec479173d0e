#pragma once

#include <cstdint>

#include "records/Field.h"
#include "records/RecordOrigin.h"
#include "util/Text.h"

namespace salvor {

/// Base of every source record, that is of a record which mirrors one row of a device database.
/// `Recovered` and `isRecovered` are two independent flags: carvers set the first, list rows and
/// the recovery driver the second, and a record can carry either. Kept: two-recovered-flags.
struct baseRecoveryObject {
    baseRecoveryObject() = default;
    baseRecoveryObject(const baseRecoveryObject&) = default;
    baseRecoveryObject& operator=(const baseRecoveryObject&) = default;
    virtual ~baseRecoveryObject() = default;

    bool Recovered = false;    ///< carved from free space
    bool isRecovered = false;  ///< the second, independent flag
    std::int64_t RowId = 0;    ///< ROWID or Z_PK of the row
    std::int64_t ChatId = 0;
    std::int64_t MessageId = 0;
    salvor::Text Text;
    salvor::Text Country;
    salvor::Text Service;
    salvor::Text Account;
    salvor::Text Value;     ///< free slot for carvers
    OptionalOrigin Origin;  ///< where the record was carved; absent for live rows

    /// The negation of `isRecovered`. Kept: two-recovered-flags.
    bool NotRecovered() const { return !isRecovered; }

    template <class Self = baseRecoveryObject>
    static constexpr auto fields() {
        return std::make_tuple(field("Recovered", &Self::Recovered),
                               field("isRecovered", &Self::isRecovered),
                               field("RowId", &Self::RowId), field("ChatId", &Self::ChatId),
                               field("MessageId", &Self::MessageId), field("Text", &Self::Text),
                               field("Country", &Self::Country), field("Service", &Self::Service),
                               field("Account", &Self::Account), field("Value", &Self::Value));
    }
};

}  // namespace salvor
