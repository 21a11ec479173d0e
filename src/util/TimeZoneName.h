#pragma once

#include <string>

namespace salvor {

/// The name of the time zone in which texts of dates are written: what TZ says, else the zone that
/// the system is set to ("Europe/Berlin"), else its abbreviation.
std::string timeZoneName();

}  // namespace salvor
