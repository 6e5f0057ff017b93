#include "Rtcp.h"

#include <arpa/inet.h>

#include <cstring>

namespace recorder {
namespace {

constexpr uint8_t kSenderReport = 200, kReceiverReport = 201;

template <typename T>
T read(std::string_view bytes, size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

void readBlocks(std::string_view packet, size_t offset, unsigned count, uint32_t reporter, RtcpCompound& out) {
    for (unsigned i = 0; i < count && offset + sizeof(rtcp_rr) <= packet.size(); ++i, offset += sizeof(rtcp_rr)) {
        const auto block = read<rtcp_rr>(packet, offset);
        // Sign-extend the 24-bit count.
        const uint32_t lost = (uint32_t{block.lost[0]} << 16) | (uint32_t{block.lost[1]} << 8) | block.lost[2];
        out.blocks.push_back({reporter, ntohl(block.ssrc), block.fraction / 256.0, static_cast<int32_t>(lost << 8) >> 8,
                              ntohl(block.last_seq), ntohl(block.jitter)});
    }
}

}  // namespace

RtcpCompound parseRtcp(std::string_view datagram) {
    RtcpCompound out;
    size_t offset = 0;
    while (offset + sizeof(rtcp_common) <= datagram.size()) {
        const auto common = read<rtcp_common>(datagram, offset);
        const size_t length = 4 * (size_t{ntohs(common.length)} + 1);
        if ((common.vprc >> 6) != 2 || offset + length > datagram.size())
            break;
        const std::string_view packet = datagram.substr(offset, length);
        const unsigned count = common.vprc & 0x1f;
        const size_t body = sizeof(rtcp_common);
        if (common.pt == kSenderReport && packet.size() >= body + sizeof(rtcp_sr)) {
            const auto sr = read<rtcp_sr>(packet, body);
            out.senderReports.push_back({ntohl(sr.ssrc), ntohl(sr.rtp_ts), ntohl(sr.psent), ntohl(sr.osent)});
            readBlocks(packet, body + sizeof(rtcp_sr), count, ntohl(sr.ssrc), out);
        } else if (common.pt == kReceiverReport && packet.size() >= body + 4) {
            readBlocks(packet, body + 4, count, ntohl(read<uint32_t>(packet, body)), out);
        }
        offset += length;
    }
    return out;
}

}  // namespace recorder
