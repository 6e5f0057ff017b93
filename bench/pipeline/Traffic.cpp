#include "Traffic.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <map>
#include <netinet/in.h>
#include <pcap.h>
#include <string>

#include "SngDissector.h"

namespace {

constexpr int tickMicros = 20000;  // one G.711 packet every 20 ms
constexpr int rtpPayloadBytes = 160;
constexpr uint16_t sipPort = 5060;

// The engine's own wire structures, written here instead of read.
using ether_header_t = SngDissector::sniff_ethernet;
using ip_header_t = SngDissector::sniff_ip;
using udp_header_t = SngDissector::sniff_udp;
using tcp_header_t = SngDissector::sniff_tcp;

#pragma pack(push, 1)
struct rtp_header_t {
    uint8_t vpxcc;
    uint8_t mpt;
    uint16_t seq;
    uint32_t ts;
    uint32_t ssrc;
};
#pragma pack(pop)

uint32_t ipv4(int a, int b, int c, int d) {
    return uint32_t(a) << 24 | uint32_t(b) << 16 | uint32_t(c) << 8 | uint32_t(d);
}

// Caller i lives in 10.1/16, callee i in 10.2/16 (host numbers from 1).
uint32_t phone(int side, int call) {
    return ipv4(10, 1 + side, (call + 1) >> 8 & 0xFF, (call + 1) & 0xFF);
}

std::string dotted(uint32_t ip) {
    return std::to_string(ip >> 24) + "." + std::to_string(ip >> 16 & 0xFF) + "." + std::to_string(ip >> 8 & 0xFF) +
           "." + std::to_string(ip & 0xFF);
}

uint16_t ipChecksum(const ip_header_t& ip) {
    const auto* words = reinterpret_cast<const uint16_t*>(&ip);
    uint32_t sum = 0;
    for (std::size_t i = 0; i < sizeof ip / 2; ++i)
        sum += words[i];
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16_t>(~sum);
}

// Builds Ethernet/IPv4/UDP-or-TCP frames and appends them to a pcap file.
class FrameWriter {
public:
    explicit FrameWriter(const std::string& path)
        : dead(pcap_open_dead(DLT_EN10MB, 65535)), dumper(pcap_dump_open(dead, path.c_str())) {}
    ~FrameWriter() {
        if (dumper)
            pcap_dump_close(dumper);
        pcap_close(dead);
    }
    bool ok() const { return dumper != nullptr; }
    long written() const { return frames; }

    void udp(long micros, uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport, const uint8_t* payload,
             std::size_t length) {
        udp_header_t h{htons(sport), htons(dport), htons(static_cast<uint16_t>(sizeof h + length)), 0};
        write(micros, IPPROTO_UDP, src, dst, &h, sizeof h, payload, length);
    }
    void udp(long micros, uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport, const std::string& text) {
        udp(micros, src, sport, dst, dport, reinterpret_cast<const uint8_t*>(text.data()), text.size());
    }
    void tcp(long micros, uint32_t src, uint16_t sport, uint32_t dst, uint16_t dport, uint32_t seq,
             const uint8_t* payload, std::size_t length, uint8_t flags = 0x18) {
        tcp_header_t h{htons(sport), htons(dport), htonl(seq), htonl(1), 5 << 4, flags, htons(65535), 0, 0};
        write(micros, IPPROTO_TCP, src, dst, &h, sizeof h, payload, length);
    }

