#pragma once

#include "records/Contact.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// Fills the row id and the texts that every statement for persons (ABPerson) has; dates and what
/// only some statements have are the caller's.
void fillPersonTexts(const ResultSet& row, Contact& contact);

}  // namespace salvor
