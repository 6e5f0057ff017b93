// h323call: plays one whole H.323 call over real TCP connections on this
// host, for tests and demonstrations of the capture engine: call signalling
// with fast start, a separate H.245 connection, tunnelled H.245, release,
// and G.711 RTP both ways between the announced media addresses.
//
//   h323call [--ip A] [--port N] [--h245-port M] [--rtp-packets K]
//            [--gap-ms G] [--media-delay-ms D]
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <netinet/tcp.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "Messages.h"
#include "SyntheticCall.h"

namespace {

struct Options {
    h323call::Addresses addresses;
    unsigned port = 1720;
    int rtpPackets = 50;
    int gapMs = 50;
    int mediaDelayMs = 2000;
};

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

sockaddr_in endpoint(const std::string& ip, unsigned port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    if (inet_pton(AF_INET, ip.c_str(), &a.sin_addr) != 1)
        fail("address");
    return a;
}

// A connected pair of TCP sockets: {caller side, callee side}.
struct TcpPair {
    int caller = -1;
    int callee = -1;

    TcpPair(const std::string& ip, unsigned port) {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        const int one = 1;
        setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
        const sockaddr_in at = endpoint(ip, port);
        if (bind(listener, reinterpret_cast<const sockaddr*>(&at), sizeof at) != 0 || listen(listener, 1) != 0)
            fail("listen");
        caller = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(caller, reinterpret_cast<const sockaddr*>(&at), sizeof at) != 0)
            fail("connect");
        callee = accept(listener, nullptr, nullptr);
        close(listener);
        // One message, one segment: the capture engine describes segments.
        setsockopt(caller, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        setsockopt(callee, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    }
    ~TcpPair() {
        close(caller);
        close(callee);
    }
    void send(const h323call::Step& step) const {
        const std::string frame = h323::test::tpkt(step.pdu);
        const int from = step.direction == h323call::Step::CallerToCallee ? caller : callee;
        if (::send(from, frame.data(), frame.size(), 0) != ssize_t(frame.size()))
            fail("send");
    }
};

// G.711 mu-law RTP both ways between the two media addresses, 20 ms apart.
void playMedia(const Options& o) {
    const h323call::Addresses& a = o.addresses;
    const int callerSocket = socket(AF_INET, SOCK_DGRAM, 0);
    const int calleeSocket = socket(AF_INET, SOCK_DGRAM, 0);
    const sockaddr_in callerAt = endpoint(a.callerIp, a.callerRtpPort);
    const sockaddr_in calleeAt = endpoint(a.calleeIp, a.calleeRtpPort);
    if (bind(callerSocket, reinterpret_cast<const sockaddr*>(&callerAt), sizeof callerAt) != 0 ||
        bind(calleeSocket, reinterpret_cast<const sockaddr*>(&calleeAt), sizeof calleeAt) != 0)
        fail("bind media");
    unsigned char packet[12 + 160];
    for (int i = 0; i < o.rtpPackets; ++i) {
        for (int side = 0; side < 2; ++side) {
            std::memset(packet, 0xFF, sizeof packet);  // mu-law silence
            packet[0] = 0x80;
            packet[1] = 0;  // PCMU
            packet[2] = uint8_t(i >> 8);
            packet[3] = uint8_t(i);
            const uint32_t timestamp = uint32_t(i) * 160;
            for (int b = 0; b < 4; ++b)
                packet[4 + b] = uint8_t(timestamp >> (24 - 8 * b));
            packet[8] = 0x11;
            packet[11] = uint8_t(side + 1);  // SSRC
            const int from = side == 0 ? callerSocket : calleeSocket;
            const sockaddr_in& to = side == 0 ? calleeAt : callerAt;
            sendto(from, packet, sizeof packet, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    close(callerSocket);
    close(calleeSocket);
}

Options parse(int argc, char** argv) {
    Options o;
    const option longOptions[] = {
        {"ip", required_argument, nullptr, 'i'},
        {"port", required_argument, nullptr, 'p'},
        {"h245-port", required_argument, nullptr, 'H'},
        {"rtp-packets", required_argument, nullptr, 'r'},
        {"gap-ms", required_argument, nullptr, 'g'},
        {"media-delay-ms", required_argument, nullptr, 'd'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    int c;
    while ((c = getopt_long(argc, argv, "i:p:H:r:g:d:h", longOptions, nullptr)) != -1) {
        switch (c) {
        case 'i': o.addresses.callerIp = o.addresses.calleeIp = optarg; break;
        case 'p': o.port = unsigned(std::atoi(optarg)); break;
        case 'H': o.addresses.h245Port = unsigned(std::atoi(optarg)); break;
        case 'r': o.rtpPackets = std::atoi(optarg); break;
        case 'g': o.gapMs = std::atoi(optarg); break;
        case 'd': o.mediaDelayMs = std::atoi(optarg); break;
        default:
            std::fprintf(stderr,
                         "Usage: %s [--ip A] [--port N] [--h245-port M] [--rtp-packets K] [--gap-ms G] "
                         "[--media-delay-ms D]\n"
                         "Plays one H.323 call on A (default 127.0.0.1): signalling to port N (1720), H.245 to "
                         "port M (N+1), K RTP packets each way (50) after D ms (2000), G ms between messages (50).\n",
                         argv[0]);
            std::exit(c == 'h' ? 0 : 2);
        }
    }
    if (o.addresses.h245Port == 0)
        o.addresses.h245Port = o.port + 1;
    return o;
}

}  // namespace

int main(int argc, char** argv) {
    const Options o = parse(argc, argv);
    const std::vector<h323call::Step> steps = h323call::syntheticCall(o.addresses);
    const auto gap = std::chrono::milliseconds(o.gapMs);

    TcpPair signalling(o.addresses.calleeIp, o.port);
    std::optional<TcpPair> h245;
    for (const h323call::Step& step : steps) {
        if (step.connection == h323call::Step::H245 && !h245)
            h245.emplace(o.addresses.calleeIp, o.addresses.h245Port);
        if (step.name == "Facility with tunnelled H.245") {
            // The channels are open: the media flows before the call ends.
            std::this_thread::sleep_for(std::chrono::milliseconds(o.mediaDelayMs));
            playMedia(o);
        }
        (step.connection == h323call::Step::H245 ? *h245 : signalling).send(step);
        std::printf("sent %s\n", step.name.c_str());
        std::fflush(stdout);
        std::this_thread::sleep_for(gap);
    }
    return 0;
}
