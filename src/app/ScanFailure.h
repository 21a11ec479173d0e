#pragma once

#include <exception>
#include <string>

namespace salvor {

/// The log text of an exception that ended a scan.
std::string describeFailure(const std::exception& failure);

}  // namespace salvor
