#ifndef SNIFFER_TESTS_FRAMES_H
#define SNIFFER_TESTS_FRAMES_H

#include <sys/time.h>
#include <cstdint>

#include "Network.h"

// Ethernet frames built byte by byte, as a capture device would deliver them.
struct Endpoint {
    const char* ip;
    uint16_t port;
};

constexpr uint16_t etherTypeIpv4 = 0x0800;
constexpr uint16_t etherTypeVlan = 0x8100;
constexpr uint16_t etherTypeQinQ = 0x88A8;

struct FrameOptions {
    uint16_t etherType = etherTypeIpv4;  // 0x8100: one tag; 0x88A8: outer and inner tag
    int ipOptionWords = 0;               // 32-bit words of IP options (NOPs)
    int tcpDataOffset = 5;               // TCP header length in 32-bit words
    uint32_t tcpSeq = 1000;
    uint8_t tcpFlags = 0x18;  // PSH, ACK
};

Bytes udpFrame(Endpoint src, Endpoint dst, const Bytes& payload, const FrameOptions& options = {});
Bytes tcpFrame(Endpoint src, Endpoint dst, const Bytes& payload, const FrameOptions& options = {});
// An IPv4 frame of any protocol whose header fields are given raw.
Bytes ipFrame(uint8_t protocol, uint16_t totalLength, uint16_t id, uint16_t fragment, uint8_t ttl, uint16_t checksum,
              const Bytes& body);
// Bytes [from, to) of the IP payload `body` as an IPv4 fragment from `src`
// to `dst`; the one that reaches the end of `body` is the last.
Bytes ipFragment(uint8_t protocol, const char* src, const char* dst, uint16_t id, const Bytes& body, std::size_t from,
                 std::size_t to);
// The UDP header and payload of udpFrame(src, dst, payload), for cutting into fragments.
Bytes udpDatagram(Endpoint src, Endpoint dst, const Bytes& payload);
// An IPv4 packet (header of 20 bytes, not fragmented) around `body`.
Bytes ipPacket(uint8_t protocol, const char* src, const char* dst, const Bytes& body);
// An Ethernet frame of that EtherType with no tag added.
Bytes etherFrame(uint16_t etherType, const Bytes& body);
// What an Ethernet frame carries.
Bytes withoutEthernet(const Bytes& frame);
// `packet` behind a link header.
Bytes behind(Bytes link, const Bytes& packet);
// A Linux cooked (v1) header for a packet of that protocol (an EtherType).
Bytes cooked(uint16_t protocol);
// Zero bytes up to the 60-byte Ethernet minimum, as a NIC pads short frames.
Bytes padded(Bytes frame);

// Hands a frame to the engine as the capture callback would receive it;
// a `wireLength` beyond the frame's size says it was cut at the snap length.
void capture(const Bytes& frame, std::size_t wireLength = 0);
// The same, with the capture time the header states.
void captureAt(const Bytes& frame, timeval time, std::size_t wireLength = 0);

#endif
