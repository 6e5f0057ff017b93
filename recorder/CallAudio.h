#pragma once

#include "Clock.h"
#include "Rtp.h"

#include <array>
#include <filesystem>
#include <optional>
#include <vector>

namespace recorder {

// The G.711 audio of one call, one channel per direction, on a common timeline: a source's
// first packet is placed by its arrival time, the following ones by their RTP timestamps. A
// new SSRC or a jump in the timestamps places the source anew by arrival.
class CallAudio {
public:
    static constexpr int kChannels = 2;
    static constexpr int kSampleRate = 8000;

    // Adds the audio of one packet; packets of other codecs are left out.
    void add(int channel, TimePoint arrival, const RtpPacket& packet);

    bool empty() const;
    double duration() const;  // seconds

    // 16-bit PCM, 8000 Hz, one channel per direction.
    bool writeWav(const std::filesystem::path& path) const;

private:
    struct Channel {
        std::vector<int16_t> samples;
        bool anchored = false;
        uint32_t ssrc = 0;
        uint32_t anchorTimestamp = 0;
        uint32_t lastTimestamp = 0;
        int64_t anchorIndex = 0;
    };

    size_t length() const;

    std::array<Channel, kChannels> channels_;
    std::optional<TimePoint> origin_;  // arrival of the call's first G.711 packet
};

}  // namespace recorder
