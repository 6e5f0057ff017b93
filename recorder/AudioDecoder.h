#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace recorder {

// The rates call.wav is written at: narrowband when every decoded stream of the call is, else
// wideband.
constexpr int kNarrowbandRate = 8000;
constexpr int kWidebandRate = 16000;

// Turns the payloads of one RTP source into 16-bit linear samples, keeping the state the codec
// carries from one packet to the next.
class AudioDecoder {
public:
    virtual ~AudioDecoder() = default;

    // The samples of one packet; none when the payload cannot be decoded.
    virtual std::vector<int16_t> decode(std::string_view payload) = 0;
    // About `count` samples standing in for one lost packet; none, that is silence, where the
    // codec has no concealment.
    virtual std::vector<int16_t> concealLoss(size_t count);
    // Of the decoded samples: kNarrowbandRate or kWidebandRate.
    virtual int sampleRate() const = 0;
    // Of the RTP timestamps, which is not always the sample rate.
    virtual int clockRate() const = 0;
};

// A decoder for the codec the signalling names ("PCMA/8000", "opus/48000/2": the encoding name
// counts, in any case), or for the static payload type when the name is empty. Nothing for
// codecs without a decoder, nor for payloads that are not audio (telephone events, comfort noise).
std::unique_ptr<AudioDecoder> makeAudioDecoder(std::string_view codecName, int payloadType);

}  // namespace recorder
