#include "SngDissector.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sstream>
#include <time.h>

#include "AddressText.h"
#include "Decapsulator.h"
#include "EmbeddedConnection.h"
#include "H323Parser.h"
#include "HepExporter.h"
#include "IpReassembler.h"
#include "StreamFraming.h"
#include "TcpStreamReassembler.h"
#include "ReliableConnection.h"
#include "SipHelper.h"
#include "Sniffer.h"
#include "TcpConnection.h"
#include "UdpConnection.h"

std::atomic<SngDissector*> SngDissector::dissector{nullptr};
pthread_t SngDissector::cmdThread;
bool SngDissector::cmdThreadStarted = false;
log4cxx::LoggerPtr SngDissector::logger = log4cxx::Logger::getLogger("SnifferClient");

namespace {
constexpr int udpHeaderLength = 8;
constexpr int minimumIpHeaderLength = 20;
constexpr int minimumTcpHeaderLength = 20;
constexpr uint16_t etherTypeVlan = 0x8100;
constexpr uint16_t etherTypeQinQ = 0x88A8;
}  // namespace

void SniffedPacket::release() {
    delete[] args;
    delete header;
    delete[] packet;
    args = nullptr;
    header = nullptr;
    packet = nullptr;
}

// ---------------------------------------------------------------- lifecycle

SngDissector::SngDissector() {
    if (SngDissector* previous = dissector.load())
        delete previous;
    h323Parser = new H323Parser();
    sipHelper = new SipHelper();
    dissector = this;
}

SngDissector::~SngDissector() {
    delete hep;
    delete reassembler;
    delete tcpStreams;
    releaseConnections();
    removeAllRtp();
    clearQueue();
    delete sipHelper;
    delete h323Parser;
    delete preRoll;
    SngDissector* self = this;
    if (dissector.compare_exchange_strong(self, nullptr))
        cmdThreadStarted = false;
}

void SngDissector::useOptions(const EngineOptions& engineOptions) {
    options = engineOptions;
    if (options.reliable())
        packetQueue.setLimit(options.queueLimitBytes());
    delete preRoll;
    preRoll = nullptr;
    if (options.rtpPreRollMs > 0)
        preRoll =
            new PreRollBuffer(std::chrono::milliseconds(options.rtpPreRollMs), options.preRollLimitBytes(), stats);
    settleFirst = options.reliable() || preRoll;
    delete hep;
    hep = options.exportsHep() ? new HepExporter(options, stats) : nullptr;
    delete reassembler;
    reassembler = options.reassembleIp ? new IpReassembler(options.reassemblyLimitBytes(), stats) : nullptr;
    delete tcpStreams;
    tcpStreams = options.reassemblesTcp() ? new TcpStreamReassembler(options.reassemblyLimitBytes(), stats) : nullptr;
}

void SngDissector::setTraceSignalling(bool trace) {
    h323Parser->setTraceSignalling(trace);
}

// ---------------------------------------------------------------- queue

void SngDissector::producePacket(const pcap_pkthdr& header, const u_char* packet) {
    packetQueue.push(header, packet);
}

void SngDissector::producePacket(const pcap_pkthdr& header, const u_char* linkHeader, std::size_t linkLength,
                                 const u_char* rest) {
    packetQueue.push(header, linkHeader, linkLength, rest);
}

void SngDissector::producePacket(SniffedPacket& p) {
    packetQueue.push(*p.header, p.packet);
    p.release();
}

void SngDissector::consumePacket() {
    PacketQueue::Frame frame;
    if (!packetQueue.next(frame, Sniffer::getEndMain)) {
        clearQueue();
        return;
    }
    processPacket(nullptr, frame.header, &frame.packet);
    processed.fetch_add(1, std::memory_order_release);

    if (sniffer && sniffer->getEmbedded())
        checkCommand();
}

void SngDissector::clearQueue() {
    const std::size_t dumped = packetQueue.clear();
    processed.fetch_add(dumped, std::memory_order_release);
    LOG4CXX_DEBUG(logger, "Dissector packet queue cleared. " << dumped << " packets dumped.");
}

void SngDissector::signalEnd() {
    terminate = true;
    if (reliableLink)
        reliableLink->wakeReader();
    h323Parser->displayCallIdMap();
    packetQueue.wake();
}

bool SngDissector::isDrained() const {
    return processed.load(std::memory_order_acquire) == packetQueue.pushed();
}

