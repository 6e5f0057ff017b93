#include "Recorder.h"
#include "Loopback.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <stdexcept>

namespace {
constexpr int receiveBufferSize = 8 << 20;
constexpr int pollMs = 20;

// A large receive buffer (forced past the system limit when root) keeps a
// replay at full speed from overrunning the recorder.
void enlargeReceiveBuffer(int fd) {
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &receiveBufferSize, sizeof receiveBufferSize) != 0)
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &receiveBufferSize, sizeof receiveBufferSize);
}
}  // namespace

std::string ForwardedFrame::endpoint(int at) const {
    return std::to_string(bytes[at]) + "." + std::to_string(bytes[at + 1]) + "." + std::to_string(bytes[at + 2]) + "." +
           std::to_string(bytes[at + 3]) + ":" + std::to_string(bytes[at + 4] << 8 | bytes[at + 5]);
}

Bytes command(uint8_t code, const char* ip, uint16_t port) {
    const uint32_t address = ntohl(inet_addr(ip));
    return {code,
            uint8_t(address >> 24),
            uint8_t(address >> 16),
            uint8_t(address >> 8),
            uint8_t(address),
            uint8_t(port >> 8),
            uint8_t(port)};
}

// ---------------------------------------------------------------- frames

void Recorder::deliver(ForwardedFrame frame) {
    {
        std::lock_guard<std::mutex> guard(lock);
        if (frame.protocol() == 3)
            ++heartbeatReplies;
        else if (tap)
            return tap(frame);
        else
            pending.push_back(frame);
        all.push_back(std::move(frame));
    }
    arrived.notify_all();
}

std::optional<ForwardedFrame> Recorder::next(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> guard(lock);
    if (!arrived.wait_for(guard, timeout, [&] { return !pending.empty(); }))
        return std::nullopt;
    ForwardedFrame frame = pending.front();
    pending.pop_front();
    return frame;
}

std::vector<ForwardedFrame> Recorder::next(std::size_t n, std::chrono::milliseconds quiet) {
    std::vector<ForwardedFrame> got;
    while (got.size() < n) {
        auto frame = next(quiet);
        if (!frame)
            break;
        got.push_back(*frame);
    }
    return got;
}

std::vector<ForwardedFrame> Recorder::received() const {
    std::lock_guard<std::mutex> guard(lock);
    return all;
}

std::size_t Recorder::count() const {
    std::lock_guard<std::mutex> guard(lock);
    return all.size();
}

bool Recorder::apply(const std::vector<Bytes>& commands, std::chrono::milliseconds timeout) {
    int before;
    {
        std::lock_guard<std::mutex> guard(lock);
        before = heartbeatReplies;
    }
    for (const Bytes& c : commands)
        send(c);
    send(command(3, "0.0.0.0", 0));  // heartbeat request
    std::unique_lock<std::mutex> guard(lock);
    return arrived.wait_for(guard, timeout, [&] { return heartbeatReplies > before; });
}

void Recorder::tapInstead(std::function<void(const ForwardedFrame&)> newTap) {
    std::lock_guard<std::mutex> guard(lock);
    tap = std::move(newTap);
}

// ---------------------------------------------------------------- TCP

TcpRecorder::TcpRecorder() {
    start();
}

TcpRecorder::~TcpRecorder() {
    stop();
}

void TcpRecorder::start() {
    listener = socket(AF_INET, SOCK_STREAM, 0);
    const int reuse = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    enlargeReceiveBuffer(listener);  // inherited by the accepted connection
    const sockaddr_in local = loopback(boundPort);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0 || listen(listener, 4) != 0)
        throw std::runtime_error("test recorder cannot listen on port " + std::to_string(boundPort));
    boundPort = localPort(listener);
    stopping = false;
    reader = std::thread(&TcpRecorder::serve, this);
}

void TcpRecorder::stop() {
    if (!reader.joinable())
        return;
    stopping = true;
    reader.join();
    if (connection >= 0)
        close(connection.exchange(-1));
    close(listener);
    listener = -1;
}

void TcpRecorder::dropConnection() {
    shutdown(connection, SHUT_RDWR);  // the reader sees the end and closes it
}

void TcpRecorder::send(const Bytes& data) {
    ::send(connection, data.data(), data.size(), MSG_NOSIGNAL);
}

void TcpRecorder::serve() {
    Bytes stream;
    Bytes chunk(65536);
    while (!stopping) {
        pollfd fds[2] = {{listener, POLLIN, 0}, {connection, POLLIN, 0}};
        if (poll(fds, connection >= 0 ? 2 : 1, pollMs) <= 0)
            continue;
        if (fds[0].revents & POLLIN) {
            const int accepted = accept(listener, nullptr, nullptr);
            if (accepted >= 0) {
                const int old = connection.exchange(accepted);
                if (old >= 0)
                    close(old);
                ++acceptedCount;
                stream.clear();
            }
            continue;
        }
        if (connection >= 0 && fds[1].revents) {
            const ssize_t n = recv(connection, chunk.data(), chunk.size(), 0);
            if (n <= 0) {
                close(connection.exchange(-1));
                continue;
            }
            stream.insert(stream.end(), chunk.begin(), chunk.begin() + n);
            takeFrames(stream);
        }
    }
}

void TcpRecorder::takeFrames(Bytes& stream) {
    std::size_t at = 0;
    while (stream.size() - at >= 2) {
        // A length below the header's own would stall the stream: take the header.
        const std::size_t length = std::max<std::size_t>(stream[at] << 8 | stream[at + 1], 15);
        if (stream.size() - at < length)
            break;
        deliver({Bytes(stream.begin() + at, stream.begin() + at + length)});
        at += length;
    }
    stream.erase(stream.begin(), stream.begin() + at);
}

// ---------------------------------------------------------------- UDP

UdpRecorder::UdpRecorder() {
    fd = socket(AF_INET, SOCK_DGRAM, 0);
    enlargeReceiveBuffer(fd);
    const sockaddr_in local = loopback(0);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
        throw std::runtime_error("test recorder cannot bind");
    boundPort = localPort(fd);
    reader = std::thread(&UdpRecorder::serve, this);
}

UdpRecorder::~UdpRecorder() {
    stopping = true;
    reader.join();
    close(fd);
}

void UdpRecorder::send(const Bytes& data) {
    std::lock_guard<std::mutex> guard(senderLock);
    sendto(fd, data.data(), data.size(), 0, reinterpret_cast<const sockaddr*>(&sender), sizeof sender);
}

void UdpRecorder::serve() {
    Bytes datagram(65536);
    while (!stopping) {
        pollfd p{fd, POLLIN, 0};
        if (poll(&p, 1, pollMs) <= 0)
            continue;
        sockaddr_in from{};
        socklen_t len = sizeof from;
        const ssize_t n = recvfrom(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr*>(&from), &len);
        if (n < 3)
            continue;
        {
            std::lock_guard<std::mutex> guard(senderLock);
            sender = from;
        }
        deliver({Bytes(datagram.begin(), datagram.begin() + n)});
    }
}
