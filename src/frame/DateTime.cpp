#include <meridex/frame/DateTime.h>

namespace meridex {
namespace {

DateTime FromTm(const std::tm& tm) {
    return DateTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec};
}

}  // namespace

DateTime DateTime::FromLocal(std::time_t t) {
    std::tm tm{};
    localtime_r(&t, &tm);
    return FromTm(tm);
}

DateTime DateTime::FromUtc(std::time_t t) {
    std::tm tm{};
    gmtime_r(&t, &tm);
    return FromTm(tm);
}

DateTime DateTime::Now() { return FromLocal(std::time(nullptr)); }

}  // namespace meridex