// ---------------------------------------------------------------- classification

void SngDissector::processPacket(u_char* /*args*/, const pcap_pkthdr* header, u_char** packet) {
    if (settleFirst)
        settleCommands();
    const u_char* frame = *packet;
    const int frameLength = static_cast<int>(header->len);

    const int linkLength =
        options.decapsulate ? Decapsulator::innerIpOffset(frame, frameLength) : classicLinkLength(frame);
    // A runt that cannot hold an IP header is dropped before it is read.
    if (linkLength < 0 || linkLength + minimumIpHeaderLength > frameLength)
        return;
    if (reassembler && reassemble(*header, frame + linkLength, frameLength - linkLength))
        return;
    processIp(*packet, header, linkLength);
}

void SngDissector::processIp(u_char* frame, const pcap_pkthdr* header, int ipOffset) {
    const auto* ip = reinterpret_cast<const sniff_ip*>(frame + ipOffset);
    const int ipHeaderLength = (ip->ip_vhl & 0x0F) * 4;
    if (ipHeaderLength < minimumIpHeaderLength) {
        logDroppedIp("*** Dropping IP packet with unknown IP header\n", ip);
        return;
    }
    ohdr.protocol = ip->ip_p;
    ohdr.dstIp = ntohl(ip->ip_dst);
    ohdr.srcIp = ntohl(ip->ip_src);

    const int sizeHeader = ipOffset + ipHeaderLength;
    if (ip->ip_p == IPPROTO_UDP)
        processUdp(frame, header, sizeHeader);
    else if (ip->ip_p == IPPROTO_TCP)
        processTcp(frame, header, sizeHeader);
    else
        logDroppedIp("*** Dropping IP packet with unknown upper layer protocol\n", ip);
}

// A completed datagram is classified as if it had been captured whole, with
// the capture time of its last fragment. The forwarded header is written
// over the end of its IP and transport headers, as in a captured frame, and
// its buffer has a queued frame's padding behind it.
bool SngDissector::reassemble(const pcap_pkthdr& header, const u_char* ip, int length) {
    switch (reassembler->take(ip, length, header.ts)) {
    case IpReassembler::Outcome::NotFragment: return false;
    case IpReassembler::Outcome::Held: return true;
    case IpReassembler::Outcome::Complete: break;
    }
    pcap_pkthdr whole = header;
    whole.caplen = whole.len = static_cast<bpf_u_int32>(reassembler->datagramLength());
    processIp(reassembler->datagram(), &whole, 0);
    return true;
}

// The frame's padding makes its EtherType readable even in a runt.
int SngDissector::classicLinkLength(const u_char* frame) {
    const auto* ethernet = reinterpret_cast<const sniff_ethernet*>(frame);
    const uint16_t etherType = static_cast<uint16_t>(ethernet->ether_type[0] << 8 | ethernet->ether_type[1]);
    if (etherType == etherTypeVlan)
        return 18;
    if (etherType == etherTypeQinQ)
        return 22;  // an 802.1ad frame carries an inner 802.1Q tag as well
    return sizeof(sniff_ethernet);
}

// The 16-bit fields are shown as the host reads the frame's bytes, unswapped:
// the dump is a raw view of the header.
void SngDissector::logDroppedIp(const char* heading, const sniff_ip* ip) {
    char dump[96];
    std::snprintf(dump, sizeof dump, "vhl=%02x tos=%02x len=%04x id=%04x off=%04x ttl=%02x p=%02x sum=%04x", ip->ip_vhl,
                  ip->ip_tos, ip->ip_len, ip->ip_id, ip->ip_off, ip->ip_ttl, ip->ip_p, ip->ip_sum);
    LOG4CXX_ERROR(logger, heading << dump);
}

void SngDissector::processUdp(const u_char* packet, const pcap_pkthdr* header, int size_header) {
    const int frameLength = static_cast<int>(header->len);
    if (size_header + udpHeaderLength > frameLength)
        return;
    const auto* udp = reinterpret_cast<const sniff_udp*>(packet + size_header);
    ohdr.srcPort = ntohs(udp->uh_sport);
    ohdr.dstPort = ntohs(udp->uh_dport);

    const u_char* payload = packet + size_header + udpHeaderLength;
    if (!isSip(payload) && !isRtpFilter()) {
        if (preRoll)
            holdForPreRoll(payload, frameLength - size_header - udpHeaderLength);
        return;
    }
    ohdr.protocol = static_cast<u_char>(payloadType.load(std::memory_order_relaxed));

    // The wire length is used, not the UDP length field: Ethernet padding
    // behind a short datagram travels with it, as recorders expect.
    const int length = frameLength - size_header - udpHeaderLength + ourHeaderLength;
    if (length <= ourHeaderLength || length > maxFrameLength)
        return;
    ohdr.len = htons(static_cast<uint16_t>(length));
    if (hep && ohdr.protocol == SIP)
        exportSip(*header, *udp, payload, length - ourHeaderLength);
    buildPayload(const_cast<u_char*>(payload) - ourHeaderLength, length, true, nullptr);
}

