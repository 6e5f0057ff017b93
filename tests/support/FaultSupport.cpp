#include "FaultSupport.h"
#include "Loopback.h"

#include <cstdlib>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

static bool privateNetwork = false;

bool enterPrivateNetwork() {
    if (!runningAsRoot() || unshare(CLONE_NEWNET) != 0)
        return false;
    privateNetwork = runsCleanly({onPath("ip"), "link", "set", "lo", "up"}, 10s);
    // Resident size of a sanitized child should follow its live memory, not
    // the quarantine of freed blocks.
    const char* asan = std::getenv("ASAN_OPTIONS");
    const std::string options = std::string(asan ? asan : "") + ":quarantine_size_mb=8";
    setenv("ASAN_OPTIONS", options.c_str(), 1);
    return privateNetwork;
}

void PrivateNetworkTest::SetUp() {
    if (!privateNetwork)
        GTEST_SKIP() << "needs root, for a network namespace of its own";
}

// ---------------------------------------------------------------- traffic

Traffic::Traffic(std::function<void()> sendOnce, std::chrono::microseconds interval)
    : sender([this, sendOnce, interval] {
          auto next = std::chrono::steady_clock::now();
          while (!stopping) {
              sendOnce();
              next += interval;
              std::this_thread::sleep_until(next);
          }
      }) {}

Traffic::~Traffic() {
    stopping = true;
    sender.join();
}

// ---------------------------------------------------------------- stalled recorder

StalledRecorder::StalledRecorder(uint16_t port) : listener(socket(AF_INET, SOCK_STREAM, 0)) {
    const int reuse = 1;
    const int small = 4096;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    const sockaddr_in local = loopback(port);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0 || listen(listener, 16) != 0)
        throw std::runtime_error("stalled recorder cannot listen on port " + std::to_string(port));
    acceptor = std::thread([this] {
        while (!stopping) {
            pollfd p{listener, POLLIN, 0};
            if (poll(&p, 1, 20) != 1)
                continue;
            const int c = accept(listener, nullptr, nullptr);
            if (c >= 0) {
                connections.push_back(c);
                ++acceptedCount;
            }
        }
    });
}

StalledRecorder::~StalledRecorder() {
    stopping = true;
    acceptor.join();
    for (int c : connections)
        ::close(c);
    ::close(listener);
}

// ---------------------------------------------------------------- veth

VethLink::VethLink(const std::string& name) : name(name) {
    const std::string a = name + "a";
    const std::string b = name + "b";
    const std::string ip = onPath("ip");
    ready = runsCleanly({ip, "link", "add", a, "type", "veth", "peer", "name", b}, 10s) &&
            runsCleanly({ip, "link", "set", a, "up"}, 10s) && runsCleanly({ip, "link", "set", b, "up"}, 10s);
    injectIndex = static_cast<int>(if_nametoindex(b.c_str()));
    packetSocket = socket(AF_PACKET, SOCK_RAW, 0);
    ready = ready && injectIndex > 0 && packetSocket >= 0;
}

VethLink::~VethLink() {
    remove();
    if (packetSocket >= 0)
        ::close(packetSocket);
}

void VethLink::inject(const Bytes& frame) const {
    sockaddr_ll to{};
    to.sll_family = AF_PACKET;
    to.sll_ifindex = injectIndex;
    to.sll_halen = 6;
    sendto(packetSocket, frame.data(), frame.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

void VethLink::remove() {
    if (ready)
        runsCleanly({onPath("ip"), "link", "del", name + "a"}, 10s);
    ready = false;
}

// ---------------------------------------------------------------- capture files

CaptureWriter::CaptureWriter(const std::string& path) {
    dead = pcap_open_dead(DLT_EN10MB, 65535);
    dumper = pcap_dump_open(dead, path.c_str());
}

CaptureWriter::~CaptureWriter() {
    pcap_dump_close(dumper);
    pcap_close(dead);
}

void CaptureWriter::write(const Bytes& captured, bpf_u_int32 wireLength) {
    pcap_pkthdr header{};
    header.ts.tv_sec = 1700000000;
    header.caplen = static_cast<bpf_u_int32>(captured.size());
    header.len = wireLength;
    pcap_dump(reinterpret_cast<u_char*>(dumper), &header, captured.data());
}

// ---------------------------------------------------------------- payloads

Bytes sipInvite(const std::string& callId) {
    return bytesOf("INVITE sip:bob@example.com SIP/2.0\r\nCall-ID: " + callId + "\r\nContent-Length: 0\r\n\r\n");
}

Bytes rtpPacket() {
    Bytes packet = {0x80, 0x00, 0x00, 0x01, 0, 0, 0, 0, 0x12, 0x34, 0x56, 0x78};
    packet.resize(12 + 160, 0xFF);
    return packet;
}

// ---------------------------------------------------------------- frames at the recorder

namespace {
int countFrames(Recorder& recorder, int protocol, const std::string& destination, std::chrono::milliseconds window,
                bool stopAtFirst) {
    const auto deadline = std::chrono::steady_clock::now() + window;
    int n = 0;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return n;
        const std::optional<ForwardedFrame> frame = recorder.next(left);
        if (!frame)
            return n;
        if (frame->protocol() == protocol && frame->destination() == destination && ++n && stopAtFirst)
            return n;
    }
}
}  // namespace

bool awaitFrame(Recorder& recorder, int protocol, const std::string& destination, std::chrono::milliseconds timeout) {
    return countFrames(recorder, protocol, destination, timeout, true) == 1;
}

void discardPending(Recorder& recorder) {
    while (recorder.next(0ms)) {
    }
}

int framesWithin(Recorder& recorder, int protocol, const std::string& destination, std::chrono::milliseconds window) {
    return countFrames(recorder, protocol, destination, window, false);
}
