#ifndef SNIFFER_SNG_DISSECTOR_H
#define SNIFFER_SNG_DISSECTOR_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <pcap.h>
#include <pthread.h>
#include <string>
#include <vector>

#include <log4cxx/logger.h>

#include "EngineOptions.h"
#include "EngineStats.h"
#include "PacketQueue.h"
#include "PreRollBuffer.h"
#include "RtpList.h"

class Sniffer;
class SipHelper;
class H323Parser;
class BaseConnection;
class HepExporter;
class IpReassembler;
class TcpStreamReassembler;
class ReliableConnection;

// A captured frame handed over by a caller that made its own copies: the
// capture header and `packet`, as long as the header's `len`.
// producePacket takes ownership of the buffers.
struct SniffedPacket {
    static constexpr int framePadding = PacketQueue::framePadding;

    u_char* args = nullptr;
    pcap_pkthdr* header = nullptr;
    u_char* packet = nullptr;

    void release();
};

// Classifies captured frames, keeps the RTP destination list, frames what is
// wanted behind the 15-byte header and sends it to the recorder; applies the
// recorder's commands. One live instance per process, reached through dft().
class SngDissector {
public:
#pragma pack(push, 1)
    struct sniff_ethernet {
        u_char ether_dhost[6];
        u_char ether_shost[6];
        u_char ether_type[2];
    };
    struct sniff_ip {
        u_char ip_vhl;
        u_char ip_tos;
        uint16_t ip_len;
        uint16_t ip_id;
        uint16_t ip_off;
        u_char ip_ttl;
        u_char ip_p;
        uint16_t ip_sum;
        uint32_t ip_src;
        uint32_t ip_dst;
    };
    struct sniff_udp {
        uint16_t uh_sport;
        uint16_t uh_dport;
        uint16_t uh_ulen;
        uint16_t uh_sum;
    };
    struct sniff_tcp {
        uint16_t th_sport;
        uint16_t th_dport;
        uint32_t th_seq;
        uint32_t th_ack;
        u_char th_offx2;
        u_char th_flags;
        uint16_t th_win;
        uint16_t th_sum;
        uint16_t th_urp;
    };
    // The header in front of every forwarded frame: all fields big-endian on
    // the wire, destination before source.
    struct our_header {
        uint16_t len;
        u_char protocol;
        uint32_t dstIp;
        uint16_t dstPort;
        uint32_t srcIp;
        uint16_t srcPort;
    };
#pragma pack(pop)
    static_assert(sizeof(our_header) == 15, "the forwarded frame header is 15 bytes");

    enum PayloadType { SIP = 1, RTP = 2, HEARTBEAT = 3, H323 = 4 };
    static constexpr int ourHeaderLength = sizeof(our_header);
    // The most the header's 16-bit length can state. A longer frame would
    // break the framing of the recorder's stream; only a damaged capture
    // file yields one, since IPv4 datagrams are shorter.
    static constexpr int maxFrameLength = 0xFFFF;
    static constexpr u_char tpktVersion = 3;

    SngDissector();
    virtual ~SngDissector();
    SngDissector(const SngDissector&) = delete;
    SngDissector& operator=(const SngDissector&) = delete;

    static SngDissector* dft() {
        return dissector;
    }

    // Queue (capture threads produce, one consumer drains).
    void producePacket(const pcap_pkthdr& header, const u_char* packet);
    // A frame whose link header was replaced (see PacketQueue::push).
    void producePacket(const pcap_pkthdr& header, const u_char* linkHeader, std::size_t linkLength, const u_char* rest);
    void producePacket(SniffedPacket& p);
    void consumePacket();
    void clearQueue();
    void signalEnd();
    // True when every packet produced so far has been processed.
    bool isDrained() const;

    // Classification.
    void processPacket(u_char* args, const pcap_pkthdr* header, u_char** packet);
    // The IPv4 packet at `ipOffset` of the frame, whole or reassembled.
    void processIp(u_char* frame, const pcap_pkthdr* header, int ipOffset);
    void processUdp(const u_char* packet, const pcap_pkthdr* header, int size_header);
    void processTcp(u_char* packet, const pcap_pkthdr* header, int size_header);
    bool isSip(const u_char* payload);
    bool isRtpFilter();

    // RTP destination list.
    void addRtp(u_int rtpIp, u_short rtpPort);
    void removeRtp(u_int rtpIp, u_short rtpPort);
    bool isInRtpList(u_int rtpIp, u_short rtpPort);
    void removeAllRtp();

    // Framing and sending.
    void buildPayload(u_char* payload, int payloadLen, bool isUdp, u_char** packet);
    void sendPayload(u_char* payload, int len);
    void printFormatHeader(const u_char* ptr);

