#pragma once

#include <chrono>
#include <string>

namespace recorder {

// Wall-clock time: arrival stamps in the pcap, call times in the JSON, and the timers.
using Clock = std::chrono::system_clock;
using TimePoint = Clock::time_point;
using Milliseconds = std::chrono::milliseconds;

// "2024-05-01T12:00:00.123Z"
std::string isoTime(TimePoint time);

double seconds(Clock::duration duration);

}  // namespace recorder
