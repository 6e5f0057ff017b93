#include "Dtmf.h"

#include <algorithm>
#include <cmath>

namespace recorder {

// RFC 4733 2.3: event (8 bits), end 1 bit, reserved 1, volume 6, duration (16 bits).
void DtmfEvents::add(const RtpPacket& packet, TimePoint arrival, int clockRate, const char* speaker) {
    static constexpr char kDigits[] = "0123456789*#ABCD";
    if (packet.payload.size() < 4)
        return;
    const auto* bytes = reinterpret_cast<const uint8_t*>(packet.payload.data());
    if (bytes[0] > 15)
        return;
    const uint32_t duration = (uint32_t{bytes[2]} << 8) | bytes[3];
    const auto [found, added] = byStart_.try_emplace({packet.ssrc, packet.timestamp}, events_.size());
    if (added) {
        if (events_.size() >= kMaxEvents) {
            byStart_.erase(found);
            return;
        }
        events_.push_back({kDigits[bytes[0]], arrival, duration, clockRate, speaker});
        return;
    }
    Event& event = events_[found->second];
    event.duration = std::max(event.duration, duration);
    event.start = std::min(event.start, arrival);
}

Json::Array DtmfEvents::toJson() const {
    Json::Array events;
    for (const Event& event : events_)
        events.push_back(Json::Object{
            {"digit", std::string(1, event.digit)},
            {"start", isoTime(event.start)},
            {"duration_ms", static_cast<int64_t>(std::lround(event.duration * 1000.0 / event.clockRate))},
            {"speaker", event.speaker},
        });
    return events;
}

}  // namespace recorder
