#include "G711.h"

#include <algorithm>
#include <array>

namespace recorder {

// μ-law: the code word is sent inverted; 3 exponent bits and 4 mantissa bits encode a magnitude
// with a bias of 33 (132 after the 2-bit shift to 16-bit scale) that is taken off again.
int16_t ulawToLinear(uint8_t code) {
    code = static_cast<uint8_t>(~code);
    const int exponent = (code >> 4) & 0x07;
    const int magnitude = ((((code & 0x0f) << 3) + 0x84) << exponent) - 0x84;
    return static_cast<int16_t>((code & 0x80) ? -magnitude : magnitude);
}

// A-law: even bits are sent inverted; segment 0 is linear, each further segment doubles the
// step. The magnitude is the middle of the quantisation interval.
int16_t alawToLinear(uint8_t code) {
    code ^= 0x55;
    const int segment = (code >> 4) & 0x07;
    int magnitude = ((code & 0x0f) << 4) + 8;
    if (segment > 0)
        magnitude = (magnitude + 0x100) << (segment - 1);
    return static_cast<int16_t>((code & 0x80) ? magnitude : -magnitude);
}

namespace {

using Table = std::array<int16_t, 256>;

Table tableOf(int16_t (*toLinear)(uint8_t)) {
    Table table;
    for (int code = 0; code < 256; ++code)
        table[static_cast<size_t>(code)] = toLinear(static_cast<uint8_t>(code));
    return table;
}

}  // namespace

// Every code word decoded once: a packet is then a table look-up per sample.
std::vector<int16_t> G711Decoder::decode(std::string_view payload) {
    static const Table mu = tableOf(ulawToLinear), a = tableOf(alawToLinear);
    const Table& table = law_ == Law::Mu ? mu : a;
    std::vector<int16_t> samples(payload.size());
    std::transform(payload.begin(), payload.end(), samples.begin(),
                   [&table](char code) { return table[static_cast<uint8_t>(code)]; });
    return samples;
}

}  // namespace recorder
