#include "G722Decoder.h"

#include <algorithm>
#include <cstdint>
// The library's own headers need stdint and its telephony declarations first.
#include <spandsp/telephony.h>
#include <spandsp/g722.h>

namespace recorder {
namespace {

constexpr int kBitRate = 64000;
constexpr size_t kSamplesPerOctet = 2;

}  // namespace

G722Decoder::G722Decoder() : state_(g722_decode_init(nullptr, kBitRate, 0)) {}

G722Decoder::~G722Decoder() {
    g722_decode_free(state_);
}

std::vector<int16_t> G722Decoder::decode(std::string_view payload) {
    std::vector<int16_t> samples(payload.size() * kSamplesPerOctet);
    const int decoded = g722_decode(state_, samples.data(), reinterpret_cast<const uint8_t*>(payload.data()),
                                    static_cast<int>(payload.size()));
    samples.resize(static_cast<size_t>(std::max(decoded, 0)));
    return samples;
}

}  // namespace recorder
