#pragma once

#include <stop_token>

#include "scan/Categories.h"

namespace salvor {

/// Opens the database of a category and fills its live list and counter; one that does not open
/// leaves the list empty. Does nothing for categories whose live rows no statement reads.
void readLiveRows(const CategoryFacts& category, ScanState& state,
                  const std::stop_token& cancelled);

/// Empties the deleted lists that a recovery begins with once more.
void clearDeletedLists(ScanState& state);

}  // namespace salvor
