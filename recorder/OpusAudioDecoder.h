#pragma once

#include "AudioDecoder.h"

struct OpusDecoder;

namespace recorder {

// Opus, decoded to one channel at the recorder's wideband rate whatever the sender's bandwidth;
// its RTP clock is 48000 Hz in any case (RFC 7587). The decoder conceals lost packets itself.
class OpusAudioDecoder : public AudioDecoder {
public:
    OpusAudioDecoder();
    ~OpusAudioDecoder() override;
    OpusAudioDecoder(const OpusAudioDecoder&) = delete;
    OpusAudioDecoder& operator=(const OpusAudioDecoder&) = delete;

    std::vector<int16_t> decode(std::string_view payload) override;
    std::vector<int16_t> concealLoss(size_t count) override;
    int sampleRate() const override { return kWidebandRate; }
    int clockRate() const override { return 48000; }

private:
    std::vector<int16_t> run(const unsigned char* data, size_t size, size_t samples);

    OpusDecoder* decoder_;
};

}  // namespace recorder
