#pragma once

#include "AudioDecoder.h"

#include <cstdint>

namespace recorder {

// G.711 code words to 16-bit linear samples.
int16_t ulawToLinear(uint8_t code);
int16_t alawToLinear(uint8_t code);

enum G711PayloadType : uint8_t { kPcmu = 0, kPcma = 8 };

// One code word a sample; nothing to conceal with, and no state.
class G711Decoder : public AudioDecoder {
public:
    enum class Law { Mu, A };
    explicit G711Decoder(Law law) : law_(law) {}

    std::vector<int16_t> decode(std::string_view payload) override;
    int sampleRate() const override { return kNarrowbandRate; }
    int clockRate() const override { return kNarrowbandRate; }

private:
    Law law_;
};

}  // namespace recorder
