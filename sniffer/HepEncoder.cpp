#include "HepEncoder.h"

#include <arpa/inet.h>
#include <cstring>

namespace {
constexpr std::size_t maxPacketLength = 0xFFFF;

class ChunkWriter {
public:
    explicit ChunkWriter(std::vector<uint8_t>& packet) : packet(packet) {}

    void bytes(uint16_t type, const void* value, std::size_t length) {
        HepEncoder::hep_chunk chunk{0, htons(type), htons(static_cast<uint16_t>(sizeof chunk + length))};
        append(&chunk, sizeof chunk);
        append(value, length);
    }
    void u8(uint16_t type, uint8_t value) { bytes(type, &value, sizeof value); }
    void u16(uint16_t type, uint16_t value) {
        const uint16_t wire = htons(value);
        bytes(type, &wire, sizeof wire);
    }
    void u32(uint16_t type, uint32_t value) {
        const uint32_t wire = htonl(value);
        bytes(type, &wire, sizeof wire);
    }

private:
    void append(const void* data, std::size_t length) {
        const auto* from = static_cast<const uint8_t*>(data);
        packet.insert(packet.end(), from, from + length);
    }
    std::vector<uint8_t>& packet;
};
}  // namespace

HepEncoder::HepEncoder(uint32_t captureId, std::string password)
    : captureId(captureId), password(std::move(password)) {}

std::vector<uint8_t> HepEncoder::encode(const HepMessage& message) const {
    // The header, then eleven chunks: family, protocol, two addresses, two
    // ports, seconds, microseconds, protocol type, agent id and payload.
    constexpr std::size_t valueBytes = 1 + 1 + 4 + 4 + 2 + 2 + 4 + 4 + 1 + 4;
    constexpr std::size_t fixedLength = sizeof(hep_header) + 11 * sizeof(hep_chunk) + valueBytes;
    const std::size_t total =
        fixedLength + (password.empty() ? 0 : sizeof(hep_chunk) + password.size()) + message.length;
    if (total > maxPacketLength)
        return {};
    std::vector<uint8_t> packet;
    packet.reserve(total);
    hep_header header{{'H', 'E', 'P', '3'}, htons(static_cast<uint16_t>(total))};
    packet.resize(sizeof header);
    std::memcpy(packet.data(), &header, sizeof header);

    ChunkWriter chunks(packet);
    chunks.u8(ipFamily, familyIpv4);
    chunks.u8(ipProtocol, protocolUdp);
    chunks.u32(ipv4Source, message.srcIp);
    chunks.u32(ipv4Destination, message.dstIp);
    chunks.u16(sourcePort, message.srcPort);
    chunks.u16(destinationPort, message.dstPort);
    chunks.u32(timestampSeconds, static_cast<uint32_t>(message.captured.tv_sec));
    chunks.u32(timestampMicroseconds, static_cast<uint32_t>(message.captured.tv_usec));
    chunks.u8(protocolType, protocolSip);
    chunks.u32(captureAgentId, captureId);
    if (!password.empty())
        chunks.bytes(authKey, password.data(), password.size());
    chunks.bytes(payload, message.payload, message.length);
    return packet;
}
