#include "Clock.h"

#include <cstdio>
#include <ctime>

namespace recorder {

std::string isoTime(TimePoint time) {
    const auto since = time.time_since_epoch();
    const std::time_t whole = std::chrono::duration_cast<std::chrono::seconds>(since).count();
    const auto millis = std::chrono::duration_cast<Milliseconds>(since).count() % 1000;
    std::tm utc{};
    gmtime_r(&whole, &utc);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900, utc.tm_mon + 1,
                  utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, static_cast<int>(millis));
    return text;
}

double seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace recorder
