// Why a decode stopped, shared by the PER decoder and the Q.931 codec.
// Together with the bit offset and the path each codec reports, it tells a
// message cut at a segment boundary (Truncated) from one that is malformed.

#ifndef H323_DECODE_STATUS_H
#define H323_DECODE_STATUS_H

#include <cstddef>
#include <cstdint>

namespace h323 {

enum class DecodeStatus : uint8_t {
    Ok,
    Truncated,  // the input ended inside the value: more octets could complete it
    Invalid,    // the octets there cannot be a value of the type
    TooDeep,    // nesting beyond the decoder's limit
    TooLarge,   // a list, string, number or the whole value beyond the decoder's limits
};

constexpr size_t kDecodeStatusCount = 5;

// "ok", "truncated", "invalid", "too deep", "too large".
const char* statusName(DecodeStatus status);

}  // namespace h323

#endif
