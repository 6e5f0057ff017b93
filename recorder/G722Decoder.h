#pragma once

#include "AudioDecoder.h"

struct g722_decode_state_s;

namespace recorder {

// G.722 at 64 kbit/s: each octet holds two samples at 16 kHz, yet its RTP clock runs at
// 8000 Hz, as RFC 3551 keeps it for historical reasons.
class G722Decoder : public AudioDecoder {
public:
    G722Decoder();
    ~G722Decoder() override;
    G722Decoder(const G722Decoder&) = delete;
    G722Decoder& operator=(const G722Decoder&) = delete;

    std::vector<int16_t> decode(std::string_view payload) override;
    int sampleRate() const override { return kWidebandRate; }
    int clockRate() const override { return kNarrowbandRate; }

private:
    g722_decode_state_s* state_;
};

}  // namespace recorder
