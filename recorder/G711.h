#pragma once

#include <cstdint>

namespace recorder {

// G.711 code words to 16-bit linear samples.
int16_t ulawToLinear(uint8_t code);
int16_t alawToLinear(uint8_t code);

enum G711PayloadType : uint8_t { kPcmu = 0, kPcma = 8 };

}  // namespace recorder
