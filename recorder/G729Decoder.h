#pragma once

#include "AudioDecoder.h"

struct bcg729DecoderChannelContextStruct_struct;

namespace recorder {

// G.729 (Annexes A and B): a packet holds any number of 10-byte frames of 10 ms, and may end
// with a 2-byte silence descriptor from which the decoder makes comfort noise. Lost frames are
// concealed by the decoder from the frames before them.
class G729Decoder : public AudioDecoder {
public:
    G729Decoder();
    ~G729Decoder() override;
    G729Decoder(const G729Decoder&) = delete;
    G729Decoder& operator=(const G729Decoder&) = delete;

    std::vector<int16_t> decode(std::string_view payload) override;
    std::vector<int16_t> concealLoss(size_t count) override;
    int sampleRate() const override { return kNarrowbandRate; }
    int clockRate() const override { return kNarrowbandRate; }

private:
    void decodeFrame(const uint8_t* frame, uint8_t length, bool erased, std::vector<int16_t>& samples);

    bcg729DecoderChannelContextStruct_struct* context_;
};

}  // namespace recorder
