#pragma once

#include "records/List.h"
#include "records/ListRows.h"
#include "util/PropertyList.h"

namespace salvor {

// Rows of the property lists of a backup, numbered from 1 in stored order. Entries without any of
// the fields that a row shows are passed over; a list of another kind gives no rows.

/// Mail accounts: the array "Accounts" of the account settings.
List<Account> accountsOf(const PropertyList& settings);

/// Installed applications: whatever names a bundle, in the dictionaries "User" and "System" of an
/// installation list, under "Applications" as in a backup's manifest, or at the top.
List<Application> applicationsOf(const PropertyList& installed);

/// Searches of the maps application: the array "HistoryItems".
List<MapHistory> mapHistoryOf(const PropertyList& history);

}  // namespace salvor
