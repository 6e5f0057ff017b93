#include "SnifferLink.h"

#include "Log.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace recorder {
namespace {

constexpr int kPortAttempts = 20;
constexpr int kDatagramsPerService = 256;  // leaves room for the TCP side and the timers
constexpr timeval kSendTimeout{1, 0};       // a sniffer that stops reading commands is dropped

std::string toString(const sockaddr_in& address)
{
    return recorder::toString(Endpoint{ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)});
}

bool samePeer(const sockaddr_in& a, const sockaddr_in& b)
{
    return a.sin_addr.s_addr == b.sin_addr.s_addr && a.sin_port == b.sin_port;
}

const char* commandName(CommandCode code)
{
    switch (code) {
    case CommandCode::AddRtp: return "add";
    case CommandCode::RemoveRtp: return "remove";
    case CommandCode::Heartbeat: return "heartbeat";
    }
    return "?";
}

}  // namespace

SnifferLink::~SnifferLink()
{
    closeAll();
}

bool SnifferLink::listen(const std::string& address, uint16_t port)
{
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &local.sin_addr) != 1) {
        log::error() << "Not an IPv4 address: " << address;
        return false;
    }
    for (int attempt = 0; attempt < kPortAttempts; ++attempt) {
        if (bindBoth(local)) {
            log::info() << "Listening for the sniffer on " << address << ':' << port_ << " (TCP and UDP)";
            return true;
        }
        if (port != 0)
            break;  // only a port picked by the system is worth another try
    }
    log::error() << "Cannot listen on " << address << ':' << port << ": " << std::strerror(errno);
    return false;
}

// TCP picks the port when none is given; UDP must then get the same number.
bool SnifferLink::bindBoth(const sockaddr_in& address)
{
    closeAll();
    sockaddr_in bound = address;
    socklen_t length = sizeof bound;
    const int on = 1;
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    udp_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener_ < 0 || udp_ < 0 || setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener_, 4) != 0 || getsockname(listener_, reinterpret_cast<sockaddr*>(&bound), &length) != 0 ||
        bind(udp_, reinterpret_cast<const sockaddr*>(&bound), sizeof bound) != 0) {
        const int error = errno;
        closeAll();
        errno = error;
        return false;
    }
    port_ = ntohs(bound.sin_port);
    return true;
}

void SnifferLink::service(Milliseconds timeout, const sigset_t& signalMask)
{
    pollfd fds[2] = {{connection_ >= 0 ? connection_ : listener_, POLLIN, 0}, {udp_, POLLIN, 0}};
    const timespec wait{static_cast<time_t>(timeout.count() / 1000),
                        static_cast<long>(timeout.count() % 1000) * 1000000};
    if (ppoll(fds, 2, &wait, &signalMask) <= 0)
        return;  // timeout, or a signal for the caller to look at
    if (fds[0].revents != 0)
        connection_ >= 0 ? readConnection() : acceptConnection();
    if (fds[1].revents != 0)
        readDatagrams();
}

void SnifferLink::acceptConnection()
{
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    connection_ = accept4(listener_, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
    if (connection_ < 0)
        return;
    setsockopt(connection_, SOL_SOCKET, SO_SNDTIMEO, &kSendTimeout, sizeof kSendTimeout);
    connectionPeer_ = toString(peer);
    log::info() << "Sniffer connected from " << connectionPeer_ << " over TCP";
    events_.onSnifferConnected();
}

void SnifferLink::readConnection()
{
    const ssize_t received = recv(connection_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (received <= 0) {
        if (received == 0)
            log::info() << "Sniffer " << connectionPeer_ << " closed the connection";
        else
            log::warn() << "Connection to the sniffer " << connectionPeer_ << " failed: " << std::strerror(errno);
        closeConnection();
        return;
    }

    stream_.append(buffer_.data(), static_cast<size_t>(received), Clock::now());
    Frame frame;
    FrameStatus status;
    while ((status = stream_.next(frame)) == FrameStatus::Complete)
        events_.onFrame(frame);
    if (status == FrameStatus::Malformed) {
        log::error() << "Malformed frame from the sniffer " << connectionPeer_ << ": " << stream_.problem()
                     << "; closing the connection";
        closeConnection();
    }
}

void SnifferLink::readDatagrams()
{
    for (int i = 0; i < kDatagramsPerService; ++i) {
        sockaddr_in peer{};
        socklen_t length = sizeof peer;
        const ssize_t received =
            recvfrom(udp_, buffer_.data(), buffer_.size(), 0, reinterpret_cast<sockaddr*>(&peer), &length);
        if (received < 0)
            return;
        Frame frame;
        std::string problem;
        if (readDatagram(buffer_.data(), static_cast<size_t>(received), frame, problem) != FrameStatus::Complete) {
            log::error() << "Malformed datagram from " << toString(peer) << ": " << problem << "; dropped";
            continue;
        }
        if (!datagramPeer_ || !samePeer(*datagramPeer_, peer)) {
            datagramPeer_ = peer;
            log::info() << "Sniffer sends datagrams from " << toString(peer);
            events_.onSnifferConnected();
        }
        frame.arrival = Clock::now();
        events_.onFrame(frame);
    }
}

bool SnifferLink::send(CommandCode code, const Endpoint& rtp)
{
    const CommandBytes command = encodeCommand(code, rtp);
    bool sent = false;
    if (connection_ >= 0) {
        if (::send(connection_, command.data(), command.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(command.size())) {
            sent = true;
        } else {
            // Closing here would pull the frame being handled from under its reader; the shut-down
            // socket reads as closed on the next turn instead.
            log::warn() << "Cannot send to the sniffer " << connectionPeer_ << ": " << std::strerror(errno);
            shutdown(connection_, SHUT_RDWR);
        }
    }
    if (datagramPeer_) {
        sent = sendto(udp_, command.data(), command.size(), 0, reinterpret_cast<const sockaddr*>(&*datagramPeer_),
                      sizeof *datagramPeer_) == static_cast<ssize_t>(command.size()) || sent;
    }
    log::debug() << "Command " << commandName(code) << ' ' << recorder::toString(rtp) << (sent ? "" : " not sent");
    return sent;
}

void SnifferLink::closeConnection()
{
    close(connection_);
    connection_ = -1;
    stream_.clear();
    events_.onSnifferLost();
}

void SnifferLink::closeAll()
{
    for (int* fd : {&connection_, &listener_, &udp_}) {
        if (*fd >= 0)
            close(*fd);
        *fd = -1;
    }
}

}  // namespace recorder
