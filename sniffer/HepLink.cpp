#include "HepLink.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <log4cxx/logger.h>

namespace {
log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");

constexpr int waitSliceMs = 200;  // how soon a wait notices the end of the run
constexpr auto connectTimeout = std::chrono::seconds(1);

sockaddr_in parseCollector(const std::string& collector) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    const std::size_t colon = collector.rfind(':');
    inet_pton(AF_INET, collector.substr(0, colon).c_str(), &address.sin_addr);
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(collector.substr(colon + 1))));
    return address;
}
}  // namespace

HepLink::HepLink(const std::string& collector, EngineOptions::HepTransport transport)
    : collector(collector), transport(transport), address(parseCollector(collector)) {
    if (transport == EngineOptions::HepTransport::Udp)
        fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

HepLink::~HepLink() {
    if (fd >= 0)
        close(fd);
}

HepLink::Outcome HepLink::deliver(const std::vector<uint8_t>& packet, const std::atomic<bool>& stop) {
    if (transport == EngineOptions::HepTransport::Udp)
        return sendDatagram(packet);
    if (fd >= 0 && peerClosed())
        closeStream("lost");
    if (fd < 0 && !connectStream(stop))
        return Outcome::Retry;
    if (!writeAll(packet, stop)) {
        closeStream(stop ? "left at the end of the run" : "lost");
        return Outcome::Retry;
    }
    return Outcome::Sent;
}

HepLink::Outcome HepLink::sendDatagram(const std::vector<uint8_t>& packet) {
    const ssize_t sent =
        sendto(fd, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent == static_cast<ssize_t>(packet.size()) ? Outcome::Sent : Outcome::Lost;
}

bool HepLink::connectStream(const std::atomic<bool>& stop) {
    fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    int error = 0;
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = errno;
        const auto deadline = std::chrono::steady_clock::now() + connectTimeout;
        while (error == EINPROGRESS && std::chrono::steady_clock::now() < deadline && !stop) {
            pollfd writable{fd, POLLOUT, 0};
            if (poll(&writable, 1, waitSliceMs) > 0) {
                socklen_t size = sizeof error;
                getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
            }
        }
    }
    if (error != 0) {
        if (!reportedDown)
            LOG4CXX_WARN(logger, "HEP collector " << collector << " not reachable; trying again every second");
        reportedDown = true;
        close(fd);
        fd = -1;
        return false;
    }
    reportedDown = false;
    LOG4CXX_INFO(logger, "HEP collector " << collector << " connected");
    return true;
}

// A collector that closed its end has nothing to say to us: readable bytes
// are not expected, end of stream or an error means it is gone.
bool HepLink::peerClosed() const {
    pollfd readable{fd, POLLIN, 0};
    if (poll(&readable, 1, 0) <= 0)
        return false;
    char byte;
    const ssize_t got = recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return got == 0 || (got < 0 && errno != EAGAIN && errno != EWOULDBLOCK);
}

bool HepLink::writeAll(const std::vector<uint8_t>& packet, const std::atomic<bool>& stop) {
    std::size_t offset = 0;
    while (offset < packet.size()) {
        const ssize_t sent = send(fd, packet.data() + offset, packet.size() - offset, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            offset += static_cast<std::size_t>(sent);
        } else if (sent < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
            return false;
        } else if (!awaitWritable(stop)) {
            return false;
        }
    }
    return true;
}

bool HepLink::awaitWritable(const std::atomic<bool>& stop) const {
    while (!stop) {
        pollfd ready{fd, POLLOUT, 0};
        const int n = poll(&ready, 1, waitSliceMs);
        if (n > 0)
            return (ready.revents & (POLLERR | POLLHUP)) == 0;
    }
    return false;
}

void HepLink::closeStream(const char* why) {
    LOG4CXX_WARN(logger, "HEP collector " << collector << " " << why);
    close(fd);
    fd = -1;
}
