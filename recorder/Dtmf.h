#pragma once

#include "Clock.h"
#include "Json.h"
#include "Rtp.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace recorder {

// The DTMF digits of a call, sent as RFC 4733 events: one per event, however many packets
// carry it (an event's packets share its timestamp, and its end packet is sent three times).
class DtmfEvents {
public:
    static constexpr size_t kMaxEvents = 10000;

    // One packet of the telephone-event payload type. Events other than 0-9 * # A-D are left out.
    void add(const RtpPacket& packet, TimePoint arrival, int clockRate, const char* speaker);
    bool empty() const { return events_.empty(); }
    // [{"digit", "start", "duration_ms", "speaker"}] in the order the events began.
    Json::Array toJson() const;

private:
    struct Event {
        char digit = 0;
        TimePoint start;        // arrival of its first packet
        uint32_t duration = 0;  // the longest its packets gave, timestamp units
        int clockRate = 8000;
        std::string speaker;
    };

    std::vector<Event> events_;
    std::map<std::pair<uint32_t, uint32_t>, size_t> byStart_;  // (SSRC, timestamp) to its event
};

}  // namespace recorder
