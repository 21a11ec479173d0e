#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>

#include "util/DateUtils.h"

namespace salvor {
namespace {

/// Runs in a zone with daylight saving time: UTC-5, in summer UTC-4. The rule is written out, so
/// that no time zone database is needed.
class Dates : public testing::Test {
  protected:
    Dates() { setZone("EST5EDT,M3.2.0,M11.1.0"); }
    ~Dates() override { setZone("UTC"); }

    static void setZone(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
};

constexpr double winter = 378691200;  // 2013-01-01 00:00:00 UTC
constexpr double summer = 394300800;  // 2013-06-30 16:00:00 UTC

TEST_F(Dates, AreWrittenInEveryPatternWithTheOffsetValidAtThatMoment) {
    const std::tuple<DatePattern, double, const char*> cases[] = {
        {DatePattern::Display, winter, "2012-12-31 19:00:00"},
        {DatePattern::Display, summer + 309.75, "2013-06-30 12:05:09"},
        {DatePattern::Display, -0.25, "2000-12-31 18:59:59"},
        {DatePattern::DisplayMinutes, summer + 309, "2013-06-30 12:05 PM"},
        {DatePattern::Export, summer + 309, "2013/06/30 12:05 PM"},
        {DatePattern::Export, summer - 12 * 3600, "2013/06/30 12:00 AM"},
        {DatePattern::Folder, summer + 309, "2013-06-30 12.05 PM"},
        {DatePattern::TwelveHours, summer + 309, "2013-06-30 12:05:09"},
        {DatePattern::Server, summer + 309, "06-30-2013 12:05"},
        {DatePattern::DayMonth, summer + 309, "30.06."},
    };
    for (const auto& [pattern, seconds, text] : cases) {
        EXPECT_EQ(DateUtils::format(Date{seconds}, pattern), text);
    }
    EXPECT_EQ(DateUtils::DateTimeToString(Date{summer}), "2013-06-30 12:00:00");
    EXPECT_EQ(DateUtils::IOSDateTimeToString(394304400), "2013-06-30 01:00:00");
}

TEST_F(Dates, ConvertNumbers) {
    EXPECT_FALSE(DateUtils::LongToIOSDateTime(0));
    EXPECT_EQ(DateUtils::DoubleToIOSDateTime(0), DateUtils::IOSDateTimeOffset());
    EXPECT_EQ(DateUtils::IOSDateTimeToString(0), "-");
    EXPECT_EQ(DateUtils::LongToString(0), "");
    EXPECT_EQ(DateUtils::doubleIOSDateTimeToString(0), "2000-12-31 19:00:00");
    EXPECT_EQ(DateUtils::doubleIOSDateTimeToString(1e300), " ");
    EXPECT_EQ(DateUtils::ConvertFromUnixTimestampToString(std::nullopt), "");
    EXPECT_EQ(DateUtils::ConvertFromUnixTimestampToString(0), "1969-12-31 07:00 PM");
    EXPECT_EQ(DateUtils::ConvertFromUnixTimeStampToDateTime(978307200), Date{0});
    // A column of seconds since 2001 that was read as Unix time.
    const auto misread = DateUtils::ConvertFromUnixTimeStampToDateTime(summer);
    EXPECT_EQ(DateUtils::DateTimeToStringWithOffset(*misread), "2013-06-30 12:00:00");
}

TEST_F(Dates, ExistWithinTheYears1To9999Only) {
    setZone("UTC");
    const std::pair<double, const char*> cases[] = {{-63113904000, "0001-01-01 00:00:00"},
                                                    {252423993599, "9999-12-31 23:59:59"}};
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(DateUtils::doubleIOSDateTimeToString(seconds), text);
    }
    const double outside[] = {-63113904001, 252423993600, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::max()};
    for (const double seconds : outside) {
        EXPECT_FALSE(DateUtils::DoubleToIOSDateTime(seconds)) << seconds;
        EXPECT_EQ(DateUtils::DateTimeToString(Date{seconds}), "") << seconds;
    }
    EXPECT_FALSE(DateUtils::LongToIOSDateTime(std::numeric_limits<std::int64_t>::min()));
}

TEST_F(Dates, ParseStrictly) {
    EXPECT_EQ(DateUtils::StringToDateTime("2013-06-30 12:00:00"), Date{summer});
    EXPECT_EQ(DateUtils::StringToDateTime("2012-12-31 19:00:00"), Date{winter});
    EXPECT_TRUE(DateUtils::StringToDateTime("2012-02-29 00:00:00"));
    EXPECT_EQ(DateUtils::dateWithYear(2013, 6, 30), Date{summer - 12 * 3600});
    EXPECT_FALSE(DateUtils::dateWithYear(2013, 2, 29));
    EXPECT_FALSE(DateUtils::dateWithYear(2013, 1, 0));
    for (const char* text :
         {"", " ", "2013-06-30", "2013-06-30 12:00", "2013-06-30 12:00:00 ", " 2013-06-30 12:00:00",
          "2013-6-30 12:00:00", "2013-06-31 12:00:00", "2013-02-29 12:00:00", "2013-13-01 12:00:00",
          "2013-06-30 24:00:00", "2013-06-30 12:60:00", "2013-06-30 12:00:60",
          "2013-06-30T12:00:00", "0000-06-30 12:00:00", "2013-06-30 1+:00:00"}) {
        EXPECT_FALSE(DateUtils::StringToDateTime(text)) << text;
    }
}

TEST_F(Dates, DisplayTextsAreParsedAndRewritten) {
    EXPECT_EQ(DateUtils::parseDisplayDate("2013-06-30 12:00 PM"), Date{summer});
    EXPECT_EQ(DateUtils::parseDisplayDate("2013-06-30 12:00:00"), Date{summer});
    const std::pair<const char*, const char*> cases[] = {
        {"2013-06-30 00:10:59", "2013/06/30 12:10 AM"},
        {"2013-06-30 12:10 AM", "2013/06/30 12:10 AM"},
        {"2013-06-30 01:10 PM", "2013/06/30 01:10 PM"},
        // Skipped when the clocks were put forward; the text still means what it says.
        {"2013-03-10 02:30:00", "2013/03/10 02:30 AM"},
    };
    for (const auto& [text, rewritten] : cases) {
        EXPECT_EQ(DateUtils::reformatDisplayDate(text, DatePattern::Export), rewritten);
    }
    for (const char* text : {"2013-06-30 13:10 PM", "2013-06-30 00:10 AM", "2013-06-30 01:10 pm",
                             "2013-06-30 01:10"}) {
        EXPECT_FALSE(DateUtils::reformatDisplayDate(text, DatePattern::Export)) << text;
    }
}

}  // namespace
}  // namespace salvor
