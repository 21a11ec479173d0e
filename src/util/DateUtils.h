#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "util/Date.h"
#include "util/Text.h"

namespace salvor {

/// The fixed patterns in which dates are written.
enum class DatePattern {
    Display,         ///< yyyy-MM-dd HH:mm:ss
    DisplayMinutes,  ///< yyyy-MM-dd hh:mm a
    Export,          ///< yyyy/MM/dd hh:mm a
    Folder,          ///< yyyy-MM-dd hh.mm a
    TwelveHours,     ///< yyyy-MM-dd hh:mm:ss, twelve-hour hours without AM or PM
    Server,          ///< MM-dd-yyyy HH:mm
    DayMonth,        ///< dd.MM.
};

/// Conversion between dates, numbers and texts. Texts show the local time of the process's zone
/// (TZ) with the offset valid at that moment, ASCII digits and English AM and PM. Only dates within
/// the years 1 to 9999 exist: anything else, NaN included, converts to no date, and formatting a
/// `Date` out of that range gives "". All operations may be called from any thread.
struct DateUtils {
    static std::string DateTimeToString(Date date);
    /// The Unix seconds of `date` taken as seconds since 2001, for columns that hold seconds since
    /// 2001 but were read as Unix time.
    static std::string DateTimeToStringWithOffset(Date date);
    static std::string DateTimeToShortStringForExportToServer(Date date);
    static std::string DateTimeToStringDayMonth(Date date);
    /// "yyyy-MM-dd'T'HH:mm:ssZ", the zone as in "+0100".
    static std::string DateTimeToIso8601(Date date);
    /// Parses exactly "yyyy-MM-dd HH:mm:ss".
    static std::optional<Date> StringToDateTime(std::string_view text);
    static Date IOSDateTimeOffset();
    static Date UnixDateTimeOffset();
    /// Local midnight of a calendar day; absent for a day that no calendar has.
    static std::optional<Date> dateWithYear(int year, int month, int day);
    /// No date for 0, unlike `DoubleToIOSDateTime`. Kept: zero-is-no-date.
    static std::optional<Date> LongToIOSDateTime(std::int64_t secondsSince2001);
    static std::optional<Date> DoubleToIOSDateTime(double secondsSince2001);
    /// "-" for 0 or no date.
    static std::string IOSDateTimeToString(std::int64_t secondsSince2001);
    static std::string ConvertFromUnixTimestampToString(std::optional<double> unixSeconds);
    static std::optional<Date> ConvertFromUnixTimeStampToDateTime(double unixSeconds);
    /// " " (one blank) when no date results.
    static std::string doubleIOSDateTimeToString(double secondsSince2001);
    /// As `DateTimeToString`; "" without a date.
    static std::string ConvertToString(std::optional<Date> date);
    /// As `ConvertToString` of `LongToIOSDateTime`.
    static std::string LongToString(std::int64_t secondsSince2001);

    static Date now();
    static std::string format(Date date, DatePattern pattern);
    /// Parses either display format, "yyyy-MM-dd HH:mm:ss" or "yyyy-MM-dd hh:mm a".
    static std::optional<Date> parseDisplayDate(std::string_view text);
    /// Rewrites a text of either display format in another pattern, without a detour over the time
    /// zone; absent when the text has neither format.
    static Text reformatDisplayDate(std::string_view text, DatePattern pattern);
};

}  // namespace salvor
