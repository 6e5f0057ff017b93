// Whole frames through the capture callback, the packet queue and the
// classifier, as a capture thread and the consumer hand them on, with the
// recorder link replaced by the in-process queue.
//
// Input: 4 bytes (big-endian) by which the frame was longer on the wire than
// captured, then the captured bytes.
//
// Checked for every forwarded frame: its length field is its length, its
// protocol is SIP, RTP or an H.323 description, RTP goes only to the listed
// destination, and a SIP or RTP payload is the end of the frame as it was on
// the wire (bytes past the captured ones read as zeros).
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "EmbeddedConnection.h"
#include "FuzzLogging.h"
#include "SngDissector.h"
#include "Sniffer.h"

namespace {
constexpr uint32_t listedIp = 0x0A000002;  // 10.0.0.2
constexpr uint16_t listedPort = 5000;

struct Engine {
    Sniffer sniffer;

    Engine() {
        logEverythingToNowhere();
        sniffer.setEmbedded(true);
        SngDissector* dissector = sniffer.getDissector();
        dissector->setSniffer(&sniffer);
        dissector->makeConnection(true);
        dissector->addRtp(listedIp, listedPort);
    }
};

uint32_t be32(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}

void require(bool holds) {
    if (!holds)
        std::abort();
}

// The frame as the consumer saw it: captured bytes, then zeros up to the wire length.
uint8_t wireByte(const uint8_t* captured, uint32_t caplen, uint32_t at) {
    return at < caplen ? captured[at] : 0;
}

void checkForwarded(const uint8_t* captured, const pcap_pkthdr& header) {
    static std::vector<u_char> frame(1 << 17);
    for (;;) {
        const int length = EmbeddedConnection::dft()->receivePacket(reinterpret_cast<char*>(frame.data()),
                                                                    static_cast<int>(frame.size()));
        if (length == 0)
            return;
        require(length >= SngDissector::ourHeaderLength);
        require((frame[0] << 8 | frame[1]) == length);
        const int protocol = frame[2];
        require(protocol == SngDissector::SIP || protocol == SngDissector::RTP || protocol == SngDissector::H323);
        if (protocol == SngDissector::H323)
            continue;
        if (protocol == SngDissector::RTP)
            require(be32(&frame[3]) == listedIp && (frame[7] << 8 | frame[8]) == listedPort);
        const uint32_t payloadLength = static_cast<uint32_t>(length - SngDissector::ourHeaderLength);
        require(payloadLength <= header.len);
        const uint32_t start = header.len - payloadLength;
        for (uint32_t i = 0; i < payloadLength; ++i)
            require(frame[SngDissector::ourHeaderLength + i] == wireByte(captured, header.caplen, start + i));
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Never destroyed: its tear-down would log after the logging library's own.
    static Engine* engine = new Engine();
    if (size < 4)
        return 0;
    pcap_pkthdr header{};
    header.caplen = static_cast<bpf_u_int32>(size - 4);
    header.len = header.caplen + be32(data);
    const uint8_t* captured = data + 4;

    Sniffer::gotPacket(nullptr, &header, captured);
    SngDissector* dissector = engine->sniffer.getDissector();
    // A frame the callback refused never reaches the queue; consuming would wait for ever.
    if (!dissector->isDrained())
        dissector->consumePacket();
    checkForwarded(captured, header);
    return 0;
}