    // SIP between two phones, port 5060 on both: over UDP, or (overTcp) as
    // segments of one connection per direction; every `fragmentEvery`-th
    // message (0: none) goes in two IPv4 fragments.
    void useSipTransport(bool tcp, int every) {
        sipOverTcp = tcp;
        fragmentEvery = every;
    }
    void sip(long micros, uint32_t src, uint32_t dst, const std::string& text) {
        const auto* payload = reinterpret_cast<const uint8_t*>(text.data());
        fragmentNext = fragmentEvery > 0 && ++sipMessages % fragmentEvery == 0;
        if (!sipOverTcp)
            return udp(micros, src, sipPort, dst, sipPort, payload, text.size());
        const auto known = sipSeq.find({src, dst});
        if (known == sipSeq.end())  // the connection opens: a SYN, whose number comes before the first byte
            tcp(micros, src, sipPort, dst, sipPort, 0xFFFFFFFFu, nullptr, 0, 0x02);
        uint32_t& seq = sipSeq[{src, dst}];
        tcp(micros, src, sipPort, dst, sipPort, seq, payload, text.size());
        seq += static_cast<uint32_t>(text.size());
    }

private:
    void write(long micros, uint8_t protocol, uint32_t src, uint32_t dst, const void* transport,
               std::size_t transportLength, const uint8_t* payload, std::size_t length) {
        uint8_t body[1600];
        std::memcpy(body, transport, transportLength);
        if (length > 0)
            std::memcpy(body + transportLength, payload, length);
        const std::size_t bodyLength = transportLength + length;
        const uint16_t id = static_cast<uint16_t>(frames);
        if (!fragmentNext)
            return emit(micros, protocol, src, dst, id, 0, body, bodyLength);
        fragmentNext = false;
        const std::size_t first = bodyLength / 2 & ~std::size_t(7);
        emit(micros, protocol, src, dst, id, 0x2000, body, first);
        emit(micros, protocol, src, dst, id, static_cast<uint16_t>(first / 8), body + first, bodyLength - first);
    }

    void emit(long micros, uint8_t protocol, uint32_t src, uint32_t dst, uint16_t id, uint16_t fragment,
              const uint8_t* body, std::size_t length) {
        uint8_t frame[1600];
        ether_header_t eth{{0x02, 0, 0, 0, 0, 0x02}, {0x02, 0, 0, 0, 0, 0x01}, {0x08, 0x00}};
        ip_header_t ip{0x45,
                       0,
                       htons(static_cast<uint16_t>(sizeof ip + length)),
                       htons(id),
                       htons(fragment),
                       64,
                       protocol,
                       0,
                       htonl(src),
                       htonl(dst)};
        ip.ip_sum = ipChecksum(ip);
        uint8_t* at = frame;
        for (auto [part, size] :
             {std::pair<const void*, std::size_t>{&eth, sizeof eth}, {&ip, sizeof ip}, {body, length}}) {
            std::memcpy(at, part, size);
            at += size;
        }
        pcap_pkthdr header{};
        header.ts.tv_sec = 1700000000 + micros / 1000000;
        header.ts.tv_usec = micros % 1000000;
        header.caplen = header.len = static_cast<bpf_u_int32>(at - frame);
        pcap_dump(reinterpret_cast<u_char*>(dumper), &header, frame);
        ++frames;
    }

