#pragma once

namespace salvor {

/// A point in time, in seconds since 2001-01-01 00:00:00 UTC (the reference date of iOS).
/// Add 978307200 for Unix time.
struct Date {
    double secondsSinceReference = 0;

    friend bool operator==(Date a, Date b) = default;
    friend auto operator<=>(Date a, Date b) = default;  // NOLINT(modernize-use-nullptr): its own 0
};

}  // namespace salvor
