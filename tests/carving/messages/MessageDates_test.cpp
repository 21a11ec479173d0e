#include "carving/MessageDates.h"

#include <gtest/gtest.h>
#include <limits>

#include "util/DateUtils.h"

namespace salvor {
namespace {

constexpr double kFuture = 4e9;
const double kInfinite = std::numeric_limits<double>::infinity();

std::string shown(double seconds) {
    return DateUtils::DateTimeToString({seconds});
}

TEST(MessageDates, SentDateIsShownWheneverItIsOne) {
    for (const double raw : {0.0, 400000000.5, kFuture, kInfinite}) {
        Message message;
        storeMessageDate(message, raw);
        EXPECT_EQ(message.Date, raw == kInfinite ? "" : shown(raw));
        EXPECT_EQ(message.OriginalDate, raw);
    }
}

TEST(MessageDates, ReadAndDeliveredDatesShowOnlyTheFuture) {
    const struct {
        double raw;
        Text read;
        Text readAfterDelivered;
        Text delivered;
    } cases[] = {
        {0.0, "", "", "before"},
        {400000000.0, " ", "before", " "},
        {kFuture, shown(kFuture), "before", shown(kFuture)},
        {kInfinite, " ", "before", " "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.raw);
        Message read;
        storeMessageDateRead(read, c.raw);
        EXPECT_EQ(read.DateRead, c.read);
        EXPECT_EQ(read.OriginalDateRead, c.raw);
        Message delivered;
        delivered.DateRead = delivered.DateDelivered = "before";
        storeMessageDateDelivered(delivered, c.raw);
        EXPECT_EQ(delivered.DateRead, c.readAfterDelivered);
        EXPECT_EQ(delivered.DateDelivered, c.delivered);
        EXPECT_EQ(delivered.OriginalDataDelivered, c.raw);
    }
}

TEST(MessageDates, ValuesThatDoNotDecodeLeaveTheTextAbsent) {
    Message message;
    message.Date = message.DateRead = message.DateDelivered = "before";
    storeMessageDate(message, std::nullopt);
    storeMessageDateRead(message, std::nullopt);
    storeMessageDateDelivered(message, std::nullopt);
    EXPECT_FALSE(message.Date || message.DateRead || message.DateDelivered);
}

}  // namespace
}  // namespace salvor