// The collector gets the datagram as its UDP length states it, without the
// Ethernet padding the recorder's copy keeps; `length` bounds it.
void SngDissector::exportSip(const pcap_pkthdr& header, const sniff_udp& udp, const u_char* payload, int length) {
    const int stated = ntohs(udp.uh_ulen) - udpHeaderLength;
    if (stated > 0 && stated < length)
        length = stated;
    hep->exportSip({header.ts, ohdr.srcIp, ohdr.srcPort, ohdr.dstIp, ohdr.dstPort, payload, std::size_t(length)});
}

void SngDissector::processTcp(u_char* packet, const pcap_pkthdr* header, int size_header) {
    const int frameLength = static_cast<int>(header->len);
    if (size_header + minimumTcpHeaderLength > frameLength)
        return;
    const auto* tcp = reinterpret_cast<const sniff_tcp*>(packet + size_header);
    const int tcpHeaderLength = ((tcp->th_offx2 & 0xF0) >> 4) * 4;
    if (tcpHeaderLength < minimumTcpHeaderLength) {
        LOG4CXX_INFO(logger, "*** Fragmented TCP message. Header length: " << tcpHeaderLength << " bytes");
        return;
    }
    ohdr.srcPort = ntohs(tcp->th_sport);
    ohdr.dstPort = ntohs(tcp->th_dport);
    if (tcpStreams && takeStream(*header, *tcp, packet + size_header + tcpHeaderLength,
                                 static_cast<int>(header->caplen) - size_header - tcpHeaderLength))
        return;

    const int length = frameLength - size_header - tcpHeaderLength + ourHeaderLength;
    if (length <= ourHeaderLength || length > maxFrameLength)
        return;
    ohdr.len = htons(static_cast<uint16_t>(length));
    buildPayload(packet + size_header + tcpHeaderLength - ourHeaderLength, length, false, nullptr);
}

// With SipOverTcp or ReassembleH323, a segment of a SIP port's stream, or
// of an H.323 one, goes to the stream's messages instead of being described
// alone. True when it went. An H.323 stream is followed from its first
// segment that starts like a TPKT message: other TCP keeps the classic path,
// which describes nothing of it, without costing memory.
bool SngDissector::takeStream(const pcap_pkthdr& header, const sniff_tcp& tcp, const u_char* data, int length) {
    const bool sip = options.sipOverTcp && (options.isSipTcpPort(ohdr.srcPort) || options.isSipTcpPort(ohdr.dstPort));
    if (!sip && !options.reassembleH323)
        return false;
    // Copied out of the packed header: a reference to its fields would be misaligned.
    const uint32_t srcIp = ohdr.srcIp, dstIp = ohdr.dstIp;
    const uint16_t srcPort = ohdr.srcPort, dstPort = ohdr.dstPort;
    const TcpStreamReassembler::Key key{srcIp, srcPort, dstIp, dstPort};
    if (!sip && !tcpStreams->follows(key) && !(length > 0 && data[0] == tpktVersion))
        return false;
    const our_header addresses = ohdr;
    const TcpStreamReassembler::Segment segment{
        key, ntohl(tcp.th_seq), tcp.th_flags, data, static_cast<std::size_t>(std::max(length, 0)), header.ts};
    tcpStreams->take(segment, [&](const u_char* bytes, std::size_t size) {
        const Framing framing = sip ? frameSip(bytes, size, maxFrameLength - ourHeaderLength) : frameTpkt(bytes, size);
        if (framing.kind == Framing::Kind::Message) {
            EngineStats::add(sip ? stats.sipOverTcp : stats.tpktMessages);
            ohdr = addresses;
            forwardCopy(bytes, framing.length, sip ? SIP : H323);
        }
        return framing.length;
    });
    return true;
}

