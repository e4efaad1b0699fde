#include "Rfc3339.h"

#include <cstdio>
#include <ctime>

namespace orvan::sim::Rfc3339 {

std::string string(TimePoint time) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

std::optional<TimePoint> parse(const std::string& text) {
    int year, month, day, hour, minute, second, used = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &year, &month, &day, &hour, &minute, &second,
                    &used) != 6 ||
        used != 19)
        return std::nullopt;
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    size_t at = 19;
    if (at < text.size() && text[at] == '.') {
        size_t digits = ++at;
        while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
        if (at == digits) return std::nullopt;
    }
    long offset = 0;
    std::string zone = text.substr(at);
    if (zone == "Z" || zone == "z") {
        offset = 0;
    } else {
        int zoneHour, zoneMinute, zoneUsed = 0;
        if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') ||
            std::sscanf(zone.c_str() + 1, "%2d:%2d%n", &zoneHour, &zoneMinute, &zoneUsed) != 2 || zoneUsed != 5)
            return std::nullopt;
        offset = (zoneHour * 3600L + zoneMinute * 60L) * (zone[0] == '-' ? -1 : 1);
    }
    std::tm utc{};
    utc.tm_year = year - 1900;
    utc.tm_mon = month - 1;
    utc.tm_mday = day;
    utc.tm_hour = hour;
    utc.tm_min = minute;
    utc.tm_sec = second;
    std::time_t seconds = timegm(&utc) - offset;
    return std::chrono::system_clock::from_time_t(seconds);
}

} // namespace orvan::sim::Rfc3339
