#pragma once

#include "AudioDecoder.h"
#include "Clock.h"
#include "FileCache.h"
#include "Rtp.h"
#include "SampleSpool.h"

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace recorder {

// The audio of one call, one channel per direction, on a common timeline: a source's first
// packet is placed by its arrival time, the following ones by their RTP timestamps. A new SSRC,
// a new codec or a jump in the timestamps places the source anew by arrival. What no packet
// covers stays silent, except a single lost packet of a codec that can conceal it.
//
// The timeline runs at the wideband rate; narrowband audio is interpolated to it, its own
// samples on every other place. call.wav is written at 8000 Hz when every decoded stream was
// narrowband (G.711, G.729), taking those samples back unchanged, and at 16000 Hz when one was
// G.722 or Opus.
//
// The channels go to files in the call's folder through `files` as the packets come: add() and
// close() run on the thread that owns `files`; writeWav() may run on any once close() returned.
class CallAudio {
public:
    static constexpr int kChannels = 2;

    CallAudio(FileCache& files, const std::filesystem::path& folder);
    ~CallAudio();
    CallAudio(const CallAudio&) = delete;
    CallAudio& operator=(const CallAudio&) = delete;

    // Adds the audio of one packet; false when it is not decoded: a codec without a decoder or
    // no audio at all. `codecName` is the signalling's name for its payload type, empty when
    // it gave none.
    bool add(int channel, TimePoint arrival, const RtpPacket& packet, std::string_view codecName);
    // Completes the channel files; nothing is added afterwards.
    void close();

    bool empty() const;
    int sampleRate() const;          // of call.wav
    double duration() const;         // seconds
    size_t bufferedSamples() const;  // held in memory, at most kChannels * SampleSpool::kWindowSamples

    // 16-bit PCM, one channel per direction, assembled from the channel files a chunk at a time;
    // the channel files are removed.
    bool writeWav(const std::filesystem::path& path) const;

private:
    struct Channel {
        explicit Channel(SampleSpool spool) : samples(std::move(spool)) {}

        SampleSpool samples;
        std::unique_ptr<AudioDecoder> decoder;
        int payloadType = -1;
        bool anchored = false;
        uint32_t ssrc = 0;
        uint32_t anchorTimestamp = 0;
        int64_t anchorIndex = 0;
        uint32_t lastTimestamp = 0;
        uint32_t nextTimestamp = 0;  // where the last packet's audio ended
        size_t lastCount = 0;        // samples decoded from the last packet
        int16_t lastSample = 0;      // narrowband, for the interpolation
    };

    bool selectDecoder(Channel& channel, int payloadType, std::string_view codecName);
    bool lostOnePacket(const Channel& channel, const RtpPacket& packet) const;
    int64_t place(Channel& channel, TimePoint arrival, const RtpPacket& packet);
    int64_t timelineIndex(const Channel& channel, uint32_t timestamp) const;
    void put(Channel& channel, int64_t index, const std::vector<int16_t>& decoded);
    int64_t length() const;

    std::array<Channel, kChannels> channels_;
    std::optional<TimePoint> origin_;  // arrival of the call's first decoded packet
    bool wideband_ = false;
    bool closed_ = false;
};

}  // namespace recorder