bool SngDissector::isSip(const u_char* payload) {
    if (sipHelper->isRequest(payload) || sipHelper->isResponse(payload)) {
        payloadType.store(SIP, std::memory_order_relaxed);
        return true;
    }
    return false;
}

bool SngDissector::isRtpFilter() {
    if (isInRtpList(ohdr.dstIp, ohdr.dstPort)) {
        payloadType.store(RTP, std::memory_order_relaxed);
        return true;
    }
    return false;
}

// A command whose bytes have arrived is applied before the next packet is
// classified, and datagrams held for a destination just listed go out
// before any later one to it.
void SngDissector::settleCommands() {
    while (commandsArriving.load(std::memory_order_acquire))
        __builtin_ia32_pause();
    if (preRoll && preRoll->hasReleases())
        preRoll->forwardReleased([this](const PreRollBuffer::Datagram& datagram) { forwardHeld(datagram); });
}

void SngDissector::holdForPreRoll(const u_char* payload, int length) {
    if (length <= 0 || length + ourHeaderLength > maxFrameLength)
        return;
    preRoll->hold({ohdr.dstIp, ohdr.dstPort, ohdr.srcIp, ohdr.srcPort, std::vector<u_char>(payload, payload + length)});
}

// Framed exactly as a listed datagram would have been when it was captured.
void SngDissector::forwardHeld(const PreRollBuffer::Datagram& datagram) {
    ohdr.dstIp = datagram.dstIp;
    ohdr.dstPort = datagram.dstPort;
    ohdr.srcIp = datagram.srcIp;
    ohdr.srcPort = datagram.srcPort;
    forwardCopy(datagram.payload.data(), datagram.payload.size(), RTP);
}

// A copy of `payload`, with the addresses and ports in ohdr (host order),
// framed as a captured datagram of `protocol` would be; H.323 is described
// first, as a captured segment is.
void SngDissector::forwardCopy(const u_char* payload, std::size_t size, int protocol) {
    const int length = static_cast<int>(size) + ourHeaderLength;
    heldFrame.assign(length + PacketQueue::framePadding, 0);
    std::memcpy(heldFrame.data() + ourHeaderLength, payload, size);
    ohdr.protocol = static_cast<u_char>(protocol);
    ohdr.len = htons(static_cast<uint16_t>(length));
    if (protocol != H323)
        payloadType.store(protocol, std::memory_order_relaxed);
    buildPayload(heldFrame.data(), length, protocol != H323, nullptr);
}

// ---------------------------------------------------------------- RTP list

void SngDissector::addRtp(u_int rtpIp, u_short rtpPort) {
    {
        std::lock_guard<std::mutex> guard(rtpListLock);
        rtpList.add(RtpAddr(rtpIp, rtpPort));
    }
    if (preRoll)
        preRoll->release(rtpIp, rtpPort);
    logRtpChange("Added to list rtp (ip=0x", rtpIp, rtpPort);
}

void SngDissector::removeRtp(u_int rtpIp, u_short rtpPort) {
    {
        std::lock_guard<std::mutex> guard(rtpListLock);
        rtpList.remove(RtpAddr(rtpIp, rtpPort));
    }
    logRtpChange("Removed from list rtp (ip=0x", rtpIp, rtpPort);
}

bool SngDissector::isInRtpList(u_int rtpIp, u_short rtpPort) {
    std::lock_guard<std::mutex> guard(rtpListLock);
    return rtpList.contains(RtpAddr(rtpIp, rtpPort));
}

// Called by the TCP link when the recorder is lost, possibly while the
// command reader changes the list: it takes the same lock so the clearing
// is well-defined; the recorder re-sends its destinations after reconnecting.
void SngDissector::removeAllRtp() {
    std::lock_guard<std::mutex> guard(rtpListLock);
    rtpList.clear();
}

void SngDissector::logRtpChange(const char* heading, u_int rtpIp, u_short rtpPort) {
    if (!logger->isDebugEnabled())
        return;
    std::ostringstream line;
    line << heading << std::hex << rtpIp << std::dec << "=" << dottedQuad(rtpIp) << ", port=0x" << std::hex << rtpPort
         << std::dec << "=" << rtpPort << ")";
    LOG4CXX_DEBUG(logger, line.str());
}

// ---------------------------------------------------------------- framing

