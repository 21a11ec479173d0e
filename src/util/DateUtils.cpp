#include "util/DateUtils.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fmt/compile.h>
#include <fmt/format.h>
#include <mutex>

namespace salvor {
namespace {

constexpr double unixToReference = 978307200;
constexpr double firstUnixSecond = -62135596800;  // 0001-01-01 00:00:00 UTC
constexpr double endUnixSecond = 253402300800;    // 10000-01-01 00:00:00 UTC

// The fields of a clock and calendar, months and days from 1.
struct LocalTime {
    int year = 1;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// The pattern of each `DatePattern`, in its order.
constexpr std::string_view patterns[] = {
    "yyyy-MM-dd HH:mm:ss",
    "yyyy-MM-dd hh:mm a",
    "yyyy/MM/dd hh:mm a",
    "yyyy-MM-dd hh.mm a",
    "yyyy-MM-dd hh:mm:ss",
    "MM-dd-yyyy HH:mm",
    "dd.MM.",
};

constexpr std::string_view patternOf(DatePattern pattern) {
    return patterns[static_cast<std::size_t>(pattern)];
}

bool exists(Date date) {
    const double seconds = date.secondsSinceReference + unixToReference;
    return seconds >= firstUnixSecond && seconds < endUnixSecond;  // false for NaN
}

std::optional<Date> existing(double secondsSince2001) {
    const Date date{secondsSince2001};
    return exists(date) ? std::optional(date) : std::nullopt;
}

// localtime_r need not read TZ by itself.
void readZoneOnce() {
    static std::once_flag zoneRead;
    std::call_once(zoneRead, ::tzset);
}

std::optional<LocalTime> toLocal(Date date) {
    readZoneOnce();
    if (!exists(date)) return std::nullopt;
    const auto seconds =
        static_cast<std::time_t>(std::floor(date.secondsSinceReference + unixToReference));
    std::tm parts{};
    if (::localtime_r(&seconds, &parts) == nullptr) return std::nullopt;
    const int year = parts.tm_year + 1900;
    // The zone's offset may push the first and last hours out of the years that exist.
    if (year < 1 || year > 9999) return std::nullopt;
    return LocalTime{year,          parts.tm_mon + 1, parts.tm_mday,
                     parts.tm_hour, parts.tm_min,     parts.tm_sec};
}

bool isCalendarDay(int year, int month, int day) {
    using namespace std::chrono;
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return false;
    return year_month_day(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                          std::chrono::day(static_cast<unsigned>(day)))
        .ok();
}

std::optional<Date> fromLocal(const LocalTime& local) {
    std::tm parts{};
    parts.tm_year = local.year - 1900;
    parts.tm_mon = local.month - 1;
    parts.tm_mday = local.day;
    parts.tm_hour = local.hour;
    parts.tm_min = local.minute;
    parts.tm_sec = local.second;
    parts.tm_isdst = -1;
    readZoneOnce();
    // mktime reads the zone anew each time when TZ is not set.
    static std::mutex zone;
    const std::lock_guard lock(zone);
    return existing(static_cast<double>(std::mktime(&parts)) - unixToReference);
}

// Length of the run of equal letters at the start of a pattern.
std::size_t runLength(std::string_view pattern) {
    const std::size_t end = pattern.find_first_not_of(pattern.front());
    return end == std::string_view::npos ? pattern.size() : end;
}

std::string write(const LocalTime& local, std::string_view pattern) {
    std::string text;
    while (!pattern.empty()) {
        const std::size_t length = runLength(pattern);
        auto out = std::back_inserter(text);
        switch (pattern.front()) {
            case 'y':
                fmt::format_to(out, FMT_COMPILE("{:04}"), local.year);
                break;
            case 'M':
                fmt::format_to(out, FMT_COMPILE("{:02}"), local.month);
                break;
            case 'd':
                fmt::format_to(out, FMT_COMPILE("{:02}"), local.day);
                break;
            case 'H':
                fmt::format_to(out, FMT_COMPILE("{:02}"), local.hour);
                break;
            case 'h':
                fmt::format_to(out, FMT_COMPILE("{:02}"), (local.hour + 11) % 12 + 1);
                break;
            case 'm':
                fmt::format_to(out, FMT_COMPILE("{:02}"), local.minute);
                break;
            case 's':
                fmt::format_to(out, FMT_COMPILE("{:02}"), local.second);
                break;
            case 'a':
                text += local.hour < 12 ? "AM" : "PM";
                break;
            default:
                text += pattern.substr(0, length);
                break;
        }
        pattern.remove_prefix(length);
    }
    return text;
}

std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
    if (text.size() < digits) return std::nullopt;
    int number = 0;
    for (const char c : text.substr(0, digits)) {
        if (c < '0' || c > '9') return std::nullopt;
        number = number * 10 + (c - '0');
    }
    text.remove_prefix(digits);
    return number;
}

bool takeText(std::string_view& text, std::string_view expected) {
    if (!text.starts_with(expected)) return false;
    text.remove_prefix(expected.size());
    return true;
}

int* fieldOf(LocalTime& local, char letter) {
    switch (letter) {
        case 'y':
            return &local.year;
        case 'M':
            return &local.month;
        case 'd':
            return &local.day;
        case 'H':
        case 'h':
            return &local.hour;
        case 'm':
            return &local.minute;
        case 's':
            return &local.second;
        default:
            return nullptr;
    }
}

std::optional<LocalTime> parse(std::string_view text, std::string_view pattern) {
    LocalTime local;
    bool twelveHours = false;
    bool afternoon = false;
    while (!pattern.empty()) {
        const char letter = pattern.front();
        const std::size_t length = runLength(pattern);
        if (int* field = fieldOf(local, letter)) {
            const auto number = takeNumber(text, length);
            if (!number) return std::nullopt;
            *field = *number;
            twelveHours = twelveHours || letter == 'h';
        } else if (letter == 'a') {
            afternoon = text.starts_with('P');
            if (!takeText(text, afternoon ? "PM" : "AM")) return std::nullopt;
        } else if (!takeText(text, pattern.substr(0, length))) {
            return std::nullopt;
        }
        pattern.remove_prefix(length);
    }
    if (twelveHours) {
        if (local.hour < 1 || local.hour > 12) return std::nullopt;
        local.hour = local.hour % 12 + (afternoon ? 12 : 0);
    }
    const bool valid = text.empty() && isCalendarDay(local.year, local.month, local.day) &&
                       local.hour < 24 && local.minute < 60 && local.second < 60;
    return valid ? std::optional(local) : std::nullopt;
}

std::optional<LocalTime> parseDisplay(std::string_view text) {
    for (const DatePattern pattern : {DatePattern::Display, DatePattern::DisplayMinutes}) {
        if (auto local = parse(text, patternOf(pattern))) return local;
    }
    return std::nullopt;
}

}  // namespace

std::string DateUtils::DateTimeToString(Date date) {
    return format(date, DatePattern::Display);
}

std::string DateUtils::DateTimeToStringWithOffset(Date date) {
    return DateTimeToString(Date{date.secondsSinceReference + unixToReference});
}

std::string DateUtils::DateTimeToShortStringForExportToServer(Date date) {
    return format(date, DatePattern::Server);
}

std::string DateUtils::DateTimeToStringDayMonth(Date date) {
    return format(date, DatePattern::DayMonth);
}

std::string DateUtils::DateTimeToIso8601(Date date) {
    std::string text = DateTimeToString(date);
    if (text.empty()) return text;
    text[text.find(' ')] = 'T';
    const auto unixSeconds =
        static_cast<std::time_t>(std::floor(date.secondsSinceReference + unixToReference));
    std::tm parts{};
    ::localtime_r(&unixSeconds, &parts);
    const long minutes = parts.tm_gmtoff / 60;
    return text + fmt::format("{}{:02}{:02}", minutes < 0 ? '-' : '+', std::abs(minutes) / 60,
                              std::abs(minutes) % 60);
}

std::optional<Date> DateUtils::StringToDateTime(std::string_view text) {
    const auto local = parse(text, patternOf(DatePattern::Display));
    return local ? fromLocal(*local) : std::nullopt;
}

Date DateUtils::IOSDateTimeOffset() {
    return Date{0};
}

Date DateUtils::UnixDateTimeOffset() {
    return Date{-unixToReference};
}

std::optional<Date> DateUtils::dateWithYear(int year, int month, int day) {
    if (!isCalendarDay(year, month, day)) return std::nullopt;
    return fromLocal({.year = year, .month = month, .day = day});
}

std::optional<Date> DateUtils::LongToIOSDateTime(std::int64_t secondsSince2001) {
    if (secondsSince2001 == 0) return std::nullopt;
    return existing(static_cast<double>(secondsSince2001));
}

std::optional<Date> DateUtils::DoubleToIOSDateTime(double secondsSince2001) {
    return existing(secondsSince2001);
}

std::string DateUtils::IOSDateTimeToString(std::int64_t secondsSince2001) {
    const auto date = LongToIOSDateTime(secondsSince2001);
    // Kept: twelve-hours.
    return date ? format(*date, DatePattern::TwelveHours) : "-";
}

std::string DateUtils::ConvertFromUnixTimestampToString(std::optional<double> unixSeconds) {
    if (!unixSeconds) return "";
    return format(Date{*unixSeconds - unixToReference}, DatePattern::DisplayMinutes);
}

std::optional<Date> DateUtils::ConvertFromUnixTimeStampToDateTime(double unixSeconds) {
    return existing(unixSeconds - unixToReference);
}

std::string DateUtils::doubleIOSDateTimeToString(double secondsSince2001) {
    const auto date = DoubleToIOSDateTime(secondsSince2001);
    return date ? DateTimeToString(*date) : " ";
}

std::string DateUtils::ConvertToString(std::optional<Date> date) {
    return date ? DateTimeToString(*date) : "";
}

std::string DateUtils::LongToString(std::int64_t secondsSince2001) {
    return ConvertToString(LongToIOSDateTime(secondsSince2001));
}

Date DateUtils::now() {
    const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
    return Date{std::chrono::duration<double>(sinceUnix).count() - unixToReference};
}

std::string DateUtils::format(Date date, DatePattern pattern) {
    const auto local = toLocal(date);
    return local ? write(*local, patternOf(pattern)) : "";
}

std::optional<Date> DateUtils::parseDisplayDate(std::string_view text) {
    const auto local = parseDisplay(text);
    return local ? fromLocal(*local) : std::nullopt;
}

Text DateUtils::reformatDisplayDate(std::string_view text, DatePattern pattern) {
    const auto local = parseDisplay(text);
    return local ? Text(write(*local, patternOf(pattern))) : std::nullopt;
}

}  // namespace salvor