    pcap_t* dead;
    pcap_dumper_t* dumper;
    long frames = 0;
    bool sipOverTcp = false;
    int fragmentEvery = 0;
    long sipMessages = 0;
    bool fragmentNext = false;
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> sipSeq;  // next sequence number by (source, destination)
};

std::string sdp(uint32_t ip, uint16_t port) {
    const std::string host = dotted(ip);
    return "v=0\r\no=- 1 1 IN IP4 " + host + "\r\ns=call\r\nc=IN IP4 " + host + "\r\nt=0 0\r\nm=audio " +
           std::to_string(port) + " RTP/AVP 0 101\r\na=rtpmap:0 PCMU/8000\r\na=rtpmap:101 telephone-event/8000\r\n";
}

struct Dialog {
    int call;
    std::string caller, callee, callId;
};

Dialog dialog(int call) {
    return {call, dotted(phone(0, call)), dotted(phone(1, call)),
            "bench-" + std::to_string(call) + "@" + dotted(phone(0, call))};
}

std::string sipHeaders(const Dialog& d, const std::string& startLine, const std::string& cseq,
                       const std::string& body) {
    return startLine + "\r\nVia: SIP/2.0/UDP " + d.caller + ":5060;branch=z9hG4bK" + std::to_string(d.call) +
           "\r\nFrom: <sip:" + std::to_string(1000 + d.call) + "@" + d.caller + ">;tag=a" + std::to_string(d.call) +
           "\r\nTo: <sip:" + std::to_string(5000 + d.call) + "@" + d.callee + ">" +
           (startLine.compare(0, 3, "SIP") == 0 || cseq == "1 ACK" ? ";tag=b" + std::to_string(d.call) : "") +
           "\r\nCall-ID: " + d.callId + "\r\nCSeq: " + cseq + "\r\nContact: <sip:" + std::to_string(1000 + d.call) +
           "@" + d.caller + ">\r\nMax-Forwards: 70\r\nUser-Agent: bench\r\n" +
           (body.empty() ? "" : "Content-Type: application/sdp\r\n") +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// INVITE, 100, 180, 200 (both with SDP) and ACK, a millisecond apart.
void writeCallSetup(FrameWriter& out, int call, long micros) {
    const Dialog d = dialog(call);
    const uint32_t a = phone(0, call);
    const uint32_t b = phone(1, call);
    const std::string uri = "sip:" + std::to_string(5000 + call) + "@" + d.callee;
    const Destination toCaller = rtpDestination(call, 1);
    const Destination toCallee = rtpDestination(call, 0);
    out.sip(micros, a, b, sipHeaders(d, "INVITE " + uri + " SIP/2.0", "1 INVITE", sdp(toCaller.ip, toCaller.port)));
    out.sip(micros + 1000, b, a, sipHeaders(d, "SIP/2.0 100 Trying", "1 INVITE", ""));
    out.sip(micros + 2000, b, a, sipHeaders(d, "SIP/2.0 180 Ringing", "1 INVITE", ""));
    out.sip(micros + 3000, b, a, sipHeaders(d, "SIP/2.0 200 OK", "1 INVITE", sdp(toCallee.ip, toCallee.port)));
    out.sip(micros + 4000, a, b, sipHeaders(d, "ACK " + uri + " SIP/2.0", "1 ACK", ""));
}

// Spreads `perTick` events (fractional) over ticks without drift.
class Rate {
public:
    explicit Rate(double perTick) : perTick(perTick) {}
    int next() {
        due += perTick;
        const int n = static_cast<int>(due);
        due -= n;
        return n;
    }

private:
    double perTick;
    double due = 0;
};

enum class Kind { Rtp, Sip, UdpNoise, TcpNoise, H323, Setup };
struct Event {
    long micros;
    Kind kind;
    int index;
};

// Deterministic pseudo-random numbers, so every run writes the same file.
class Lcg {
public:
    uint32_t next() { return state = state * 1664525u + 1013904223u; }

private:
    uint32_t state = 12345;
};

std::vector<uint8_t> fromHex(const char* hex) {
    std::vector<uint8_t> bytes;
    for (const char* p = hex; p[0] && p[1]; p += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoi(std::string(p, 2), nullptr, 16)));
    return bytes;
}

// Behind its TPKT header: version 3, a reserved byte, the length with the header.
std::vector<uint8_t> tpkt(std::vector<uint8_t> message) {
    const std::size_t length = message.size() + 4;
    const uint8_t header[4] = {3, 0, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length)};
    message.insert(message.begin(), header, header + 4);
    return message;
}

// A Setup and a Connect (Q.931 with H.225.0) of one call between two desk endpoints.
const std::vector<uint8_t>& h323Message(int which) {
    static const std::vector<uint8_t> messages[2] = {
        tpkt(fromHex("080277f40504038090a528086d2e6a656d6563007e00850520a8060008914a0004014006006d002e006a0065006d"
                     "0065006322c00900003d1443616c6c67656e33323320706f67616373616d00000a302e39616c706861340000000a01"
                     "061206b800f8fdf93ecd9ed6119ab2000476222017005d0d8007000a01038f80231100c0fef93ecd9ed6119ab20004"
                     "76222017010001000100010002800100")),
        tpkt(
            fromHex("0802f7f40728074d2e4a454d45437e004c0522c0060008914a0003000a01061204d022c000000000033331306900"
                    "5200f8fdf93ecd9ed6119ab2000476222017170c001100c0fef93ecd9ed6119ab20004762220170100010008800100"))};
    return messages[which];
}