    // Takes the engine's opt-in settings; before makeConnection.
    void useOptions(const EngineOptions& options);
    EngineStats& getStats() {
        return stats;
    }
    // Frames waiting in the queue and dropped at its limit.
    uint64_t getQueuedCount() const {
        return packetQueue.pushed();
    }
    uint64_t getQueueDropCount() const {
        return packetQueue.droppedAtLimit();
    }

    // Recorder link and commands.
    void makeConnection(bool embedded);
    // Puts links of the caller's own in place of those makeConnection made
    // (a host or a benchmark that counts what is forwarded); the dissector
    // owns them from then on and releases the ones it replaces.
    void useConnections(BaseConnection* media, BaseConnection* sig);
    void closeConnection();
    void startCmdReaderThread();
    static void* startCmdReaderLoop(void* arg);
    void checkCommand();
    void replyHeartbeat();

    void setSniffer(Sniffer* s) {
        sniffer = s;
    }
    void setServerNameMedia(const char* name) {
        serverNameMedia = name;
    }
    const char* getServerNameMedia() const {
        return serverNameMedia;
    }
    void setServerPortMedia(int port) {
        serverPortMedia = port;
    }
    int getServerPortMedia() const {
        return serverPortMedia;
    }
    void setServerNameSig(const char* name) {
        serverNameSig = name;
    }
    const char* getServerNameSig() const {
        return serverNameSig;
    }
    void setServerPortSig(int port) {
        serverPortSig = port;
    }
    int getServerPortSig() const {
        return serverPortSig;
    }
    bool getBrokenTcp() const {
        return brokenTcp;
    }
    void setBrokenTcp(bool b) {
        brokenTcp = b;
    }
    bool getTerminate() const {
        return terminate;
    }
    pthread_t* getCmdReaderThread() {
        return cmdThreadStarted ? &cmdThread : nullptr;
    }
    void setTraceSignalling(bool trace);
    H323Parser* getH323Parser() {
        return h323Parser;
    }

private:
    BaseConnection* makeTcpConnection(const char* host, int port);
    bool awaitCommand();
    void settleCommands();
    void exportSip(const pcap_pkthdr& header, const sniff_udp& udp, const u_char* payload, int length);
    void holdForPreRoll(const u_char* payload, int length);
    void forwardHeld(const PreRollBuffer::Datagram& datagram);
    void forwardCopy(const u_char* payload, std::size_t size, int protocol);
    bool takeStream(const pcap_pkthdr& header, const sniff_tcp& tcp, const u_char* data, int length);
    // True when the reassembler took the packet: held, or classified whole.
    bool reassemble(const pcap_pkthdr& header, const u_char* ip, int length);
    static bool sameRecorder(const char* hostA, int portA, const char* hostB, int portB);
    void releaseConnections();
    void logRtpChange(const char* heading, u_int rtpIp, u_short rtpPort);
    void logDroppedIp(const char* heading, const sniff_ip* ip);
    // Where the IP header starts behind the Ethernet header and at most two tags.
    static int classicLinkLength(const u_char* frame);

    Sniffer* sniffer = nullptr;
    our_header ohdr{};
    const char* serverNameMedia = nullptr;
    int serverPortMedia = 6000;
    const char* serverNameSig = nullptr;
    int serverPortSig = 6000;
    // Read by the command reader when it routes a heartbeat reply.
    std::atomic<int> payloadType{0};
    bool brokenTcp = false;
    // Set by the stopping thread, read by the command reader.
    std::atomic<bool> terminate{false};
    SipHelper* sipHelper = nullptr;
    BaseConnection* conMedia = nullptr;
    BaseConnection* conSig = nullptr;
    H323Parser* h323Parser = nullptr;
    std::string cmdThreadId = "cmdReaderThread";

    RtpList rtpList;
    std::mutex rtpListLock;

    PacketQueue packetQueue;
    std::atomic<uint64_t> processed{0};  // packets taken and finished (or dumped)

    EngineOptions options;
    EngineStats stats;
    // The reliable media link, when there is one (also conMedia).
    ReliableConnection* reliableLink = nullptr;
    // Set by the reliable command reader from the moment command bytes are
    // readable until it has applied them: the consumer waits for it before it
    // classifies the next packet, so a command is in force for that packet.
    std::atomic<bool> commandsArriving{false};
    PreRollBuffer* preRoll = nullptr;
    bool settleFirst = false;       // reliable commands or a pre-roll: settleCommands() before each packet
    std::vector<u_char> heldFrame;  // the consumer's scratch for a held datagram
    HepExporter* hep = nullptr;     // a copy of each SIP message for a HEP collector
    IpReassembler* reassembler = nullptr;
    TcpStreamReassembler* tcpStreams = nullptr;  // SipOverTcp or ReassembleH323

    static std::atomic<SngDissector*> dissector;
    static pthread_t cmdThread;
    static bool cmdThreadStarted;
    static log4cxx::LoggerPtr logger;
};

#endif
