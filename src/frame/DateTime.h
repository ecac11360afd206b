#pragma once
#include <meridex/Export.h>
#include <compare>
#include <cstdint>
#include <ctime>

namespace meridex {

/// A calendar date-time with one-second resolution. Whether it is local time
/// or UTC is said by whoever passes it.
struct MERIDEX_EXPORT DateTime {
    int year = 1899;   ///< Four-digit year.
    int month = 12;    ///< 1..12.
    int day = 30;      ///< 1..31.
    int hour = 0;      ///< 0..23.
    int minute = 0;    ///< 0..59.
    int second = 0;    ///< 0..59.

    /// Same fields.
    bool operator==(const DateTime&) const = default;
    /// Chronological order (field by field, year first).
    auto operator<=>(const DateTime&) const = default;

    /// A time_t as local time.
    static DateTime FromLocal(std::time_t t);
    /// A time_t as UTC.
    static DateTime FromUtc(std::time_t t);
    /// The current local time.
    static DateTime Now();
};

/// The Windows SYSTEMTIME record: 16-bit fields.
struct MERIDEX_EXPORT SystemTime {
    std::int16_t wYear = 0;          ///< Year.
    std::int16_t wMonth = 0;         ///< 1..12.
    std::int16_t wDayOfWeek = 0;     ///< 0 (Sunday)..6.
    std::int16_t wDay = 0;           ///< Day of the month.
    std::int16_t wHour = 0;          ///< 0..23.
    std::int16_t wMinute = 0;        ///< 0..59.
    std::int16_t wSecond = 0;        ///< 0..59.
    std::int16_t wMilliseconds = 0;  ///< 0..999.
    /// Same fields.
    bool operator==(const SystemTime&) const = default;
};

}  // namespace meridex
