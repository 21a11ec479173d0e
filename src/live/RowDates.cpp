#include "live/RowDates.h"

#include "util/DateUtils.h"

namespace salvor {
namespace {

std::string unixText(std::int64_t seconds, DatePattern pattern) {
    const auto date = DateUtils::ConvertFromUnixTimeStampToDateTime(static_cast<double>(seconds));
    return date ? DateUtils::format(*date, pattern) : "";
}

}  // namespace

std::string textOfReferenceSeconds(double seconds) {
    return DateUtils::ConvertToString(DateUtils::DoubleToIOSDateTime(seconds));
}

std::string textOfUnixSeconds(std::int64_t seconds) {
    return unixText(seconds, DatePattern::Display);
}

std::string shortTextOfUnixSeconds(std::int64_t seconds) {
    return unixText(seconds, DatePattern::DisplayMinutes);
}

std::string textOfReferenceColumn(const ResultSet& row, const char* column) {
    return row.columnIsNull(column) ? "" : textOfReferenceSeconds(row.doubleForColumn(column));
}

}  // namespace salvor
