#pragma once

#include <cstdint>
#include <string>

#include "sql/ResultSet.h"

namespace salvor {

/// Display texts of the dates that databases hold, in the local time zone.

/// Seconds since 2001 as "yyyy-MM-dd HH:mm:ss"; "" for a number that is no date.
std::string textOfReferenceSeconds(double seconds);
/// Unix seconds as "yyyy-MM-dd HH:mm:ss".
std::string textOfUnixSeconds(std::int64_t seconds);
/// Unix seconds as "yyyy-MM-dd hh:mm a".
std::string shortTextOfUnixSeconds(std::int64_t seconds);
/// A column of seconds since 2001; "" for NULL or a lacking column.
std::string textOfReferenceColumn(const ResultSet& row, const char* column);

}  // namespace salvor
