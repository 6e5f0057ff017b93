// The TCP command reader fed an arbitrary byte stream over a real loopback
// connection, split at arbitrary points, read back one call at a time.
//
// Input: byte 0 holds the number of split points (low 4 bits) and whether
// the recorder closes its end after the stream (high bit); then two bytes per
// split point (an offset into the stream); the rest is the stream.
//
// Checked: the commands decoded are exactly the stream's 7-byte records, in
// order, however the stream was split; a heartbeat leaves the address and
// port as they were; a close ends the link.
#include <algorithm>
#include <chrono>
#include <arpa/inet.h>
#include <cstdint>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Loopback.h"

#include "FuzzLogging.h"
#include "TcpConnection.h"

namespace {
constexpr uint16_t unset = 0xFFFF;
constexpr uint32_t unsetAddress = 0xFFFFFFFF;

void require(bool holds) {
    if (!holds)
        std::abort();
}

class Listener {
public:
    Listener() : fd(listenOnLoopback(port)) { require(fd >= 0); }
    uint16_t port = 0;
    int fd;
};

// One recorder connection: connected on both ends, torn down with a reset so
// that millions of them leave no TIME_WAIT behind.
struct Link {
    TcpConnection sniffer;
    int recorder;

    explicit Link(const Listener& listener) : sniffer("127.0.0.1", listener.port) {
        sniffer.tcpConnect();
        recorder = accept(listener.fd, nullptr, nullptr);
        require(recorder >= 0);
        sniffer.tcpConnect();  // reports the completed handshake
        require(sniffer.isConnected());
    }
    ~Link() {
        const linger reset{1, 0};
        setsockopt(recorder, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
        close(recorder);
    }

    void write(const uint8_t* data, size_t size) {
        while (size > 0) {
            const ssize_t n = send(recorder, data, size, MSG_NOSIGNAL);
            require(n > 0);
            data += n;
            size -= static_cast<size_t>(n);
        }
    }
};

struct Decoded {
    uint16_t request;
    uint32_t address;
    uint16_t port;
};

// Calls the reader until it has nothing new: either nothing arrived, or
// only part of a record is pending.
void readAll(TcpConnection& sniffer, std::vector<Decoded>& decoded) {
    for (;;) {
        SnifferRequest request(unset, unsetAddress, unset);
        if (!sniffer.receiveRequest(request) || request.request == unset)
            return;
        decoded.push_back({request.request, request.rtpAddr, request.rtpPort});
    }
}

// Reads until `done` holds; bytes in flight on loopback arrive within the second.
template <class Done>
void readUntil(TcpConnection& sniffer, std::vector<Decoded>& decoded, Done done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (!done() && std::chrono::steady_clock::now() < deadline) {
        readAll(sniffer, decoded);
        std::this_thread::yield();
    }
}

void checkRecords(const uint8_t* stream, size_t size, const std::vector<Decoded>& decoded) {
    require(decoded.size() == size / SnifferRequest::wireLength);
    for (size_t i = 0; i < decoded.size(); ++i) {
        const uint8_t* wire = stream + i * SnifferRequest::wireLength;
        SnifferRequest expected(unset, unsetAddress, unset);
        expected.request = wire[0];
        if (wire[0] != 3)
            expected.decodeAddress(wire);
        require(decoded[i].request == expected.request && decoded[i].address == expected.rtpAddr &&
                decoded[i].port == expected.rtpPort);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Listener listener = (logEverythingToNowhere(), Listener());
    if (size < 1)
        return 0;
    const int splitCount = data[0] & 0x0F;
    const bool closeAfter = data[0] & 0x80;
    const size_t headerLength = 1 + 2 * static_cast<size_t>(splitCount);
    if (size < headerLength)
        return 0;
    const uint8_t* stream = data + headerLength;
    const size_t streamLength = size - headerLength;

    std::vector<size_t> cuts{0, streamLength};
    for (int i = 0; i < splitCount; ++i)
        cuts.push_back(streamLength ? (data[1 + 2 * i] << 8 | data[2 + 2 * i]) % streamLength : 0);
    std::sort(cuts.begin(), cuts.end());

    Link link(listener);
    std::vector<Decoded> decoded;
    for (size_t i = 0; i + 1 < cuts.size(); ++i) {
        link.write(stream + cuts[i], cuts[i + 1] - cuts[i]);
        readAll(link.sniffer, decoded);
    }
    const size_t records = streamLength / SnifferRequest::wireLength;
    readUntil(link.sniffer, decoded, [&] { return decoded.size() >= records; });
    if (closeAfter) {
        shutdown(link.recorder, SHUT_WR);
        readUntil(link.sniffer, decoded, [&] { return !link.sniffer.isConnected(); });
        require(!link.sniffer.isConnected());
    }
    checkRecords(stream, streamLength, decoded);
    return 0;
}
