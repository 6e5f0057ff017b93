// UDP command datagrams of any length, from a recorder that then receives
// the next frame.
//
// Checked: an empty datagram is no command; any other is decoded from its
// first 7 bytes, a short one completed by what the receive buffer held
// before (the bytes of earlier datagrams); and the frame sent next goes to
// the datagram's sender.
#include <algorithm>
#include <arpa/inet.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "FuzzLogging.h"
#include "UdpConnection.h"

namespace {
void require(bool holds) {
    if (!holds)
        std::abort();
}

bool readable(int fd) {
    pollfd p{fd, POLLIN, 0};
    return poll(&p, 1, 1000) == 1;
}

uint16_t localPort(int fd) {
    sockaddr_in local{};
    socklen_t len = sizeof local;
    getsockname(fd, reinterpret_cast<sockaddr*>(&local), &len);
    return ntohs(local.sin_port);
}

struct Endpoints {
    UdpConnection sniffer{"127.0.0.1", 9};
    int recorder = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in snifferAddress{};
    // What the sniffer's receive buffer holds: the bytes of earlier datagrams.
    u_char seen[UdpConnection::receiveBufferSize] = {};

    Endpoints() {
        logEverythingToNowhere();
        snifferAddress.sin_family = AF_INET;
        snifferAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        snifferAddress.sin_port = htons(localPort(sniffer.getClientSd()));
    }
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Endpoints e;
    require(sendto(e.recorder, data, size, 0, reinterpret_cast<sockaddr*>(&e.snifferAddress),
                   sizeof e.snifferAddress) == static_cast<ssize_t>(size));
    require(readable(e.sniffer.getClientSd()));

    SnifferRequest request;
    const bool taken = e.sniffer.receiveRequest(request);
    require(taken == (size > 0));
    if (!taken)
        return 0;
    std::memcpy(e.seen, data, std::min(size, sizeof e.seen));
    SnifferRequest expected;
    expected.decode(e.seen);
    require(request == expected);

    u_char frame[SnifferRequest::wireLength + 8] = {0, sizeof frame, 3};
    require(e.sniffer.sendPacket(frame, sizeof frame) == static_cast<int>(sizeof frame));
    require(readable(e.recorder));
    u_char echoed[sizeof frame + 1];
    require(recv(e.recorder, echoed, sizeof echoed, 0) == static_cast<ssize_t>(sizeof frame));
    return 0;
}
