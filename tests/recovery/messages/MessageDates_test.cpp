#include "recovery/messages/MessageDates.h"

#include <gtest/gtest.h>
#include <limits>

#include "util/DateUtils.h"

namespace salvor {
namespace {

TEST(MessageDates, OnlyTheSentDateIsShownWheneverItIsOne) {
    constexpr double kFuture = 4e9;
    const double infinite = std::numeric_limits<double>::infinity();
    const Text future = DateUtils::DateTimeToString({kFuture});
    const struct {
        OptionalColumnValue raw;
        Text sent, read, readAfterDelivered, delivered;
    } cases[] = {
        {0.0, "2001-01-01 00:00:00", "", "", "before"},
        {400000000.0, "2013-09-04 15:06:40", " ", "before", " "},
        {kFuture, future, future, "before", future},
        {infinite, "", " ", "before", " "},
        {std::nullopt, std::nullopt, std::nullopt, "before", std::nullopt},
    };
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sent.value_or("absent"));
        const double raw = c.raw ? std::get<double>(*c.raw) : 0;
        Message message;
        message.Date = message.DateRead = message.DateDelivered = "before";
        storeMessageDate(message, c.raw);
        EXPECT_EQ(message.Date, c.sent);
        storeMessageDateDelivered(message, c.raw);
        EXPECT_EQ(message.DateRead, c.readAfterDelivered);
        EXPECT_EQ(message.DateDelivered, c.delivered);
        storeMessageDateRead(message, c.raw);
        EXPECT_EQ(message.DateRead, c.read);
        EXPECT_EQ(message.OriginalDate, raw);
        EXPECT_EQ(message.OriginalDateRead, raw);
        EXPECT_EQ(message.OriginalDataDelivered, raw);
    }
}

}  // namespace
}  // namespace salvor