void SngDissector::buildPayload(u_char* payload, int payloadLen, bool isUdp, u_char** /*packet*/) {
    ohdr.srcIp = htonl(ohdr.srcIp);
    ohdr.dstIp = htonl(ohdr.dstIp);

    u_char* frame = payload;
    int frameLength = payloadLen;
    std::string upStreamPayload;
    if (!isUdp) {
        const u_int srcPort = ohdr.srcPort;
        const u_int dstPort = ohdr.dstPort;
        const u_int srcIp = ohdr.srcIp;
        const u_int dstIp = ohdr.dstIp;
        if (!h323Parser->parseH323(payload, payloadLen, ourHeaderLength, srcIp, dstIp, srcPort, dstPort,
                                   upStreamPayload))
            return;
        payloadType.store(H323, std::memory_order_relaxed);
        ohdr.protocol = H323;
        frameLength = static_cast<int>(upStreamPayload.size()) + ourHeaderLength;
        ohdr.len = htons(static_cast<uint16_t>(frameLength));
        frame = new u_char[frameLength];
        // The text's last character (its final line feed) gives way to the
        // terminating zero that recorders read the description up to.
        frame[frameLength - 1] = 0;
        std::memcpy(frame + ourHeaderLength, upStreamPayload.data(), upStreamPayload.size() - 1);
    }
    ohdr.srcPort = htons(ohdr.srcPort);
    ohdr.dstPort = htons(ohdr.dstPort);
    std::memcpy(frame, &ohdr, ourHeaderLength);
    sendPayload(frame, frameLength);
    if (frame != payload)
        delete[] frame;
}

void SngDissector::sendPayload(u_char* payload, int len) {
    const int type = payloadType.load(std::memory_order_relaxed);
    BaseConnection* link = nullptr;
    if (type == RTP)
        link = conMedia;
    else if (conSig && type == SIP)
        link = conSig;
    else if (type == SIP || type == H323)
        link = conMedia;
    else if (payload[2] == HEARTBEAT)
        link = conMedia;
    if (!link) {
        LOG4CXX_WARN(logger, "PAYLOAD NOT SENT");
        return;
    }
    stats.countForwarded(payload[2], link->sendPacket(payload, len));
}

void SngDissector::printFormatHeader(const u_char* ptr) {
    auto be16 = [ptr](int at) { return ptr[at] << 8 | ptr[at + 1]; };
    auto quad = [ptr](int at) {
        return dottedQuad(uint32_t(ptr[at]) << 24 | uint32_t(ptr[at + 1]) << 16 | uint32_t(ptr[at + 2]) << 8 |
                          ptr[at + 3]);
    };
    LOG4CXX_DEBUG(logger, "len=" << be16(0) << ", prot=" << int(ptr[2]) << ", dstIp=" << quad(3)
                                 << ", dstPort=" << be16(7) << ", srcIp=" << quad(9) << ", srcPort=" << be16(13));
}

// ---------------------------------------------------------------- recorder link

bool SngDissector::sameRecorder(const char* hostA, int portA, const char* hostB, int portB) {
    if (portA != portB)
        return false;
    if (!hostA || !hostB)
        return hostA == hostB;
    return std::strcmp(hostA, hostB) == 0;
}

void SngDissector::makeConnection(bool embedded) {
    if (embedded) {
        LOG4CXX_INFO(logger, "Embedded connection created");
        conMedia = EmbeddedConnection::dft();
        conSig = nullptr;
        return;
    }
    const char* protocol = sniffer ? sniffer->getServerProtocol() : "";
    const bool shared = sameRecorder(serverNameMedia, serverPortMedia, serverNameSig, serverPortSig);
    if (std::strlen(protocol) >= 3 && SipHelper::memcmpNocase(protocol, "UDP", 3) == 0) {
        conMedia = new UdpConnection(serverNameMedia, serverPortMedia,
                                     CommandSourceFilter(options.commandSources, stats.commandsIgnored));
        LOG4CXX_INFO(logger, "UDP connection created");
        conSig = shared ? nullptr : new UdpConnection(serverNameSig, serverPortSig);
        return;
    }
    if (std::strlen(protocol) < 3 || SipHelper::memcmpNocase(protocol, "TCP", 3) != 0)
        LOG4CXX_ERROR(logger, "Invalid ServerProtocol assuming TCP");
    if (options.reliable()) {
        reliableLink = new ReliableConnection(serverNameMedia, serverPortMedia, options, stats);
        conMedia = reliableLink;
        LOG4CXX_INFO(logger, "Reliable TCP connection created");
        conSig = shared ? nullptr : new ReliableConnection(serverNameSig, serverPortSig, options, stats);
        return;
    }
    auto* media = new TcpConnection(serverNameMedia, serverPortMedia);
    conMedia = media;
    LOG4CXX_INFO(logger, "TCP connection created");
    media->tcpConnect();
    if (media->isConnected())
        LOG4CXX_INFO(logger, "Connected to recorder " << serverNameMedia << ":" << serverPortMedia);
    else
        LOG4CXX_INFO(logger, "Connecting to recorder " << serverNameMedia << ":" << serverPortMedia);
    if (shared) {
        conSig = nullptr;
    } else {
        auto* sig = new TcpConnection(serverNameSig, serverPortSig);
        sig->tcpConnect();
        conSig = sig;
    }
}

