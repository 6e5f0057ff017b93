#pragma once

#include "Clock.h"
#include "Wire.h"

namespace recorder {

// Probes the sniffer every `interval` and says so when a reply takes longer than that.
class Heartbeat {
public:
    // The first probe goes out one interval after `start`.
    Heartbeat(CommandSink& sniffer, Milliseconds interval, TimePoint start)
        : sniffer_(sniffer), interval_(interval), nextProbe_(start + interval) {}

    void tick(TimePoint now);
    void replied(TimePoint now);
    // The sniffer went away: what was asked of it will not be answered.
    void reset();
    // The last answered probe's round trip; negative before any.
    Milliseconds lastRoundTrip() const { return lastRoundTrip_; }

private:
    CommandSink& sniffer_;
    Milliseconds interval_;
    TimePoint nextProbe_;
    TimePoint askedAt_{};
    bool waiting_ = false;
    bool lateReported_ = false;
    Milliseconds lastRoundTrip_{-1};
};

}  // namespace recorder
