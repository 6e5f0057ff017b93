#include "SnifferLink.h"

#include "Log.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace recorder {
namespace {

constexpr int kPortAttempts = 20;
constexpr size_t kReadSize = size_t{1} << 20;
constexpr unsigned kDatagramBatch = 64;
constexpr size_t kDatagramSize = 65536;
constexpr int kDatagramBuffer = 16 << 20;  // a second of a busy site's datagrams
constexpr int kPollMilliseconds = 1000;    // only the stop signal is waited for besides traffic
constexpr timeval kSendTimeout{1, 0};      // a sniffer that stops reading commands is dropped

std::string toString(const sockaddr_in& address) {
    return recorder::toString(Endpoint{ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)});
}

bool samePeer(const sockaddr_in& a, const sockaddr_in& b) {
    return a.sin_addr.s_addr == b.sin_addr.s_addr && a.sin_port == b.sin_port;
}

const char* commandName(CommandCode code) {
    switch (code) {
    case CommandCode::AddRtp: return "add";
    case CommandCode::RemoveRtp: return "remove";
    case CommandCode::Heartbeat: return "heartbeat";
    }
    return "?";
}

// Root may pass the system's ceiling on receive buffers; others get what the ceiling allows.
void enlargeReceiveBuffer(int fd, int size) {
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0)
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

}  // namespace

SnifferLink::SnifferLink(Backlog& backlog)
    : backlog_(backlog), buffer_(kReadSize), datagrams_(kDatagramBatch * kDatagramSize) {}

SnifferLink::~SnifferLink() {
    join();
    closeAll();
}