void SngDissector::useConnections(BaseConnection* media, BaseConnection* sig) {
    releaseConnections();
    reliableLink = dynamic_cast<ReliableConnection*>(media);
    conMedia = media;
    conSig = sig;
}

// The embedded link is process-wide and outlives any dissector.
void SngDissector::releaseConnections() {
    if (conMedia) {
        conMedia->closeConnection();
        if (conMedia != EmbeddedConnection::dft())
            delete conMedia;
    }
    if (conSig) {
        conSig->closeConnection();
        delete conSig;
    }
    conMedia = nullptr;
    conSig = nullptr;
    reliableLink = nullptr;
}

void SngDissector::closeConnection() {
    if (conSig)
        conSig->closeConnection();
    if (conMedia)
        conMedia->closeConnection();
}

void SngDissector::startCmdReaderThread() {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_JOINABLE);
    const int rc = pthread_create(&cmdThread, &attr, startCmdReaderLoop, &cmdThreadId);
    pthread_attr_destroy(&attr);
    cmdThreadStarted = rc == 0;
    if (rc != 0)
        LOG4CXX_ERROR(logger, "Error - startCmdReaderThread return code from pthread_create() is " << rc);
    LOG4CXX_INFO(logger, "Command reader thread created " << cmdThreadId);
}

void* SngDissector::startCmdReaderLoop(void* /*arg*/) {
    // The classic link is polled almost continuously so that a command takes
    // effect on the very next packets; the reliable one sleeps until bytes
    // arrive and holds the consumer while it applies them.
    const timespec pause{0, 200};
    while (SngDissector* self = dft()) {
        if (self->terminate)
            break;
        if (!self->options.reliable()) {
            self->checkCommand();
            nanosleep(&pause, nullptr);
        } else if (self->awaitCommand()) {
            self->commandsArriving.store(true, std::memory_order_release);
            self->checkCommand();
            self->commandsArriving.store(false, std::memory_order_release);
        }
    }
    return nullptr;
}

// Sleeps until the media link may have a command; wakes at least every
// `commandWaitMs` to look at the end flag.
bool SngDissector::awaitCommand() {
    constexpr int commandWaitMs = 200;
    if (reliableLink)
        return reliableLink->awaitCommands(commandWaitMs);
    if (auto* udp = dynamic_cast<UdpConnection*>(conMedia)) {
        pollfd readable{udp->getClientSd(), POLLIN, 0};
        return poll(&readable, 1, commandWaitMs) > 0;
    }
    const timespec pause{0, commandWaitMs * 1000 * 1000};
    nanosleep(&pause, nullptr);
    return true;
}

void SngDissector::checkCommand() {
    SnifferRequest request;
    // A link may report a pending partial command as readable; the record
    // then keeps the previous command. The end of the run stops the loop
    // even if the rest of such a command never arrives.
    while (!terminate && conMedia->receiveRequest(request)) {
        switch (request.request) {
        case 1: addRtp(request.rtpAddr, request.rtpPort); break;
        case 2: removeRtp(request.rtpAddr, request.rtpPort); break;
        case 3: replyHeartbeat(); break;
        default: break;
        }
    }
}

// The reply is built apart from the consumer's working header, which the
// consumer may be filling at this moment; only the routing reads its state.
void SngDissector::replyHeartbeat() {
    u_char frame[ourHeaderLength] = {};
    const uint16_t len = htons(ourHeaderLength);
    std::memcpy(frame, &len, sizeof len);
    frame[2] = HEARTBEAT;
    sendPayload(frame, ourHeaderLength);
    LOG4CXX_DEBUG(logger, "Heartbeat sent");
}
