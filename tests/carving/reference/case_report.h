#pragma once

#include <string>
#include <vector>

#include "carving/TableCarver.h"

namespace salvor::reference {

/// The first row in which the two lists differ, from both sides; empty when they are equal.
std::string difference(const std::vector<CarvedRow>& expected,
                       const std::vector<CarvedRow>& actual);

}  // namespace salvor::reference