bool SnifferLink::listen(const std::string& address, uint16_t port) {
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
bool SnifferLink::bindBoth(const sockaddr_in& address) {
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
    enlargeReceiveBuffer(udp_, kDatagramBuffer);
    port_ = ntohs(bound.sin_port);
    return true;
}

bool SnifferLink::start(const sigset_t& stopSignals) {
    signals_ = signalfd(-1, &stopSignals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals_ < 0) {
        log::error() << "Cannot wait for stop signals: " << std::strerror(errno);
        return false;
    }
    reader_ = std::thread([this] { read(); });
    return true;
}

void SnifferLink::join() {
    if (reader_.joinable())
        reader_.join();
}

void SnifferLink::read() {
    for (;;) {
        const int connection = connection_;  // only this thread changes it
        pollfd fds[3] = {
            {connection >= 0 ? connection : listener_, POLLIN, 0}, {udp_, POLLIN, 0}, {signals_, POLLIN, 0}};
        if (poll(fds, 3, kPollMilliseconds) <= 0)
            continue;
        if (fds[2].revents != 0)
            break;
        if (fds[0].revents != 0 && connection >= 0)
            readConnection();
        else if (fds[0].revents != 0)
            acceptConnection();
        if (fds[1].revents != 0)
            readDatagrams();
    }
    drain();
    stopped_.store(true, std::memory_order_release);
}

// What the sniffer sent before the stop request is recorded too: read until nothing is left.
void SnifferLink::drain() {
    while (connection_ >= 0 && readConnection())
        ;
    while (readDatagrams() > 0)
        ;
    backlog_.publish();
}

void SnifferLink::acceptConnection() {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    const int connection = accept4(listener_, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
    if (connection < 0)
        return;
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &kSendTimeout, sizeof kSendTimeout);
    {
        std::lock_guard<std::mutex> lock(peers_);
        connection_ = connection;
        connectionPeer_ = toString(peer);
    }
    log::info() << "Sniffer connected from " << connectionPeer_ << " over TCP";
    counters_.connections.fetch_add(1, std::memory_order_relaxed);
    backlog_.push(LinkEvent::Connected);
    backlog_.publish();
}

bool SnifferLink::readConnection() {
    const ssize_t received = recv(connection_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return false;
    if (received <= 0) {
        if (received == 0)
            log::info() << "Sniffer " << connectionPeer_ << " closed the connection";
        else
            log::warn() << "Connection to the sniffer " << connectionPeer_ << " failed: " << std::strerror(errno);
        closeConnection();
        return false;
    }

    stream_.append(buffer_.data(), static_cast<size_t>(received), Clock::now());
    Frame frame;
    FrameStatus status;
    while ((status = stream_.next(frame)) == FrameStatus::Complete)
        queue(frame);
    if (status == FrameStatus::Malformed) {
        log::error() << "Malformed frame from the sniffer " << connectionPeer_ << ": " << stream_.problem()
                     << "; closing the connection";
        closeConnection();
    }
    backlog_.publish();
    return true;
}

int SnifferLink::readDatagrams() {
    mmsghdr messages[kDatagramBatch]{};
    iovec pieces[kDatagramBatch];
    sockaddr_in peers[kDatagramBatch];
    for (unsigned i = 0; i < kDatagramBatch; ++i) {
        pieces[i] = {datagrams_.data() + i * kDatagramSize, kDatagramSize};
        messages[i].msg_hdr.msg_iov = &pieces[i];
        messages[i].msg_hdr.msg_iovlen = 1;
        messages[i].msg_hdr.msg_name = &peers[i];
        messages[i].msg_hdr.msg_namelen = sizeof peers[i];
    }
    const int received = recvmmsg(udp_, messages, kDatagramBatch, MSG_DONTWAIT, nullptr);
    const TimePoint arrival = Clock::now();
    for (int i = 0; i < received; ++i) {
        const sockaddr_in& peer = peers[i];
        Frame frame;
        std::string problem;
        if (readDatagram(static_cast<const uint8_t*>(pieces[i].iov_base), messages[i].msg_len, frame, problem) !=
            FrameStatus::Complete) {
            log::error() << "Malformed datagram from " << toString(peer) << ": " << problem << "; dropped";
            continue;
        }
        if (!datagramPeer_ || !samePeer(*datagramPeer_, peer)) {
            {
                std::lock_guard<std::mutex> lock(peers_);
                datagramPeer_ = peer;
            }
            log::info() << "Sniffer sends datagrams from " << toString(peer);
            counters_.connections.fetch_add(1, std::memory_order_relaxed);
            backlog_.push(LinkEvent::Connected);
        }
        frame.arrival = arrival;
        queue(frame);
    }
    backlog_.publish();
    return received;
}

void SnifferLink::queue(const Frame& frame) {
    const auto protocol = static_cast<size_t>(frame.protocol);
    counters_.frames[protocol].fetch_add(1, std::memory_order_relaxed);
    counters_.bytes[protocol].fetch_add(sizeof(fwd_header) + frame.payload.size(), std::memory_order_relaxed);
    backlog_.push(LinkEvent::Frame, frame);
}

bool SnifferLink::send(CommandCode code, const Endpoint& rtp) {
    const CommandBytes command = encodeCommand(code, rtp);
    bool sent = false;
    std::lock_guard<std::mutex> lock(peers_);
    if (connection_ >= 0) {
        if (::send(connection_, command.data(), command.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(command.size())) {
            sent = true;
        } else {
            // The reading thread owns the socket's end: the shut-down socket reads as closed there.
            log::warn() << "Cannot send to the sniffer " << connectionPeer_ << ": " << std::strerror(errno);
            shutdown(connection_, SHUT_RDWR);
        }
    }
    if (datagramPeer_) {
        sent = sendto(udp_, command.data(), command.size(), 0, reinterpret_cast<const sockaddr*>(&*datagramPeer_),
                      sizeof *datagramPeer_) == static_cast<ssize_t>(command.size()) ||
               sent;
    }
    if (sent)
        counters_.commands.fetch_add(1, std::memory_order_relaxed);
    log::debug() << "Command " << commandName(code) << ' ' << recorder::toString(rtp) << (sent ? "" : " not sent");
    return sent;
}

void SnifferLink::closeConnection() {
    {
        std::lock_guard<std::mutex> lock(peers_);
        close(connection_);
        connection_ = -1;
    }
    stream_.clear();
    backlog_.push(LinkEvent::Lost);
    backlog_.publish();
}

void SnifferLink::closeAll() {
    for (int* fd : {&connection_, &listener_, &udp_, &signals_}) {
        if (*fd >= 0)
            close(*fd);
        *fd = -1;
    }
}

}  // namespace recorder
