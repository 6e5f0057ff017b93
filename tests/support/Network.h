#ifndef SNIFFER_TESTS_NETWORK_H
#define SNIFFER_TESTS_NETWORK_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;
using namespace std::chrono_literals;

// Polls `done` every 5 ms until it holds or `timeout` passes.
bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

bool runningAsRoot();

// Bytes of a text, without terminator.
Bytes bytesOf(const std::string& text);

// The local port a socket is bound to.
uint16_t localPort(int fd);
// Whether a program has bound UDP `port` on 127.0.0.1 (it is listening).
bool udpPortBound(uint16_t port);

// A UDP socket bound to `address` (a loopback one) and `port` (0: an
// ephemeral one), for sending test traffic and for playing a recorder.
class UdpSocket {
public:
    explicit UdpSocket(uint16_t port = 0, const char* address = "127.0.0.1");
    ~UdpSocket();
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    uint16_t port() const { return localPort(fd); }
    void sendTo(uint16_t port, const Bytes& data) const;
    // One datagram, waiting at most `timeout`; empty when none came.
    Bytes receive(std::chrono::milliseconds timeout, uint16_t* fromPort = nullptr) const;

private:
    int fd;
};

#endif
