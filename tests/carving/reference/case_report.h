#pragma once

#include <functional>
#include <string>
#include <vector>

#include "carving/TableCarver.h"
#include "property_case.h"

namespace salvor::reference {

/// One row on one line; doubles by their bits, so that two lines are equal when the rows are.
std::string describe(const CarvedRow& row);

/// The first row in which the two lists differ, from both sides; empty when they are equal.
std::string difference(const std::vector<CarvedRow>& expected,
                       const std::vector<CarvedRow>& actual);

/// The shortest and emptiest file that still `differs`: cut behind, then zeroed piece by piece.
Buffer shrink(Buffer file, const std::function<bool(const Buffer&)>& differs);

/// How it is carved, the header's fields and the lines of the file that are not all zero.
std::string dump(const CaseRun& run, const Buffer& file);

}  // namespace salvor::reference
