#pragma once

#include <vector>

#include "live/ContactValue.h"
#include "records/Contact.h"
#include "sql/FMDBUtils.h"

namespace salvor {

std::vector<ContactValue> readContactValues(ResultSet rows);

/// Fills numbers, addresses, home pages and the composite texts of `contacts` from the
/// multi-values of the address book, each table read once.
void fillContactDetails(FMDBUtils& database, const List<Contact>& contacts);

}  // namespace salvor
