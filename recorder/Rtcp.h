#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace recorder {

// RTCP wire formats (RFC 3550 section 6 and appendix A.1), all fields big-endian.
struct rtcp_common {
    uint8_t vprc;     // version 2 bits, padding 1, count 5 (report blocks for SR and RR)
    uint8_t pt;       // packet type: SR 200, RR 201, SDES 202, BYE 203, APP 204
    uint16_t length;  // of the packet in 32-bit words minus one, this header included
} __attribute__((packed));
static_assert(sizeof(rtcp_common) == 4);

// What follows the common header of an SR; an RR has the ssrc only.
struct rtcp_sr {
    uint32_t ssrc;     // sender
    uint32_t ntp_sec;  // NTP timestamp
    uint32_t ntp_frac;
    uint32_t rtp_ts;  // the same instant on the RTP timestamp clock
    uint32_t psent;   // packets sent since the sender began
    uint32_t osent;   // payload octets sent
} __attribute__((packed));
static_assert(sizeof(rtcp_sr) == 24);

struct rtcp_rr {
    uint32_t ssrc;      // the source this block reports on
    uint8_t fraction;   // fraction lost since the previous report, in 1/256
    uint8_t lost[3];    // cumulative number of packets lost, signed 24 bits
    uint32_t last_seq;  // extended highest sequence number received
    uint32_t jitter;    // interarrival jitter, in timestamp units
    uint32_t lsr;       // last SR packet from this source
    uint32_t dlsr;      // delay since last SR packet
} __attribute__((packed));
static_assert(sizeof(rtcp_rr) == 24);

struct SenderReport {
    uint32_t ssrc = 0;
    uint32_t rtpTimestamp = 0;
    uint32_t packetCount = 0;
    uint32_t octetCount = 0;
};

struct ReportBlock {
    uint32_t reporter = 0;    // SSRC of the SR or RR that carried the block
    uint32_t source = 0;      // SSRC reported on
    double fractionLost = 0;  // 0 to 1
    int32_t cumulativeLost = 0;
    uint32_t highestSequence = 0;
    uint32_t jitter = 0;  // timestamp units
};

struct RtcpCompound {
    std::vector<SenderReport> senderReports;
    std::vector<ReportBlock> blocks;
};

// Reads the SRs and RRs of a compound RTCP packet and skips SDES, BYE, APP and any other type.
// Every length is checked against the datagram: reading stops at the first packet that is not
// version 2 or does not fit, keeping what came before it.
RtcpCompound parseRtcp(std::string_view datagram);

}  // namespace recorder
