// Plays a busy sniffer into the reference recorder over TCP: sets up CALLS calls with SIP, sends
// FRAMES RTP frames of 20 ms G.711 round robin over their two streams as fast as the link takes
// them (or at --rate), ends every call with a BYE, and waits until the recorder has archived
// them all. Prints one figures line: frames a second from the first RTP frame to the last call
// archived, the recorder's CPU per frame and its peak resident set, and whether every frame
// was written (the packets counted in calls.jsonl against the frames sent).
//
//   bench_recorder_feed --port P --output DIR --pid PID [--calls N] [--frames N] [--rate FPS]
#include "Rtp.h"
#include "Wire.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    uint16_t port = 0;
    std::string output;
    int pid = 0;
    uint32_t calls = 1000;
    uint64_t frames = 5000000;
    uint64_t rate = 0;
};

using recorder::fwd_header;
using recorder::rtp_header;

constexpr size_t kPayload = 160;
constexpr size_t kRtpFrame = sizeof(fwd_header) + sizeof(rtp_header) + kPayload;

// Caller i is 10.1.x.y and receives RTP on 20000 + 2(i mod 20000); the callee likewise on 10.2.x.y.
uint32_t host(int side, uint32_t call) {
    return (10u << 24) | (uint32_t(side) << 16) | (call & 0xffff);
}
uint16_t rtpPort(uint32_t call) {
    return static_cast<uint16_t>(20000 + 2 * (call % 20000));
}

void appendFrame(std::string& out, uint8_t protocol, uint32_t srcIp, uint16_t srcPort, uint32_t dstIp, uint16_t dstPort,
                 const std::string& payload) {
    const fwd_header header{htons(static_cast<uint16_t>(sizeof(fwd_header) + payload.size())),
                            protocol,
                            htonl(dstIp),
                            htons(dstPort),
                            htonl(srcIp),
                            htons(srcPort)};
    out.append(reinterpret_cast<const char*>(&header), sizeof header);
    out += payload;
}

std::string ip(uint32_t address) {
    return std::to_string(address >> 24) + '.' + std::to_string((address >> 16) & 255) + '.' +
           std::to_string((address >> 8) & 255) + '.' + std::to_string(address & 255);
}

std::string sip(const std::string& firstLine, uint32_t call, const std::string& cseq, bool fromCallee,
                uint32_t mediaHost = 0) {
    std::ostringstream body;
    if (mediaHost != 0)
        body << "v=0\r\no=- 1 1 IN IP4 " << ip(mediaHost) << "\r\ns=-\r\nc=IN IP4 " << ip(mediaHost)
             << "\r\nt=0 0\r\nm=audio " << rtpPort(call) << " RTP/AVP 8\r\na=rtpmap:8 PCMA/8000\r\n";
    std::ostringstream text;
    text << firstLine << "\r\nVia: SIP/2.0/UDP " << ip(host(fromCallee ? 2 : 1, call)) << ":5060;branch=z9hG4bK" << call
         << "\r\nFrom: <sip:" << call << "@a>;tag=a" << call << "\r\nTo: <sip:callee@b>;tag=b" << call
         << "\r\nCall-ID: bench-" << call << "@a\r\nCSeq: " << cseq
         << (mediaHost != 0 ? "\r\nContent-Type: application/sdp" : "") << "\r\nContent-Length: " << body.str().size()
         << "\r\n\r\n"
         << body.str();
    return text.str();
}

void sendAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t sent = send(fd, data, size, MSG_NOSIGNAL);
        if (sent <= 0) {
            std::perror("send");
            std::exit(1);
        }
        data += sent;
        size -= static_cast<size_t>(sent);
    }
}

void sendSignalling(int fd, const Options& o, bool bye) {
    std::string out;
    for (uint32_t call = 0; call < o.calls; ++call) {
        const uint32_t caller = host(1, call), callee = host(2, call);
        if (!bye) {
            appendFrame(out, 1, caller, 5060, callee, 5060,
                        sip("INVITE sip:callee@b SIP/2.0", call, "1 INVITE", false, caller));
            appendFrame(out, 1, callee, 5060, caller, 5060, sip("SIP/2.0 200 OK", call, "1 INVITE", true, callee));
        } else {
            appendFrame(out, 1, caller, 5060, callee, 5060, sip("BYE sip:callee@b SIP/2.0", call, "2 BYE", false));
        }
    }
    sendAll(fd, out.data(), out.size());
}

// One round: every stream's next frame. Sequence numbers and timestamps are patched per round.
std::string rtpRound(const Options& o) {
    std::string round;
    const std::string payload(sizeof(rtp_header) + kPayload, '\xd5');
    for (uint32_t call = 0; call < o.calls; ++call)
        for (int side = 1; side <= 2; ++side) {
            std::string packet = payload;
            const rtp_header rtp{0x80, 8, 0, 0, htonl(call * 2 + static_cast<uint32_t>(side))};
            std::memcpy(&packet[0], &rtp, sizeof rtp);
            appendFrame(round, 2, host(side, call), rtpPort(call), host(3 - side, call), rtpPort(call), packet);
        }
    return round;
}

