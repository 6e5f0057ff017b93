#include "FrameReceiver.h"
#include "Loopback.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

UdpFrameReceiver::UdpFrameReceiver() {
    socket_ = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in at = loopback(0);
    bind(socket_, reinterpret_cast<const sockaddr*>(&at), sizeof at);
    socklen_t len = sizeof at;
    getsockname(socket_, reinterpret_cast<sockaddr*>(&at), &len);
    port_ = ntohs(at.sin_port);
    const int size = 8 << 20;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

UdpFrameReceiver::~UdpFrameReceiver() {
    close(socket_);
}

std::vector<Frame> UdpFrameReceiver::receive(size_t count, std::chrono::milliseconds limit) {
    std::vector<Frame> frames;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    char buffer[65536];
    while (frames.size() < count) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            break;
        pollfd p{socket_, POLLIN, 0};
        if (poll(&p, 1, int(left.count())) <= 0)
            continue;
        const ssize_t n = recv(socket_, buffer, sizeof buffer, 0);
        if (n >= 15)
            frames.push_back({std::string(buffer, size_t(n))});
    }
    return frames;
}
