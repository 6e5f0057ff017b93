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

// A UDP socket bound to an ephemeral port of `localIp`, for sending test
// traffic and for playing a second recorder.
class UdpSocket {
public:
    explicit UdpSocket(const char* localIp = "127.0.0.1");
    // Adopts a socket made elsewhere (e.g. inside a network namespace).
    explicit UdpSocket(int fd);
    ~UdpSocket();
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    uint16_t port() const;
    void sendTo(const char* ip, uint16_t port, const Bytes& data) const;
    // One datagram, waiting at most `timeout`; empty when none came.
    Bytes receive(std::chrono::milliseconds timeout, uint16_t* fromPort = nullptr) const;

private:
    int fd;
};

// A veth pair whose one end (`outside`, no address) stays in this namespace
// for capturing, while the other end lives in a namespace of its own with
// the address 10.77.0.1/24 and a static neighbour 10.77.0.2, so datagrams
// sent from inside cross the pair without ARP and go nowhere else.
// Everything is removed again on destruction.
class VethPair {
public:
    static constexpr const char* insideAddress = "10.77.0.1";
    static constexpr const char* peerAddress = "10.77.0.2";

    VethPair();
    ~VethPair();
    VethPair(const VethPair&) = delete;
    VethPair& operator=(const VethPair&) = delete;

    bool ok() const { return ready; }
    const std::string& outside() const { return outsideName; }
    // A UDP socket of the inner namespace, bound to insideAddress.
    int udpSocketInside() const;

private:
    std::string namespaceName;
    std::string outsideName;
    std::string insideName;
    bool ready = false;
};

#endif
