#pragma once
#include <meridex/Export.h>
#include <compare>
#include <cstdint>
#include <ctime>

namespace meridex {

// A calendar date-time with one-second resolution. Whether it is local time
// or UTC is said by whoever passes it.
struct MERIDEX_EXPORT DateTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;

    bool operator==(const DateTime&) const = default;
    auto operator<=>(const DateTime&) const = default;

    static DateTime FromLocal(std::time_t t);
    static DateTime FromUtc(std::time_t t);
    static DateTime Now();
};

// The Windows SYSTEMTIME record: 16-bit fields.
struct MERIDEX_EXPORT SystemTime {
    std::int16_t wYear = 0;
    std::int16_t wMonth = 0;
    std::int16_t wDayOfWeek = 0;
    std::int16_t wDay = 0;
    std::int16_t wHour = 0;
    std::int16_t wMinute = 0;
    std::int16_t wSecond = 0;
    std::int16_t wMilliseconds = 0;
    bool operator==(const SystemTime&) const = default;
};

}  // namespace meridex
