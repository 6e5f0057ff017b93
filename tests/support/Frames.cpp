#include "Frames.h"

#include <arpa/inet.h>
#include <pcap.h>
#include <sys/time.h>
#include <algorithm>

#include "Sniffer.h"

namespace {
void put16(Bytes& b, uint16_t v) {
    b.push_back(uint8_t(v >> 8));
    b.push_back(uint8_t(v));
}

void put32(Bytes& b, uint32_t v) {
    put16(b, uint16_t(v >> 16));
    put16(b, uint16_t(v));
}

void putAddress(Bytes& b, const char* ip) {
    put32(b, ntohl(inet_addr(ip)));
}

Bytes linkHeader(uint16_t etherType) {
    Bytes b = {0x02, 0, 0, 0, 0, 0x02, 0x02, 0, 0, 0, 0, 0x01};
    put16(b, etherType);
    if (etherType == etherTypeQinQ) {
        put16(b, 100);  // outer tag control
        put16(b, etherTypeVlan);
    }
    if (etherType == etherTypeVlan || etherType == etherTypeQinQ) {
        put16(b, 200);  // tag control
        put16(b, etherTypeIpv4);
    }
    return b;
}

Bytes ipHeader(uint8_t protocol, uint16_t totalLength, uint16_t id, uint16_t fragment, uint8_t ttl, uint16_t checksum,
               const char* src, const char* dst, int optionWords = 0) {
    Bytes b = {uint8_t(0x40 | (5 + optionWords)), 0};
    put16(b, totalLength);
    put16(b, id);
    put16(b, fragment);
    b.push_back(ttl);
    b.push_back(protocol);
    put16(b, checksum);
    putAddress(b, src);
    putAddress(b, dst);
    b.insert(b.end(), 4 * optionWords, 0x01);
    return b;
}

Bytes ipHeader(uint8_t protocol, Endpoint src, Endpoint dst, int optionWords, std::size_t bodyLength) {
    return ipHeader(protocol, uint16_t(20 + 4 * optionWords + bodyLength), 0x1234, 0x4000, 64, 0, src.ip, dst.ip,
                    optionWords);
}

Bytes frameOf(const Bytes& link, const Bytes& ip, const Bytes& transport, const Bytes& payload) {
    Bytes frame = link;
    frame.insert(frame.end(), ip.begin(), ip.end());
    frame.insert(frame.end(), transport.begin(), transport.end());
    frame.insert(frame.end(), payload.begin(), payload.end());
    return frame;
}
}  // namespace

Bytes udpFrame(Endpoint src, Endpoint dst, const Bytes& payload, const FrameOptions& options) {
    Bytes udp;
    put16(udp, src.port);
    put16(udp, dst.port);
    put16(udp, uint16_t(8 + payload.size()));
    put16(udp, 0);
    return frameOf(linkHeader(options.etherType),
                   ipHeader(IPPROTO_UDP, src, dst, options.ipOptionWords, udp.size() + payload.size()), udp, payload);
}

Bytes tcpFrame(Endpoint src, Endpoint dst, const Bytes& payload, const FrameOptions& options) {
    Bytes tcp;
    put16(tcp, src.port);
    put16(tcp, dst.port);
    put32(tcp, options.tcpSeq);
    put32(tcp, 2000);
    tcp.push_back(uint8_t(options.tcpDataOffset << 4));
    tcp.push_back(options.tcpFlags);
    put16(tcp, 65535);
    put16(tcp, 0);
    put16(tcp, 0);
    if (options.tcpDataOffset > 5)
        tcp.insert(tcp.end(), 4 * (options.tcpDataOffset - 5), 0x01);
    return frameOf(linkHeader(options.etherType),
                   ipHeader(IPPROTO_TCP, src, dst, options.ipOptionWords, tcp.size() + payload.size()), tcp, payload);
}

Bytes ipFrame(uint8_t protocol, uint16_t totalLength, uint16_t id, uint16_t fragment, uint8_t ttl, uint16_t checksum,
              const Bytes& body) {
    return frameOf(linkHeader(etherTypeIpv4),
                   ipHeader(protocol, totalLength, id, fragment, ttl, checksum, "10.0.0.1", "10.0.0.2"), {}, body);
}

Bytes ipFragment(uint8_t protocol, const char* src, const char* dst, uint16_t id, const Bytes& body, std::size_t from,
                 std::size_t to) {
    const uint16_t moreFragments = to < body.size() ? 0x2000 : 0;
    return frameOf(
        linkHeader(etherTypeIpv4),
        ipHeader(protocol, uint16_t(20 + to - from), id, uint16_t(moreFragments | from / 8), 64, 0, src, dst), {},
        Bytes(body.begin() + from, body.begin() + to));
}

Bytes udpDatagram(Endpoint src, Endpoint dst, const Bytes& payload) {
    const Bytes frame = udpFrame(src, dst, payload);
    return Bytes(frame.begin() + 14 + 20, frame.end());
}

Bytes ipPacket(uint8_t protocol, const char* src, const char* dst, const Bytes& body) {
    Bytes packet = ipHeader(protocol, uint16_t(20 + body.size()), 0x1234, 0x4000, 64, 0, src, dst);
    packet.insert(packet.end(), body.begin(), body.end());
    return packet;
}

Bytes etherFrame(uint16_t etherType, const Bytes& body) {
    Bytes frame = linkHeader(etherTypeIpv4);
    frame[12] = uint8_t(etherType >> 8);
    frame[13] = uint8_t(etherType);
    frame.insert(frame.end(), body.begin(), body.end());
    return frame;
}

Bytes withoutEthernet(const Bytes& frame) {
    return Bytes(frame.begin() + 14, frame.end());
}

Bytes padded(Bytes frame) {
    if (frame.size() < 60)
        frame.resize(60, 0);
    return frame;
}

void capture(const Bytes& frame, std::size_t wireLength) {
    timeval now{};
    gettimeofday(&now, nullptr);
    captureAt(frame, now, wireLength);
}

void captureAt(const Bytes& frame, timeval time, std::size_t wireLength) {
    pcap_pkthdr header{};
    header.ts = time;
    header.caplen = static_cast<bpf_u_int32>(frame.size());
    header.len = static_cast<bpf_u_int32>(std::max(frame.size(), wireLength));
    Sniffer::gotPacket(nullptr, &header, frame.data());
}

Bytes behind(Bytes link, const Bytes& packet) {
    link.insert(link.end(), packet.begin(), packet.end());
    return link;
}

Bytes cooked(uint16_t protocol) {
    return {0, 0, 0, 1, 0, 6, 0x02, 0, 0, 0, 0, 0x01, 0, 0, uint8_t(protocol >> 8), uint8_t(protocol)};
}