void writeEvent(FrameWriter& out, const Event& e, long tick, Lcg& random) {
    static uint8_t bytes[1400];
    switch (e.kind) {
    case Kind::Rtp: {
        const int call = e.index / 2;
        const int direction = e.index % 2;
        const Destination to = rtpDestination(call, direction);
        const Destination from = rtpDestination(call, 1 - direction);
        uint8_t packet[sizeof(rtp_header_t) + rtpPayloadBytes];
        rtp_header_t rtp{0x80, 0, htons(static_cast<uint16_t>(tick)), htonl(static_cast<uint32_t>(tick * 160)),
                         htonl(static_cast<uint32_t>(e.index + 1))};
        std::memcpy(packet, &rtp, sizeof rtp);
        std::memset(packet + sizeof rtp, 0xFF, rtpPayloadBytes);
        out.udp(e.micros, from.ip, from.port, to.ip, to.port, packet, sizeof packet);
        break;
    }
    case Kind::Sip: {
        const Dialog d = dialog(e.index);
        const std::string uri = "sip:" + std::to_string(5000 + e.index) + "@" + d.callee;
        out.sip(e.micros, phone(0, e.index), phone(1, e.index),
                sipHeaders(d, "OPTIONS " + uri + " SIP/2.0", "2 OPTIONS", ""));
        break;
    }
    case Kind::UdpNoise: {
        static const uint16_t ports[] = {53, 123, 161, 514, 1812, 5353, 40000};
        const uint32_t r = random.next();
        const std::size_t length = 40 + r % 460;
        for (std::size_t i = 0; i < length; ++i)
            bytes[i] = static_cast<uint8_t>(random.next() >> 24 | 0x80);  // never reads as text
        out.udp(e.micros, ipv4(192, 168, r >> 8 & 0xFF, r >> 16 & 0xFF), static_cast<uint16_t>(1024 + (r >> 4) % 60000),
                ipv4(192, 168, 0, 1 + r % 200), ports[r % 7], bytes, length);
        break;
    }
    case Kind::H323: {
        const std::vector<uint8_t>& message = h323Message(e.index % 2);
        const uint32_t r = random.next();
        out.tcp(e.micros, ipv4(10, 5, r >> 8 & 0xFF, r & 0xFF), 1720, ipv4(10, 6, 0, 1 + r % 250),
                static_cast<uint16_t>(11000 + r % 20000), r, message.data(), message.size());
        break;
    }
    case Kind::Setup: writeCallSetup(out, e.index, e.micros); break;
    case Kind::TcpNoise: {
        const uint32_t r = random.next();
        const std::size_t length = 100 + r % 1300;
        std::memset(bytes, 'x', length);
        out.tcp(e.micros, ipv4(10, 3, r >> 8 & 0xFF, r & 0xFF), 443, ipv4(10, 4, 0, 1 + r % 250),
                static_cast<uint16_t>(30000 + r % 20000), r, bytes, length);
        break;
    }
    }
}

// One tick of media and noise, in time order.
struct Rates {
    Rate sip, udpNoise, tcpNoise, h323;
};

// The tick in which a call's media starts: 0 for all, or staggered over the
// first half of the capture.
long firstTick(const TrafficPlan& plan, long ticks, int call) {
    return plan.staggered ? 1 + static_cast<long>(call) * (ticks / 2) / plan.calls : 0;
}

long tickCount(const TrafficPlan& plan) {
    return static_cast<long>(plan.seconds * 1e6 / tickMicros);
}

void writeTick(FrameWriter& out, const TrafficPlan& plan, long tick, long start, Rates& rates, Lcg& random,
               std::vector<Event>& events) {
    events.clear();
    const long base = start + tick * tickMicros;
    for (int call = 0; call < plan.calls; ++call) {
        const long offset = static_cast<long>(call) * tickMicros / plan.calls;
        const long first = firstTick(plan, tickCount(plan), call);
        if (tick == first - 1 && plan.staggered)
            events.push_back({base + offset - 5000, Kind::Setup, call});
        if (tick < first)
            continue;
        events.push_back({base + offset, Kind::Rtp, 2 * call});
        events.push_back({base + offset + 5, Kind::Rtp, 2 * call + 1});
    }
    auto spread = [&](int n, Kind kind, int modulo) {
        for (int i = 0; i < n; ++i)
            events.push_back({base + static_cast<long>(random.next() % tickMicros), kind,
                              static_cast<int>(random.next() % static_cast<uint32_t>(modulo))});
    };
    // In-dialog requests go to calls that have been set up: a message before its call's INVITE
    // belongs to no call, and no recorder would be expected to keep it.
    int started = 0;
    while (started < plan.calls && firstTick(plan, tickCount(plan), started) <= tick)
        ++started;
    const int sipMessages = rates.sip.next();
    if (started > 0)
        spread(sipMessages, Kind::Sip, started);
    spread(rates.udpNoise.next(), Kind::UdpNoise, 1);
    spread(rates.tcpNoise.next(), Kind::TcpNoise, 1);
    spread(rates.h323.next(), Kind::H323, 2);
    std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) { return a.micros < b.micros; });
    for (const Event& e : events)
        writeEvent(out, e, tick, random);
}

