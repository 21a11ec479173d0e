#include "recovery/ColumnAttributes.h"

#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "util/DateUtils.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

std::int64_t leadingDigits(std::string_view text) {
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        const std::int64_t digit = c - '0';
        if (number > (kLargest - digit) / 10) return kLargest;
        number = number * 10 + digit;
    }
    return number;
}

std::int64_t cutToInteger(double value) {
    constexpr double kBound = 9223372036854775808.0;  // 2^63, exact as a double
    if (std::isnan(value)) return 0;
    if (value >= kBound) return kLargest;
    if (value < -kBound) return kSmallest;
    return static_cast<std::int64_t>(value);
}

}  // namespace

Text columnText(const OptionalColumnValue& value) {
    if (!value) return std::nullopt;
    return StringUtils::getStringFromObject(*value);
}

std::int64_t columnInteger(const OptionalColumnValue& value) {
    if (!value) return 0;
    if (const auto* text = std::get_if<std::string>(&*value)) return leadingDigits(*text);
    if (const auto* real = std::get_if<double>(&*value)) return cutToInteger(*real);
    return std::get<std::int64_t>(*value);
}

double columnDouble(const OptionalColumnValue& value) {
    if (value && std::holds_alternative<double>(*value)) return std::get<double>(*value);
    return static_cast<double>(columnInteger(value));
}

std::optional<Date> columnDate(const OptionalColumnValue& value) {
    return value ? DateUtils::DoubleToIOSDateTime(columnDouble(value)) : std::nullopt;
}

}  // namespace salvor
