#include "recovery/messages/MessageDates.h"

#include <optional>
#include <string>

#include "recovery/ColumnAttributes.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

// Kept: future-dates-only.
std::string futureOrBlank(const std::optional<Date>& date) {
    return date && *date > DateUtils::now() ? DateUtils::DateTimeToString(*date) : " ";
}

}  // namespace

void storeMessageDate(Message& message, const OptionalColumnValue& value) {
    message.OriginalDate = columnDouble(value);
    message.Date.reset();
    if (!value) return;
    const auto date = DateUtils::DoubleToIOSDateTime(message.OriginalDate);
    message.Date = date ? DateUtils::DateTimeToString(*date) : "";
}

void storeMessageDateRead(Message& message, const OptionalColumnValue& value) {
    message.OriginalDateRead = columnDouble(value);
    message.DateRead.reset();
    if (!value) return;
    const auto date = DateUtils::DoubleToIOSDateTime(message.OriginalDateRead);
    message.DateRead = date == DateUtils::IOSDateTimeOffset() ? "" : futureOrBlank(date);
}

void storeMessageDateDelivered(Message& message, const OptionalColumnValue& value) {
    message.OriginalDataDelivered = columnDouble(value);
    if (!value) {
        message.DateDelivered.reset();
        return;
    }
    const auto date = DateUtils::DoubleToIOSDateTime(message.OriginalDataDelivered);
    if (date == DateUtils::IOSDateTimeOffset())
        message.DateRead = "";
    else
        message.DateDelivered = futureOrBlank(date);
}

}  // namespace salvor
