#ifndef SNIFFER_HEP_ENCODER_H
#define SNIFFER_HEP_ENCODER_H

#include <sys/time.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What a HEP packet says about one captured SIP message. Addresses and
// ports in host order.
struct HepMessage {
    timeval captured;
    uint32_t srcIp;
    uint16_t srcPort;
    uint32_t dstIp;
    uint16_t dstPort;
    const uint8_t* payload;
    std::size_t length;
};

// Builds HEPv3 packets: the "HEP3" header with the total length, then
// chunks of vendor 0, each a type, a length that counts its own header, and
// a value; every number big-endian.
class HepEncoder {
public:
#pragma pack(push, 1)
    struct hep_header {
        char id[4];
        uint16_t length;
    };
    struct hep_chunk {
        uint16_t vendor_id;
        uint16_t type_id;
        uint16_t length;
    };
#pragma pack(pop)
    static_assert(sizeof(hep_header) == 6, "the HEP header is 6 bytes");
    static_assert(sizeof(hep_chunk) == 6, "a HEP chunk header is 6 bytes");

    enum ChunkType : uint16_t {
        ipFamily = 1,
        ipProtocol = 2,
        ipv4Source = 3,
        ipv4Destination = 4,
        sourcePort = 7,
        destinationPort = 8,
        timestampSeconds = 9,
        timestampMicroseconds = 10,
        protocolType = 11,
        captureAgentId = 12,
        authKey = 14,
        payload = 15,
    };
    static constexpr uint8_t familyIpv4 = 2;
    static constexpr uint8_t protocolUdp = 17;
    static constexpr uint8_t protocolSip = 1;

    HepEncoder(uint32_t captureId, std::string password);

    // The packet; empty when it would be longer than the header's 16-bit
    // length can state.
    std::vector<uint8_t> encode(const HepMessage& message) const;

private:
    const uint32_t captureId;
    const std::string password;
};

#endif