void writeAllSetups(FrameWriter& out, const TrafficPlan& plan) {
    for (int call = 0; call < plan.calls; ++call)
        writeCallSetup(out, call, static_cast<long>(call) * 5000);
}

long setupMicros(const TrafficPlan& plan) {
    return static_cast<long>(plan.calls) * 5000;
}

}  // namespace

Destination rtpDestination(int call, int direction) {
    // Even ports, as RTP uses; each phone sends from the port it receives on.
    return {phone(1 - direction, call), static_cast<uint16_t>(16384 + 2 * (call % 8000))};
}

Destination absentDestination(int index) {
    return {ipv4(10, 200 + (index >> 24 & 0x3F), index >> 16 & 0xFF, index >> 8 & 0xFF),
            static_cast<uint16_t>(20000 + 2 * (index & 0xFF))};
}

bool isCallFrame(const uint8_t* frame, std::size_t length) {
    if (length < sizeof(ether_header_t) + sizeof(ip_header_t))
        return false;
    ip_header_t ip;
    std::memcpy(&ip, frame + sizeof(ether_header_t), sizeof ip);
    auto isPhone = [](uint32_t networkOrder) {
        const uint32_t a = ntohl(networkOrder) >> 16;
        return a == (10u << 8 | 1) || a == (10u << 8 | 2);
    };
    return ip.ip_p == IPPROTO_UDP && isPhone(ip.ip_src) && isPhone(ip.ip_dst);
}

long writeSetup(const TrafficPlan& plan, const std::string& path) {
    FrameWriter out(path);
    if (!out.ok())
        return 0;
    writeAllSetups(out, plan);
    return out.written();
}

long countCallFrames(const std::string& path) {
    char error[PCAP_ERRBUF_SIZE];
    pcap_t* file = pcap_open_offline(path.c_str(), error);
    if (!file)
        return 0;
    long frames = 0;
    pcap_pkthdr* header;
    const u_char* frame;
    while (pcap_next_ex(file, &header, &frame) == 1)
        frames += isCallFrame(frame, header->caplen) ? 1 : 0;
    pcap_close(file);
    return frames;
}

long writeCapture(const TrafficPlan& plan, const std::string& path) {
    FrameWriter out(path);
    if (!out.ok())
        return 0;
    out.useSipTransport(plan.sipOverTcp, plan.sipFragmentEvery);
    if (!plan.staggered)
        writeAllSetups(out, plan);
    const double ticksPerSecond = 1e6 / tickMicros;
    const double perCall = 2 * ticksPerSecond + plan.sipPerCall + plan.udpNoisePerCall + plan.tcpNoisePerCall;
    const double othersPerTick = perCall * plan.calls / ticksPerSecond;
    Rates rates{Rate(plan.sipPerCall * plan.calls / ticksPerSecond),
                Rate(plan.udpNoisePerCall * plan.calls / ticksPerSecond),
                Rate(plan.tcpNoisePerCall * plan.calls / ticksPerSecond),
                Rate(othersPerTick * plan.h323Share / (1 - plan.h323Share))};
    Lcg random;
    std::vector<Event> events;
    const long ticks = tickCount(plan);
    const long start = plan.staggered ? 5000 : setupMicros(plan);
    for (long tick = 0; tick < ticks; ++tick)
        writeTick(out, plan, tick, start, rates, random, events);
    return out.written();
}
