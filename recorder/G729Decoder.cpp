#include "G729Decoder.h"

// The library's headers declare C functions without saying so.
extern "C" {
#include <bcg729/decoder.h>
}

#include <array>

namespace recorder {
namespace {

constexpr size_t kFrameBytes = 10;
constexpr size_t kSidBytes = 2;
constexpr size_t kFrameSamples = 80;

}  // namespace

G729Decoder::G729Decoder() : context_(initBcg729DecoderChannel()) {}

G729Decoder::~G729Decoder() {
    closeBcg729DecoderChannel(context_);
}

std::vector<int16_t> G729Decoder::decode(std::string_view payload) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(payload.data());
    std::vector<int16_t> samples;
    size_t at = 0;
    for (; payload.size() - at >= kFrameBytes; at += kFrameBytes)
        decodeFrame(bytes + at, kFrameBytes, false, samples);
    if (payload.size() - at == kSidBytes)
        decodeFrame(bytes + at, kSidBytes, false, samples);
    return samples;
}

std::vector<int16_t> G729Decoder::concealLoss(size_t count) {
    const std::array<uint8_t, kFrameBytes> none{};
    std::vector<int16_t> samples;
    for (size_t frame = 0; frame < count / kFrameSamples; ++frame)
        decodeFrame(none.data(), kFrameBytes, true, samples);
    return samples;
}

void G729Decoder::decodeFrame(const uint8_t* frame, uint8_t length, bool erased, std::vector<int16_t>& samples) {
    const size_t at = samples.size();
    samples.resize(at + kFrameSamples);
    const bool sid = length == kSidBytes;
    bcg729Decoder(context_, frame, length, erased, sid, 0, samples.data() + at);
}

}  // namespace recorder
