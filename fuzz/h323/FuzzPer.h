// Shared body of the aligned-PER fuzz targets: whatever decodes must print,
// encode, and decode again to the same value.

#ifndef H323_FUZZ_PER_H
#define H323_FUZZ_PER_H

#include <cstdint>
#include <vector>

#include "h323/Per.h"

namespace h323::fuzz {

inline void decodeEncodeDecode(const per::Type& type, const uint8_t* data, size_t size) {
    static per::Decoder first, second;
    per::Value v = first.decode(type, data, size);
    if (!v) {
        // Every failure says why and where.
        if (first.status() == DecodeStatus::Ok || first.stopPath().empty())
            __builtin_trap();
        return;
    }
    if (first.status() != DecodeStatus::Ok)
        __builtin_trap();
    std::vector<uint8_t> wire;
    if (!per::encode(v, wire))
        __builtin_trap();
    per::Value again = second.decode(type, wire.data(), wire.size());
    if (!again || per::toText(again) != per::toText(v))
        __builtin_trap();
}

}  // namespace h323::fuzz

#endif
