#pragma once

#include <cstdint>
#include <memory>

#include "records/Contact.h"
#include "records/List.h"
#include "util/Text.h"

namespace salvor {

/// What a record asks of the databases while it becomes a list row. Answered by the data-access
/// object; records know no SQL.
class DatabaseLookups {
  public:
    virtual ~DatabaseLookups() = default;
    /// The `id` of handle `handleId`, or `fallback` without such a row.
    virtual Text GetPhoneNumberForHID(std::int32_t handleId, const Text& fallback) = 0;
    virtual Text GetPhoneNumberForID(std::int32_t handleId, const Text& fallback) = 0;
    virtual Text getLocationFromLocationID(std::int64_t locationId) = 0;
    virtual Text GetWhatsAppContactName(const Text& jid) = 0;
};

/// What a record needs from the running scan to become a list row.
class RecordContext {
  public:
    virtual ~RecordContext() = default;
    virtual std::shared_ptr<DatabaseLookups> lookups() const = 0;
    /// Lookups on a connection opened afresh on the calendar database, which becomes the scan's
    /// current one.
    virtual std::shared_ptr<DatabaseLookups> openCalendarLookups() = 0;
    /// Raises the counter of unknown counterparts and returns the new count.
    virtual std::int64_t nextUnknownNumber() = 0;
    virtual const List<Contact>& liveContacts() const = 0;
    virtual const List<Contact>& deletedContacts() const = 0;
    /// Number of carved call rows that the scan holds.
    virtual std::size_t deletedCallLogCount() const = 0;
};

}  // namespace salvor