void advance(std::string& round, uint16_t seq) {
    for (size_t at = sizeof(fwd_header); at < round.size(); at += kRtpFrame) {
        rtp_header rtp;
        std::memcpy(&rtp, &round[at], sizeof rtp);
        rtp.seq = htons(seq);
        rtp.ts = htonl(uint32_t(seq) * kPayload);
        std::memcpy(&round[at], &rtp, sizeof rtp);
    }
}

struct Usage {
    double cpuSeconds = 0;
    long peakKib = 0;
};

Usage usageOf(int pid) {
    Usage usage;
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long utime = 0, stime = 0;
    for (int i = 3; fields >> field; ++i) {
        if (i == 14)
            utime = std::stoul(field);
        if (i == 15) {
            stime = std::stoul(field);
            break;
        }
    }
    usage.cpuSeconds = double(utime + stime) / double(sysconf(_SC_CLK_TCK));
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            usage.peakKib = std::stol(line.substr(6));
    return usage;
}

// Lines of calls.jsonl and the RTP packets they count.
std::pair<size_t, uint64_t> archived(const std::string& output) {
    std::ifstream index(output + "/calls.jsonl");
    size_t lines = 0;
    uint64_t packets = 0;
    for (std::string line; std::getline(index, line); ++lines)
        for (size_t at = 0; (at = line.find(",\"packets\":", at)) != std::string::npos; ++at)
            packets += std::strtoull(line.c_str() + at + 11, nullptr, 10);
    return {lines, packets};
}

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i], value = argv[i + 1];
        if (key == "--port")
            o.port = static_cast<uint16_t>(std::stoi(value));
        else if (key == "--output")
            o.output = value;
        else if (key == "--pid")
            o.pid = std::stoi(value);
        else if (key == "--calls")
            o.calls = static_cast<uint32_t>(std::stoul(value));
        else if (key == "--frames")
            o.frames = std::stoull(value);
        else if (key == "--rate")
            o.rate = std::stoull(value);
        else
            return false;
    }
    return o.port != 0 && !o.output.empty() && o.pid != 0 && o.calls > 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) {
        std::cerr << "usage: " << argv[0] << " --port P --output DIR --pid PID [--calls N] [--frames N] [--rate FPS]\n";
        return 2;
    }
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in recorder{};
    recorder.sin_family = AF_INET;
    recorder.sin_port = htons(o.port);
    recorder.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&recorder), sizeof recorder) != 0) {
        std::perror("connect");
        return 1;
    }
    // The recorder's commands are read and counted so that they never fill this end.
    std::atomic<uint64_t> commandBytes{0};
    std::thread commands([&] {
        char buffer[65536];
        for (ssize_t n; (n = recv(fd, buffer, sizeof buffer, 0)) > 0;)
            commandBytes += static_cast<uint64_t>(n);
    });

    sendSignalling(fd, o, false);
    const auto askedDeadline = Clock::now() + std::chrono::seconds(60);
    while (commandBytes < uint64_t{o.calls} * 2 * 7 && Clock::now() < askedDeadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));  // polling another thread's count

    const Usage before = usageOf(o.pid);
    const auto start = Clock::now();
    std::string round = rtpRound(o);
    const uint64_t perRound = uint64_t{o.calls} * 2;
    uint64_t sent = 0;
    for (uint16_t seq = 0; sent < o.frames; ++seq) {
        advance(round, seq);
        const size_t frames = static_cast<size_t>(std::min<uint64_t>(perRound, o.frames - sent));
        sendAll(fd, round.data(), frames * kRtpFrame);
        sent += frames;
        if (o.rate > 0)
            std::this_thread::sleep_until(start + std::chrono::microseconds(sent * 1000000 / o.rate));
    }
    const auto sentAt = Clock::now();
    sendSignalling(fd, o, true);

    std::pair<size_t, uint64_t> done{};
    const auto deadline = Clock::now() + std::chrono::seconds(600);
    while ((done = archived(o.output)).first < o.calls && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // polling another process's files
    const auto end = Clock::now();
    const Usage after = usageOf(o.pid);
    shutdown(fd, SHUT_RDWR);
    commands.join();
    close(fd);

    const double seconds = std::chrono::duration<double>(end - start).count();
    const double sendSeconds = std::chrono::duration<double>(sentAt - start).count();
    const double cpu = after.cpuSeconds - before.cpuSeconds;
    std::printf(
        "recorder_alone calls=%u frames=%llu fps=%.0f send_fps=%.0f cpu_ns_per_frame=%.0f "
        "peak_rss_kib=%ld archived=%zu written=%llu lost=%lld\n",
        o.calls, static_cast<unsigned long long>(sent), double(sent) / seconds, double(sent) / sendSeconds,
        cpu * 1e9 / double(sent), after.peakKib, done.first, static_cast<unsigned long long>(done.second),
        static_cast<long long>(sent) - static_cast<long long>(done.second));
    return done.first == o.calls && done.second == sent ? 0 : 1;
}
