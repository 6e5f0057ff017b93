#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace recorder {

struct rtp_header {
    uint8_t vpxcc;  // version 2 bits, padding 1, extension 1, CSRC count 4
    uint8_t mpt;    // marker 1 bit, payload type 7
    uint16_t seq;
    uint32_t ts;
    uint32_t ssrc;
} __attribute__((packed));
static_assert(sizeof(rtp_header) == 12);

struct RtpPacket {
    uint8_t payloadType = 0;
    uint16_t sequence = 0;
    uint32_t timestamp = 0;
    uint32_t ssrc = 0;
    std::string_view payload;  // without CSRC list, header extension and padding
};

// Nothing when `datagram` is not version-2 RTP (RTCP included).
std::optional<RtpPacket> parseRtp(std::string_view datagram);

// Counts lost and late packets of one source from their sequence numbers. A packet is lost
// when its number never arrived between the lowest and highest seen; it is out of order when
// it arrives after a higher number.
class SequenceCounter {
public:
    void add(uint16_t sequence);
    uint64_t lost() const;
    uint64_t outOfOrder() const { return outOfOrder_; }

private:
    bool started_ = false;
    int64_t lowest_ = 0;   // extended sequence numbers: the 16-bit value plus wrap-arounds
    int64_t highest_ = 0;
    uint64_t received_ = 0;
    uint64_t outOfOrder_ = 0;
};

}  // namespace recorder
