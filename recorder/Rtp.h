#pragma once

#include <bitset>
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

// What a packet's sequence number said on arrival.
enum class SequenceArrival { First, Next, Late, Duplicate };

// Counts lost, late and repeated packets of one source from their sequence numbers. A packet
// is lost when its number never arrived between the lowest and highest seen; it is out of
// order when it arrives after a higher number; it is a duplicate when its number already
// arrived. Repeats are recognised among the last kWindow numbers below the highest only, so
// memory stays bounded; an older repeat counts as out of order.
class SequenceCounter {
public:
    static constexpr int kWindow = 1024;

    SequenceArrival add(uint16_t sequence);
    uint64_t lost() const;
    uint64_t outOfOrder() const { return outOfOrder_; }
    uint64_t duplicates() const { return duplicates_; }
    uint64_t received() const { return received_; }  // distinct numbers, duplicates left out
    bool started() const { return started_; }
    // Extended sequence numbers: the 16-bit value plus wrap-arounds.
    int64_t lowest() const { return lowest_; }
    int64_t highest() const { return highest_; }

private:
    bool seen(int64_t extended) const { return seen_[static_cast<uint64_t>(extended) % kWindow]; }
    void mark(int64_t extended) { seen_[static_cast<uint64_t>(extended) % kWindow] = true; }

    bool started_ = false;
    int64_t lowest_ = 0;
    int64_t highest_ = 0;
    uint64_t received_ = 0;
    uint64_t outOfOrder_ = 0;
    uint64_t duplicates_ = 0;
    std::bitset<kWindow> seen_;  // numbers highest_ - kWindow + 1 to highest_, by number modulo kWindow
};

// True when `datagram` is RTCP rather than RTP: version 2 with an RTCP packet type (200 to 204)
// where RTP has its marker and payload type. parseRtp rejects these too.
bool looksLikeRtcp(std::string_view datagram);

}  // namespace recorder
