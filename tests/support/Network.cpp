#include "Network.h"
#include "Loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <stdexcept>
#include <thread>

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

bool runningAsRoot() {
    return geteuid() == 0;
}

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

uint16_t localPort(int fd) {
    sockaddr_in local{};
    socklen_t len = sizeof local;
    getsockname(fd, reinterpret_cast<sockaddr*>(&local), &len);
    return ntohs(local.sin_port);
}

bool udpPortBound(uint16_t port) {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const sockaddr_in local = loopback(port);
    const bool taken = bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0 && errno == EADDRINUSE;
    close(fd);
    return taken;
}

UdpSocket::UdpSocket(uint16_t port, const char* address) : fd(socket(AF_INET, SOCK_DGRAM, 0)) {
    sockaddr_in local = loopback(port);
    inet_pton(AF_INET, address, &local.sin_addr);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        close(fd);
        throw std::runtime_error("cannot bind a UDP socket to port " + std::to_string(port));
    }
}

UdpSocket::~UdpSocket() {
    close(fd);
}

void UdpSocket::sendTo(uint16_t port, const Bytes& data) const {
    const sockaddr_in to = loopback(port);
    sendto(fd, data.data(), data.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

Bytes UdpSocket::receive(std::chrono::milliseconds timeout, uint16_t* fromPort) const {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(timeout.count())) != 1)
        return {};
    Bytes data(65536);
    sockaddr_in from{};
    socklen_t len = sizeof from;
    const ssize_t n = recvfrom(fd, data.data(), data.size(), 0, reinterpret_cast<sockaddr*>(&from), &len);
    data.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    if (fromPort)
        *fromPort = ntohs(from.sin_port);
    return data;
}
