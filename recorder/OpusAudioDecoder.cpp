#include "OpusAudioDecoder.h"

#include "Log.h"

#include <opus.h>

#include <algorithm>

namespace recorder {
namespace {

// The longest packet Opus allows: 120 ms.
constexpr size_t kMostSamples = kWidebandRate * 120 / 1000;

}  // namespace

OpusAudioDecoder::OpusAudioDecoder() {
    int error = OPUS_OK;
    decoder_ = opus_decoder_create(kWidebandRate, 1, &error);
    if (error != OPUS_OK)
        log::error() << "Cannot start an Opus decoder: " << opus_strerror(error);
}

OpusAudioDecoder::~OpusAudioDecoder() {
    opus_decoder_destroy(decoder_);
}

std::vector<int16_t> OpusAudioDecoder::decode(std::string_view payload) {
    return run(reinterpret_cast<const unsigned char*>(payload.data()), payload.size(), kMostSamples);
}

// Without data the decoder extrapolates `count` samples from what it decoded before.
std::vector<int16_t> OpusAudioDecoder::concealLoss(size_t count) {
    return run(nullptr, 0, std::min(count, kMostSamples));
}

std::vector<int16_t> OpusAudioDecoder::run(const unsigned char* data, size_t size, size_t samples) {
    if (!decoder_)
        return {};
    std::vector<int16_t> pcm(samples);
    const int decoded =
        opus_decode(decoder_, data, static_cast<opus_int32>(size), pcm.data(), static_cast<int>(samples), 0);
    pcm.resize(static_cast<size_t>(std::max(decoded, 0)));
    return pcm;
}

}  // namespace recorder
